#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "contract/TARNPlanBuilder.h"
#include "related/RankCounter.h"
#include "related/RowRanks.h"
#include "support/ComparisonRequest.h"
#include "support/PairwiseComparison.h"
#include "support/ResultElements.h"
#include "support/StepwiseComparison.h"
#include "vocabulary/TestFacts.h"

/// What tells the two tests of ranked rows apart, besides the statistic that they show.
struct RankedRowsTest {
    const TestFacts& facts;
    const char* conditionKey;
    long namesMissing;
    long unknownField;
    long tooFewFields;
    long notContinuous;
    long comparisonMissing;
    RefusalCodes notSignificant;
    RefusalCodes tooFewToCompare;
    const ComparisonRules& rules;
};

/// The plan of such a test: resolves "variableName", writes "variableIndex" and "typeOfMultipleComparison", asks for
/// the descriptives of the fields, and for the frequencies of those under "originVariableName".
void PlanRankedRows(TARNPlanBuilder& builder, TARNPlan& plan, const RankedRowsTest& test);

/// Sums of ranks per field: as the rows were added up, rounded where they are large, and twice as large in whole
/// numbers.
struct RankSums {
    std::vector<double> sums;
    std::vector<std::int64_t> twice;
};

/// The Friedman statistic of n rows whose ranks, 1 .. k in each row, have these sums.
double FriedmanChiSquare(const RankSums& ranks, std::int64_t n, double tieSum, const Arithmetic& arithmetic);

/// What the Friedman test and Kendall's W share: k continuous fields, each record's values ranked among themselves.
/// One pass for the overall statistic; then a pass per step of a stepwise comparison.
class RankedRows : public ColumnTest {
 public:
    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    bool NeedsAnotherPass() override { return !status.IsError() && comparison.stepwise && !steps.IsDone(); }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 protected:
    /// Reads from its settings "variableIndex" (the fields), "weightVariableIndex", "sigLevel" and
    /// "typeOfMultipleComparison". `whichTest` is a constant.
    RankedRows(std::unique_ptr<QKSettings> testSettings, const RankedRowsTest& whichTest)
        : ColumnTest(std::move(testSettings)), kind(whichTest), steps(whichTest.rules, arithmetic) {}

    /// Takes records, whatever the status of the test.
    void AddRows(ColumnBatch& batch);

    /// Writes the rows of the table of statistics that stand between "TotalN" and "DegreeOfFreedom".
    virtual void AddStatistic(StructuredTable& statistics) const = 0;

    std::int64_t n = 0;
    std::int32_t k = 0;
    double chiSquare = 0;

 private:
    enum class State { kOverall, kBeforeSteps, kSteps, kFinished };

    void ReadSettings();
    void TakeColumns(ColumnBatch& batch);
    bool NoteWeights(const std::int32_t* weights, std::size_t count);
    void AddToOverall(const std::int32_t* weights, std::size_t count);
    void CountRanks(const std::int32_t* weights, std::size_t count);
    void TakeCounts(const RankCounter& counter, std::int64_t weight);
    void AddRowToOverall(std::size_t place, std::int32_t weight);
    void AddToSteps(const std::int32_t* weights, std::size_t count);
    void CompareInBlock(std::size_t begin, const std::int32_t* weights, std::size_t count);
    void AddRowToCandidates(std::size_t place, std::int32_t weight);
    void SumTieSteps();
    void AddBalances();
    bool IsStopped() const { return work != nullptr && work->IsStopped(); }
    void EndOverall();
    void Compare();
    void ComparePairs();
    void EndStep();
    double SubsetStatistic(const SubsetRecord& subset);
    /// Twice the sums of ranks of a candidate, which no other one with its first position has.
    std::int64_t* TwiceSumsOf(const SubsetRecord& subset) {
        return twiceSubsetSums.data() + subset.firstPosition * row.size();
    }
    void AddFields(ResultElement& element) const;

    const RankedRowsTest& kind;
    double sigLevel = kDefaultSigLevel;
    std::vector<int> variableIndices;
    int weightVariableIndex = -1;
    std::vector<const double*> columns;  // of the batch, in the order in which the fields are ranked
    std::vector<double> row;
    RowRanks rowRanks;
    /// Of all records so far, without their signs. As long as sums over them are exact, these may be made in any order.
    double absoluteWeight = 0;
    bool isExact = true;
    RankSums rankSums;
    std::vector<double> meanRanks;
    std::vector<RankFrequencies> rankFrequencies;
    double tieSum = 0;
    double sig = 0;
    ComparisonRequest comparison;
    State state = State::kOverall;
    std::vector<PairRecord> pairwiseResults;
    bool pairwiseDone = false;
    std::vector<OrderedSample> orderedSamples;
    StepwiseComparison steps;
    /// What the first step leaves for the others, over the rows whose ranks follow from single comparisons: their
    /// weight, and for each two positions by how much more of it lies above than below. The other rows, by their
    /// numbers, are ranked in each step.
    std::int64_t comparedWeight = 0;
    std::vector<std::int64_t> balances;
    std::vector<std::int64_t> twiceSubsetSums;
    /// What each two positions add to the ties of a subset that has both.
    std::vector<std::int64_t> tieSteps;
    bool countsTies = false;
    std::vector<std::size_t> uncertainRows;
    bool isFirstStep = true;
    std::size_t rowsSeen = 0;       // in this step
    std::size_t uncertainSeen = 0;  // of the list above
};
