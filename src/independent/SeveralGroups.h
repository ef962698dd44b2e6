#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "contract/ColumnPass.h"
#include "independent/GroupBoxPlot.h"
#include "independent/GroupSplit.h"
#include "independent/TwoGroups.h"
#include "support/ComparisonRequest.h"
#include "support/ComparisonTables.h"
#include "support/ResultElements.h"
#include "support/StepwiseComparison.h"

/// What the tests of several groups share: Kruskal-Wallis, Jonckheere-Terpstra and median.

/// Which categories are groups of the test. A sum of weights that has wrapped around may lie below 0.
enum class GroupsAre { kOfPositiveSize, kOfAnySizeBut0 };
/// What the boxes of the groups are named and counted by: the groups with cases, or all categories.
enum class BoxesAre { kByPlace, kByCategory };
/// When the first step of the search for subsets takes place.
enum class FirstStep { kInAPassOfItsOwn, kWithTheOutliers };
/// The number of passes to come, as progress gets it: it is right, or good for the first pass only, since it is dropped
/// to 0 whenever another pass is needed.
enum class Foretold { kToTheEnd, kOnceOnly };
/// Whether the condition shows the fields of a test that its plan builder failed.
enum class FailedPlan { kHidesFields, kShowsFields };

/// What tells the tests apart besides their statistics. Documents and progress depend on every item.
struct SeveralGroupsRules {
    // The codes of what the base class finds; the first two of a test that asks the descriptives for its categories.
    long noUnivariateResults = 0;
    long tooFewCategories = 0;
    RefusalCodes tooFewGroups;
    RefusalCodes notSignificant;

    // The passes that are foretold for a comparison of all pairs, and for each step.
    int passesOfPairs;
    int passesOfStep;
    FirstStep firstStep = FirstStep::kInAPassOfItsOwn;
    Foretold foretold = Foretold::kOnceOnly;
    FailedPlan failedPlan = FailedPlan::kHidesFields;
    GroupsAre groups = GroupsAre::kOfPositiveSize;
    BoxesAre boxes = BoxesAre::kByPlace;
};

/// Records of a batch. A group is the place of the record's category among the groups, in the first pass the category
/// itself; `GroupSplit::kNoGroup` for a record that takes no part.
struct GroupedRecords {
    std::size_t size;
    const double* values;
    const std::int32_t* weights;
    const std::int32_t* groups;
    const std::int32_t* categories;
};

/// A test of several groups on records in ascending order of the test field, that goes through three phases: overall,
/// then all pairs if they are wanted, then homogeneous subsets if they are. The first phase has three passes: sizes of
/// the groups, quantiles of their box plots, outliers. This class decides what comes next; a test says, in the
/// operations below, what it does then. What a pass does with a record is up to the test, too, but for the sizes and
/// the boxes.
///
/// A brief run has no boxes, and of the first phase only the passes that the test needs.
class SeveralGroups : public ColumnTest {
 public:
    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() final;
    QKStatus ProcessColumns(ColumnBatch& batch) final;
    QKStatus EndPass() final;
    bool NeedsAnotherPass() final;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;

 protected:
    enum class Phase { kOverall, kPairs, kSteps, kFinished };

    /// `rules` is borrowed for the life of the test.
    SeveralGroups(std::unique_ptr<QKSettings> testSettings, const SeveralGroupsRules& rules,
                  const ComparisonRules& comparisonRules)
        : ColumnTest(std::move(testSettings)), rules_(rules), steps(comparisonRules, arithmetic) {}

    // ---- What a test does, in the order in which it is called ----

    /// In the first pass, before the settings that all tests have.
    virtual void ReadOwnSettings() {}
    /// Sets `categoryCount`. By default it comes from the descriptives, and has to be 2 at least.
    virtual void CountCategories();
    /// How many passes the first phase has in a brief run. Asked whenever the answer matters, since it may depend on
    /// the comparisons that are still wanted.
    virtual int BriefPasses() const = 0;
    /// Whether the medians of the groups are needed in a brief run, too.
    virtual bool NeedsMedians() const { return false; }
    /// Before the second pass, when the groups are known. Calls `BeginBoxes`.
    virtual void BeginOverall() = 0;
    /// The next records of a pass.
    virtual void Take(const GroupedRecords& records) = 0;
    /// After each pass of the first phase, of which `overallPass` is the number. One of them calls `Settle`.
    virtual void EndOverallPass() = 0;
    virtual void EndPairs() {}
    /// Before the first step. Before each other one every candidate has lost its last group.
    virtual void BeginSteps() = 0;
    /// After a pass that prepares a comparison.
    virtual void EndPreparation() {}
    /// Computes a candidate at the end of a step.
    virtual StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) = 0;
    virtual void EndStep();
    /// After the last pass: the time to give up what was kept, since tests live as long as the document.
    virtual void Release() {}

    // ---- What it calls ----

    /// Whether the run is to end: to be asked where a comparison of many groups takes its time.
    bool IsStopped() const { return work != nullptr && work->IsStopped(); }
    /// Makes the boxes of the groups; an error where there is no group.
    void BeginBoxes();
    /// Ends the overall test. Comparisons need a significant one of three groups at least.
    void Settle(bool isSignificant);

    /// The median of the group at a place, after the second pass.
    double MedianOf(std::size_t place) const { return groupBoxes[place].Median(); }
    /// Whether a weight was below 0, and the sum of all weights, of the records in any category.
    bool HasNegativeWeight() const { return hasNegativeWeight; }
    std::int64_t SumOfWeights() const { return sumOfWeights; }
    std::int64_t SizeOf(std::int32_t category) const { return groupSizes[static_cast<std::size_t>(category)]; }
    /// Per category its place among some categories, or `GroupSplit::kNoGroup`.
    std::vector<std::int32_t> PlacesOf(const std::vector<std::int32_t>& categories) const;

    /// The boxes of the groups. `addOverall` adds what stands in front of them, `addGroup` what a group has beside its
    /// box, by its place among the groups; both may be empty.
    void AddBoxes(ResultElement& element, const std::function<void(StructuredTable&)>& addOverall,
                  const std::function<void(StructuredTable&, std::size_t place)>& addGroup) const;
    bool HasPairsToShow() const { return wanted.pairwise && pairwiseDone; }
    /// Adds the homogeneous subsets, if the search has found them.
    void AddSteps(ResultElement& element, const ComparedSamples& samples) const;

    static constexpr int kSizesPass = 0;
    static constexpr int kQuantilesPass = 1;
    static constexpr int kOutliersPass = 2;

 private:
    void ReadFields();
    void BeginSizes();
    void AddSizes(const GroupedRecords& records);
    void AddToBoxes(const GroupedRecords& records);
    void FindGroups();
    int OverallPasses() const;
    bool IsStepping() const;
    Phase NextPhase() const;

    const SeveralGroupsRules& rules_;

 protected:
    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    double sigLevel = kDefaultSigLevel;
    std::int32_t categoryCount = 0;
    Phase phase = Phase::kOverall;
    int overallPass = kSizesPass;
    ComparisonRequest wanted;
    bool pairwiseDone = false;  // a test whose pairs need no pass sets it when they are compared
    /// Whether each comparison takes a pass in front of the one that it ends with, and whether this is such a pass.
    bool preparesComparisons = false;
    bool isPreparing = false;
    std::vector<std::int64_t> groupSizes;    // the weighted size of each category
    std::vector<std::int32_t> activeGroups;  // categories that are groups, in their order
    StepwiseComparison steps;

 private:
    UnivariateResults* univariateResults = nullptr;
    GroupSplit split;
    bool hasNegativeWeight = false;
    std::int64_t sumOfWeights = 0;
    std::vector<GroupBoxPlot> groupBoxes;  // of the groups, where boxes or medians are wanted
    bool isPrepared = false;
    bool stepsBegun = false;
};

/// Resolves the fields as `PlanGroupedFields` does, requests the frequencies of "originVariableName", and reads
/// "typeOfMultipleComparison".
GroupedFields PlanSeveralGroups(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes,
                                const ComparisonRules& rules);
