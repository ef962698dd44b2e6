#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/TARNPlan.h"
#include "contract/TARNTest.h"
#include "independent/GroupBoxPlot.h"
#include "platform/common/QKMV.h"
#include "support/ComparisonRequest.h"
#include "support/ComparisonTables.h"
#include "support/PairwiseComparison.h"
#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"
#include "support/StepwiseComparison.h"
#include "support/TARNRank.h"

/// The Kruskal-Wallis test of several independent groups, setting "IKruskalWallis", with its comparisons and the box
/// plots of the groups.
class TARNKruskalWOneWay : public TARNTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "numberOfCategories" and "typeOfMultipleComparison".
    explicit TARNKruskalWOneWay(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override;
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// What comes out when some of the groups are tested among themselves.
    struct Result {
        std::int32_t totalN = 0;
        double statistic = QKMV::Missing();
        double degreesOfFreedom = QKMV::Missing();
        double sig = QKMV::Missing();
    };

    void BeginRanking();
    void BeginBoxes();
    void PlanStepping();
    void EndRanking();
    void ComparePairs();
    void EndStep();
    Result ComputeH(const std::vector<std::size_t>& groups, TARNRank& rank);
    PairRecord Compare(std::size_t a, std::size_t b) const;
    double MeanRank(std::size_t group) const { return rankSums[group] / groupCounts[group]; }
    ComparedSamples Samples(const std::vector<std::size_t>& groups) const;
    ComparedSamples PairedSamples() const;

    void AddBoxes(ResultElement& element) const;

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    double sigLevel = 0.05;
    bool stepwiseActive = false;
    bool pairwiseActive = false;
    std::size_t passCounter = 0;
    std::vector<std::int32_t> groupCounts;  // per category
    std::vector<double> rankSums;           // per category, over all records
    double tieSum = 0;
    std::vector<GroupBoxPlot> groupBoxes;
    TARNRank mainRank;
    std::vector<std::size_t> mainGroups;  // those with cases
    Result mainResult;
    std::vector<PairRecord> pairSubsets;
    std::vector<QKContUnivariateVariable> groupUnivariates;  // for the order of equal mean ranks
    std::vector<std::size_t> sortedGroups;
    std::vector<std::size_t> positions;  // per category its place among the sorted groups
    StepwiseComparison steps{ComparisonRulesOf::kKruskalWOneWay};
    std::vector<TARNRank> stepRanks;  // of the subsets under test, by their first positions
};

/// The plan builder of "IKruskalWallis". Keys: "variableName", "groupVariableName", "typeOfMultipleComparison";
/// "originVariableName", optional.
void PlanKruskalWOneWay(const QKSettings& entry, TARNPlan& plan);
