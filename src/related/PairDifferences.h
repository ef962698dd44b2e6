#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "contract/TARNPlan.h"
#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKSettings.h"
#include "platform/common/Record.h"
#include "support/Histogram.h"
#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"
#include "support/TARNRank.h"
#include "support/WeightedOrder.h"

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

/// The group keys under which absolute differences are ranked.
namespace RankKey {
inline constexpr double kNotNegative = 0.0;
inline constexpr double kNegative = 1.0;
}  // namespace RankKey

/// Sorts the differences by their absolute value and ranks these, with the truncated weights. Ends at the first error.
QKStatus RankAbsoluteDifferences(std::vector<WeightedDifference>& differences, TARNRank& rank);

/// The differences of a pair of fields with their range and histogram. Two passes: the first one extends the range,
/// the second one fills the histogram over it.
class PairDifferences {
 public:
    PairDifferences() = default;
    PairDifferences(int firstField, int secondField)
        : firstVariableIndex(static_cast<std::size_t>(firstField)),
          secondVariableIndex(static_cast<std::size_t>(secondField)) {}

    double Of(const Record& record) const { return record[secondVariableIndex] - record[firstVariableIndex]; }

    /// First pass: takes part whatever the weight of the record, and zero differences too.
    void ExtendRange(double difference);
    double Smallest() const { return minDifference; }

    /// Second pass.
    void BeginHistogram() { differences.GetHistogram().SetUp(minDifference, maxDifference, Histogram::kDefaultBins); }
    void Add(double difference, std::int32_t weight) { differences.GetHistogram().Add(difference, weight); }
    void EndHistogram() { differences.GetHistogram().Close(); }

    /// Writes the table "ContinuousDistribution": the weights by sign, and the histogram.
    void AddDistribution(ResultElement& element, std::int32_t negativeCount, std::int32_t tieCount,
                         std::int32_t positiveCount) const;

 private:
    std::size_t firstVariableIndex = 0;
    std::size_t secondVariableIndex = 0;
    double maxDifference = std::numeric_limits<double>::lowest();
    double minDifference = std::numeric_limits<double>::max();
    QKContUnivariateVariable differences{-1, -1};
};
