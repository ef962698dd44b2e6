#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "contract/TARNTest.h"
#include "independent/GroupBoxPlot.h"
#include "independent/TwoGroups.h"
#include "support/ComparisonRequest.h"
#include "support/ComparisonTables.h"
#include "support/ResultElements.h"
#include "support/StepwiseComparison.h"

/// What the Jonckheere-Terpstra and the median test share.

/// The weighted size of each category that had a record, and those of them that have cases.
class GroupSizes {
 public:
    void Add(std::int32_t category, std::int32_t weight);
    std::int32_t Of(std::int32_t category) const;
    /// The categories 0 .. `categoryCount` - 1 with a size above 0, in ascending order.
    std::vector<std::int32_t> WithCases(std::int32_t categoryCount) const;

 private:
    std::vector<std::int32_t> sizes;
};

/// The status codes of a test for what its base class finds.
struct SeveralGroupsCodes {
    long noUnivariateResults;
    long tooFewCategories;
    RefusalCodes tooFewGroups;
    RefusalCodes notSignificant;
};

/// A test of several groups on records in ascending order of the test field, that goes through three phases: overall,
/// then all pairs if they are wanted, then homogeneous subsets if they are. It gathers the sizes of the groups in its
/// first pass and a box plot of each in the next two. What a pass does with a record is up to the test.
class SeveralGroups : public TARNTest {
 public:
    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    bool NeedsAnotherPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;

 protected:
    enum class Phase { kOverall, kPairs, kSteps, kFinished };
    /// Passes of the first phase: sizes, quantiles of the boxes, outliers.
    static constexpr int kOverallPasses = 3;

    /// `codes` is borrowed for the life of the test.
    SeveralGroups(std::unique_ptr<QKSettings> testSettings, const SeveralGroupsCodes& codes,
                  const ComparisonRules& rules)
        : TARNTest(std::move(testSettings)), codes_(codes), steps(rules) {}

    /// Reads the settings that both tests have, and the number of categories, which has to be 2 at least.
    void ReadCommonSettings();
    /// The category of a record, -1 for one that takes no part.
    std::int32_t CategoryOf(const Record& record) const;
    /// Once the sizes are known: the groups with cases, of which there has to be one, and their boxes.
    void BeginBoxes();

    /// After the last pass of the first phase: what comes next. Comparisons need a significant overall test of three
    /// groups at least.
    void EndOverallPhase(bool overallSignificant);
    void EndPairsPhase();
    /// Ends the phase if the search is done.
    void EndStepsPhase();
    bool HasPairsToShow() const { return wanted.pairwise && pairwiseDone; }

    /// The boxes of the groups. `addOverall` adds what stands in front of them, `addGroup` what a group has beside its
    /// box, by its place among the groups with cases; both may be empty.
    void AddBoxes(ResultElement& element, const std::function<void(StructuredTable&)>& addOverall,
                  const std::function<void(StructuredTable&, std::size_t place)>& addGroup) const;
    /// Adds the homogeneous subsets that the search has found.
    void AddSteps(ResultElement& element, const ComparedSamples& samples) const;

 private:
    void Refuse(const RefusalCodes& refusal);

    const SeveralGroupsCodes& codes_;

 protected:
    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    double sigLevel = 0.05;
    std::int32_t categoryCount = 0;
    Phase phase = Phase::kOverall;
    int overallPass = 0;
    ComparisonRequest wanted;
    GroupSizes groupSizes;
    std::vector<std::int32_t> activeGroups;  // categories with cases, in their order
    std::vector<GroupBoxPlot> groupBoxes;    // theirs
    StepwiseComparison steps;

 private:
    UnivariateResults* univariateResults = nullptr;
    bool overallDone = false;
    bool pairwiseDone = false;
    bool stepwiseDone = false;
};

/// Resolves the fields as `PlanGroupedFields` does, requests the frequencies of "originVariableName", and reads
/// "typeOfMultipleComparison".
GroupedFields PlanSeveralGroups(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes,
                                const ComparisonRules& rules);
