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

    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    QKStatus EndPass() override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void BeginSizes();
    void BeginOverall();
    void BeginPairs();
    void BeginSteps();
    void ShrinkSubsets();
    void EndOverall();
    void EndPairs();
    void EndStep();
    bool Judge(JonckheereSubset& subset);
    double SizeOf(std::int32_t category) const { return groupSizes.Of(category); }

    ComparedSamples Samples() const;

    std::string orderOfHypotheses;
    int stepwisePass = 0;
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
