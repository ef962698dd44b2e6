#pragma once

#include <cstdint>
#include <vector>

#include "independent/TwoGroups.h"
#include "planning/contract/TARNTest.h"
#include "support/MultipleComparison.h"

/// What the Jonckheere-Terpstra and the median test share: the plan of their fields, the comparisons that two switches
/// ask for, and the sizes of the groups.

/// The comparisons that are wanted and those that are done.
struct GroupComparisons {
    ComparisonRequest wanted;
    bool pairwiseDone = false;
    bool stepwiseDone = false;

    void Read(const QKSettings& settings);
    bool AreDone() const { return (!wanted.pairwise || pairwiseDone) && (!wanted.stepwise || stepwiseDone); }
};

/// Resolves the fields as `PlanGroupedFields` does, requests the frequencies of "originVariableName", and writes
/// "typeOfMultipleComparison" as the two switches that `GroupComparisons` reads.
GroupedFields PlanKGroups(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes);

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
