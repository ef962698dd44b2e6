#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "contract/TARNPlan.h"
#include "contract/TARNPlanBuilder.h"
#include "independent/GroupSplit.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "support/UnivariateResults.h"

/// What the tests of two independent groups share: a continuous test field, a categorical field that names the groups,
/// and which of its categories make up each group.

// ---- Plan ----

/// The codes of a plan builder for such a pair of fields.
struct GroupedFieldsCodes {
    long testNameMissing;
    long groupNameMissing;
    long unknownField;
    long testNotContinuous;
    long groupNotCategorical;
    /// Whether the failure of a field of the wrong kind has its index as a parameter.
    bool tellsTestField = true;
    bool tellsGroupField = true;
};

/// The fields that a plan builder found; -1 for one that it did not find.
struct GroupedFields {
    int test = -1;
    int group = -1;
};

/// What becomes of the group field where the test field fails: nothing; or it is still looked up, without a second
/// failure, so that the condition shows it; or it is resolved all the same, and its failure has a message of its own.
enum class AfterFailedTestField { kStop, kStillFindGroup, kResolveGroup };

/// Resolves "variableName" and "groupVariableName" and writes "variableIndex" and "groupVariableIndex". A field of the
/// wrong kind has its index written all the same.
GroupedFields PlanGroupedFields(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes,
                                AfterFailedTestField after);

/// Asks for the test field sorted, with its descriptives, and for the frequencies of the groups; nothing under an
/// error.
void RequestGroupedFields(const TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFields& fields);

/// Resolves the groups to category indices, under "group1List" and "group2List" where the entry lists them
/// ("userSpecifyGroupList"), else one category each under keys that `TwoGroups::Read` knows. Nothing under an error.
/// `listEmpty`: the code of an empty list.
void PlanTwoGroups(TARNPlanBuilder& builder, const TARNPlan& plan, int groupField, long listEmpty);

// ---- Test ----

/// The codes of a test whose groups are not what they should be.
struct TwoGroupsCodes {
    long noUnivariateResults;
    long notTwoCategories;
    long inBothLists;
    long groupEmpty;
};

/// The name of the table of a group: "Group0", "Group1".
std::string GroupTableName(std::size_t group);

/// The categories of two groups.
class TwoGroups {
 public:
    static constexpr std::size_t kFirst = 0;
    static constexpr std::size_t kSecond = 1;

    TwoGroups() = default;
    TwoGroups(std::vector<double> first, std::vector<double> second)
        : groupLists{std::move(first), std::move(second)} {}

    /// Takes the groups as `PlanTwoGroups` wrote them.
    void Read(const QKSettings& settings);
    /// Whether the groups were listed by the user.
    bool AreListed() const { return userSpecifyGroupList; }
    /// The category indices of a group.
    const std::vector<double>& List(std::size_t group) const { return groupLists[group]; }

    /// Groups of the data need a field of exactly two categories, empty or not; listed groups must be apart, and each
    /// must have a case. `results` may be null.
    QKStatus Validate(const UnivariateResults* results, int groupField, const TwoGroupsCodes& codes) const;

    /// Makes the two categories of the field the groups, in the order of their indices. `results` may be null.
    QKStatus TakeCategoriesOfData(const UnivariateResults* results, int groupField, long noFrequencies,
                                  long notTwoCategories);

    /// Makes `split` part records by these groups. A category that were in both is in the first one.
    void Prepare(GroupSplit& split) const;

 private:
    std::array<std::vector<double>, 2> groupLists;
    bool userSpecifyGroupList = false;
};
