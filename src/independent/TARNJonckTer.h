#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "independent/GroupBoxPlot.h"
#include "independent/JonckheereSubset.h"
#include "independent/KGroups.h"
#include "planning/contract/TARNPlan.h"
#include "planning/contract/TARNTest.h"
#include "support/ResultElements.h"
#include "support/TARNRank.h"

/// The Jonckheere-Terpstra test of ordered independent groups, setting "IJonckheereTerpstra", with its comparisons and
/// the box plots of the groups.
class TARNJonckTer : public TARNTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "orderOfHypotheses", "pairWise" and "stepWise".
    explicit TARNJonckTer(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override;
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    enum class Phase { kOverall, kPairs, kSteps, kFinished };

    void BeginSizes();
    void BeginOverall();
    void BeginPairs();
    void BeginSteps();
    void ShrinkSubsets();
    void EndOverall();
    void EndPairs();
    void EndStep();
    void Refuse(const RefusalCodes& codes);
    bool Judge(JonckheereSubset& subset);
    double SizeOf(std::int32_t category) const { return groupSizes.Of(category); }

    void AddBoxes(ResultElement& element) const;
    ComparedSamples Samples() const;

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    double sigLevel = 0.05;
    std::string orderOfHypotheses;
    std::int32_t categoryCount = 0;
    GroupComparisons comparisons;
    bool overallDone = false;
    UnivariateResults* univariateResults = nullptr;
    GroupSizes groupSizes;
    Phase phase = Phase::kOverall;
    int overallPass = 0;
    int stepwisePass = 0;
    std::vector<GroupBoxPlot> groupBoxes;  // of the groups with cases, in their order
    TARNRank wholeRank;
    std::vector<double> rankSums;  // per category
    JonckheereSubset overall;
    bool overallSignificant = false;
    std::vector<JonckheereSubset> pairSubsets;
    StepwiseComparison steps{ComparisonRulesOf::kJonckTer};
    std::vector<JonckheereSubset> stepSubsets;  // by their first positions among the active groups
    std::vector<std::int32_t> activeGroups;     // categories with cases, in their order
};

/// The plan builder of "IJonckheereTerpstra". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "orderOfHypotheses" and "typeOfMultipleComparison", optional.
void PlanJonckTer(const QKSettings& entry, TARNPlan& plan);
