#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKSettings.h"
#include "support/Arithmetic.h"
#include "support/Histogram.h"
#include "support/ResultElements.h"

/// What the tests on the differences of a pair of continuous fields share. A difference is second minus first.

/// The codes of a plan builder for such a pair.
struct PairCodes {
    long namesMissing;
    long unknownField;
    long notTwoFields;
    long notContinuous;
};

/// The plan of the Wilcoxon and of the Hodges-Lehmann test of a pair: resolves "variableName", writes "variableIndex",
/// asks for the fields sorted, and for the frequencies of the fields under "originVariableName".
void PlanContinuousPair(TARNPlanBuilder& builder, TARNPlan& plan, const PairCodes& codes);

/// Reads "variableIndex" of a test's own settings; false, with both indices unchanged, unless it is a pair.
bool ReadPair(const QKSettings& settings, int& firstVariableIndex, int& secondVariableIndex);

/// The differences of a pair of fields: their signs, range and histogram. Two passes: the first one counts, the second
/// one fills the histogram over the range. They are made anew for each batch, since a subtraction costs less than eight
/// bytes a record that are kept.
class PairDifferences {
 public:
    PairDifferences() = default;
    /// Borrows `by`.
    PairDifferences(int firstField, int secondField, int weightField, const Arithmetic& by)
        : arithmetic(&by),
          firstVariableIndex(firstField),
          secondVariableIndex(secondField),
          weightVariableIndex(weightField),
          histogram(by) {}

    /// The differences of a batch, valid until a batch is handed over again.
    const double* Of(ColumnBatch& batch);
    /// Hands over the differences of a batch with the weights of their records, null where each is 1, some at a time,
    /// which then stay at hand.
    template <typename Job>
    void ForParts(ColumnBatch& batch, Job job);

    /// First pass: takes part whatever the weight of the record, and zero differences too.
    void Count(const double* differences, const std::int32_t* weights, std::size_t count);
    void ExtendRange(const double* differences, std::size_t count);

    // Weights of the differences by sign. The difference of two infinities may be no number, which is neither positive
    // nor negative nor zero.
    std::int64_t Positive() const { return arithmetic->Count(positiveWeight); }
    std::int64_t Negative() const { return arithmetic->Count(negativeWeight); }
    std::int64_t NotZero() const { return arithmetic->Count(notZeroWeight); }
    std::int64_t Total() const { return arithmetic->Count(totalWeight); }
    double Smallest() const { return minDifference; }

    /// Second pass.
    void BeginHistogram() { histogram.SetUp(minDifference, maxDifference, Histogram::kDefaultBins); }
    void AddToHistogram(ColumnBatch& batch);
    void EndHistogram() { histogram.Close(); }

    /// Writes the table "ContinuousDistribution": the weights by sign, and, unless the run is brief, the histogram.
    void AddDistribution(ResultElement& element, std::int64_t negativeCount, std::int64_t tieCount,
                         std::int64_t positiveCount, bool isBrief) const;

 private:
    const std::int32_t* WeightsOf(ColumnBatch& batch) const {
        return weightVariableIndex < 0 ? nullptr : batch.Weights(weightVariableIndex);
    }
    const double* Subtract(const double* first, const double* second, std::size_t count);

    const Arithmetic* arithmetic = &Arithmetic::AsDefined();
    int firstVariableIndex = 0;
    int secondVariableIndex = 0;
    int weightVariableIndex = -1;
    std::vector<double> scratch;
    std::int64_t positiveWeight = 0;
    std::int64_t negativeWeight = 0;
    std::int64_t notZeroWeight = 0;
    std::int64_t totalWeight = 0;
    double maxDifference = std::numeric_limits<double>::lowest();
    double minDifference = std::numeric_limits<double>::max();
    Histogram histogram;
};

// ---- Implementation ----

template <typename Job>
void PairDifferences::ForParts(ColumnBatch& batch, Job job) {
    constexpr std::size_t kPart = 2048;
    const double* const first = batch.Values(firstVariableIndex);
    const double* const second = batch.Values(secondVariableIndex);
    const std::int32_t* const weights = WeightsOf(batch);
    for (std::size_t begin = 0; begin < batch.Size(); begin += kPart) {
        const std::size_t count = std::min(kPart, batch.Size() - begin);
        job(Subtract(first + begin, second + begin, count), weights == nullptr ? nullptr : weights + begin, count);
    }
}
