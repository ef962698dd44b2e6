// The groups of the tests of two independent groups: their plan builders' failures and their validation, for each test
// that has them.

#include "independent/TwoGroups.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/independent/GroupRun.h"

namespace {

using groups::Entry;
using groups::Failure;
using groups::FailureOf;
using groups::Listed;
using groups::Rows;

/// A test with the codes that it has for one and the same fault.
struct Codes {
    std::string test;
    std::string testNameMissing;
    std::string groupNameMissing;
    std::string unknownField;
    std::string testNotContinuous;
    std::string groupNotCategorical;
    std::string listEmpty;
    std::string notTwoCategories;
    std::string inBothLists;
    std::string groupEmpty;
};

const Rows kRows{{1, 0, 0}, {2, 1, 1}, {3, 2, 0}, {4, 0, 1}};

harness::Fields ThreeFields() {
    harness::Fields fields;
    fields.Continuous("x").Numeric("three", {1, 2, 3}).Text("g", {"a", "b"});
    return fields;
}

class TwoGroupsOf : public testing::TestWithParam<Codes> {
 protected:
    Failure Fails(const QKSettings& entry) const {
        return FailureOf(groups::ResultOf(GetParam().test, entry, ThreeFields(), kRows));
    }
    static Failure With(const std::string& message, const std::string& test, const std::string& group) {
        return {{message}, test, group};
    }
};

TEST_P(TwoGroupsOf, PlanBuilderStopsAtTheFirstFailureAndShowsTheFieldsFoundSoFar) {
    const Codes& codes = GetParam();
    QKSettings onlyGroup;
    onlyGroup.AddSetting("groupVariableName", "g");
    EXPECT_EQ(Fails(onlyGroup), With(codes.testNameMissing + " error", "-1", "-1"));
    QKSettings onlyTest;
    onlyTest.AddSetting("variableName", "x");
    EXPECT_EQ(Fails(onlyTest), With(codes.groupNameMissing + " error", "0", "-1"));
    EXPECT_EQ(Fails(Entry("nowhere", "gone")), With(codes.unknownField + " error nowhere", "-1", "-1"));
    EXPECT_EQ(Fails(Entry("x", "gone")), With(codes.unknownField + " error gone", "0", "-1"));
    EXPECT_EQ(Fails(Entry("g", "gone")), With(codes.testNotContinuous + " error 2", "2", "-1"));
    EXPECT_EQ(Fails(Entry("x", "x")), With(codes.groupNotCategorical + " error 0", "0", "0"));
}

TEST_P(TwoGroupsOf, FieldOfTheFourthKindFailsTheTestAndNotTheRun) {
    harness::Fields fields;
    fields.Other("x").Numeric("g", {1, 2});
    EXPECT_EQ(FailureOf(groups::ResultOf(GetParam().test, Entry(), fields, {{1, 0}, {2, 1}})),
              With(GetParam().testNotContinuous + " error 0", "0", "-1"));
}

TEST_P(TwoGroupsOf, ListedGroupsNeedTwoListsWithCategories) {
    const Codes& codes = GetParam();
    const auto fails = [&](const std::vector<std::string>& first, const std::vector<std::string>& second) {
        return Fails(Listed<std::string>(first, second));
    };
    EXPECT_EQ(fails({}, {"a"}), With(codes.listEmpty + " error", "0", "2"));
    EXPECT_EQ(fails({"a"}, {}), With(codes.listEmpty + " error", "0", "2"));
    EXPECT_EQ(fails({"a"}, {"b", "a"}), With(codes.inBothLists + " error", "0", "2"));
    EXPECT_EQ(fails({"nowhere"}, {"b"}), With(codes.groupEmpty + " error", "0", "2"));
    EXPECT_EQ(fails({"b"}, {"nowhere"}), With(codes.groupEmpty + " error", "0", "2"));
    // Categories that the field does not know all have the index -1, and an overlap is told before an empty group.
    EXPECT_EQ(fails({"nowhere"}, {"gone"}), With(codes.inBothLists + " error", "0", "2"));

    QKSettings noLists = Entry();
    noLists.AddSetting("userSpecifyGroupList", true);
    EXPECT_EQ(Fails(noLists), With(codes.listEmpty + " error", "0", "2"));
}

TEST_P(TwoGroupsOf, ListedCategoryWithoutACaseIsNoGroup) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2, 3}).Weight("w");
    EXPECT_EQ(FailureOf(groups::ResultOf(GetParam().test, Listed<double>({1}, {3}), fields,
                                         {{1, 0, 1}, {2, 1, 1}, {3, 2, 0.9}})),
              With(GetParam().groupEmpty + " error", "0", "1"));
}

TEST_P(TwoGroupsOf, GroupsOfTheDataNeedAFieldOfTwoCategories) {
    EXPECT_EQ(Fails(Entry("x", "three")), With(GetParam().notTwoCategories + " error", "0", "1"));
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1});
    EXPECT_EQ(FailureOf(groups::ResultOf(GetParam().test, Entry(), fields, {{1, 0}, {2, 0}})),
              With(GetParam().notTwoCategories + " error", "0", "1"));
}

TEST_P(TwoGroupsOf, FieldsMadeOfAnotherHaveItsFrequenciesShown) {
    for (const bool failed : {false, true}) {
        QKSettings entry = Entry(failed ? "nowhere" : "x");
        entry.AddSetting("originVariableName", "three");
        const harness::Outcome outcome = groups::RunEntry(GetParam().test, entry, ThreeFields(), kRows);
        EXPECT_TRUE(outcome.document.FieldInfo(1).Exists()) << failed;
        EXPECT_EQ(outcome.document.FieldInfo(2).Exists(), !failed);
    }
}

INSTANTIATE_TEST_SUITE_P(Tests, TwoGroupsOf,
                         testing::Values(Codes{"IMannWhitneyU", "220712", "220713", "220703", "220715", "220714",
                                               "220701", "220709", "220710", "220711"},
                                         Codes{"IMoses", "221112", "221113", "221103", "221115", "221114", "221101",
                                               "221109", "221110", "221111"}),
                         [](const auto& test) { return test.param.test; });

}  // namespace
