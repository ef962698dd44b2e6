#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/TARNPlan.h"
#include "independent/JonckheereSubset.h"
#include "independent/JonckheereWalk.h"
#include "independent/SeveralGroups.h"
#include "independent/TieScan.h"
#include "support/TARNRank.h"

/// The Jonckheere-Terpstra test of ordered independent groups, setting "IJonckheereTerpstra", with its comparisons and
/// the box plots of the groups.
class TARNJonckTer : public SeveralGroups {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "orderOfHypotheses", "pairWise" and "stepWise".
    explicit TARNJonckTer(std::unique_ptr<QKSettings> testSettings);

    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadOwnSettings() override;
    int BriefPasses() const override;
    void BeginOverall() override;
    void Take(const GroupedRecords& records) override;
    void EndOverallPass() override;
    void EndPairs() override;
    void BeginSteps() override;
    StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) override { return ComputeRange(range, walk); }
    void EndStep() override;
    void Release() override;
    StepwiseComparison::Outcome ComputeRange(SubsetRecord& range, JonckheereWalk& by);
    void NoteSubsets();
    bool Judge(JonckheereSubset& subset, const JonckheereCounts& counts);
    std::size_t PlaceInWalk(std::size_t placeOfGroup) const;

    ComparedSamples Samples() const;

    std::string orderOfHypotheses;
    TARNRank wholeRank{arithmetic};
    std::vector<double> rankSums;  // per category
    TieScan tieScan;
    JonckheereWalk walk;  // over the groups, or over all categories
    bool walksAllCategories = false;
    bool walksTwice = false;
    JonckheereWalk walkAsDefined;  // over all categories, where the search by the textbook may differ from it
    JonckheereSubset overall;
    bool overallSignificant = false;
    std::vector<PairRecord> pairs;
};

/// The plan builder of "IJonckheereTerpstra". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "orderOfHypotheses" and "typeOfMultipleComparison", optional.
void PlanJonckTer(const QKSettings& entry, TARNPlan& plan);
