#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/TARNPlan.h"
#include "independent/JonckheereSubset.h"
#include "independent/SeveralGroups.h"
#include "support/TARNRank.h"

/// The Jonckheere-Terpstra test of ordered independent groups, setting "IJonckheereTerpstra", with its comparisons and
/// the box plots of the groups.
class TARNJonckTer : public SeveralGroups {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "orderOfHypotheses", "pairWise" and "stepWise".
    explicit TARNJonckTer(std::unique_ptr<QKSettings> testSettings);

    QKStatus ProcessRecord(Record& record) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadOwnSettings() override;
    void BeginOverall() override;
    void EndOverallPass() override;
    void BeginPairs() override;
    void EndPairs() override;
    void BeginSteps() override;
    void BeginNextStep() override;
    StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) override;
    bool Judge(JonckheereSubset& subset);
    double SizeOf(std::int32_t category) const { return groupSizes.Of(category); }

    ComparedSamples Samples() const;

    std::string orderOfHypotheses;
    TARNRank wholeRank;
    std::vector<double> rankSums;  // per category
    JonckheereSubset overall;
    bool overallSignificant = false;
    std::vector<JonckheereSubset> pairSubsets;
    std::vector<JonckheereSubset> stepSubsets;  // by their first positions among the active groups
};

/// The plan builder of "IJonckheereTerpstra". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "orderOfHypotheses" and "typeOfMultipleComparison", optional.
void PlanJonckTer(const QKSettings& entry, TARNPlan& plan);
