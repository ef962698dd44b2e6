// The automatic choice of tests from what is known of the fields. Expected proposals are written out by hand.

#include "selection/TARNAutoSelect.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "tests/selection/Selection.h"

namespace selection {

namespace {

struct Choice {
    Names unselected;
    Lines proposals;
};

Choice Choose(const std::string& family, harness::Fields& fields, const Names& names, const std::string& group = "") {
    std::vector<QKSettings*> proposals;
    Choice choice;
    choice.unselected = TARNAutoSelect().SelectTests(proposals, family, fields.List(), names, group);
    for (QKSettings* proposal : proposals) {
        const std::unique_ptr<QKSettings> owned(proposal);
        choice.proposals.push_back(Describe(*owned));
    }
    return choice;
}

const char* const kOne = "One_Sample";
const char* const kRelated = "Related_Samples";
const char* const kIndependent = "Independent_Samples";

TEST(AutoSelect, HasAVirtualDestructorAndNoData) {
    EXPECT_TRUE(std::has_virtual_destructor_v<TARNAutoSelect>);
    EXPECT_EQ(sizeof(TARNAutoSelect), sizeof(void*));
}

TEST(AutoSelect, ProposalsAreAppended) {
    harness::Fields fields;
    fields.Continuous("x");
    const auto before = std::make_unique<QKSettings>();
    std::vector<QKSettings*> proposals{before.get()};
    TARNAutoSelect().SelectTests(proposals, kOne, fields.List(), {"x"}, "");
    ASSERT_EQ(proposals.size(), 2u);
    EXPECT_EQ(proposals[0], before.get());
    delete proposals[1];
}

TEST(AutoSelect, AFamilyOfAnotherNameYieldsNothing) {
    harness::Fields fields;
    fields.Continuous("x");
    const Choice choice = Choose("one_sample", fields, {"x", "nowhere"});
    EXPECT_EQ(choice.proposals, Lines{});
    EXPECT_EQ(choice.unselected, Names{});
}

// ---- One sample ----

TEST(AutoSelectOneSample, EveryKindOfField) {
    const std::string binomial = "algorithmName 'OBinomial', classFormation 'getFromData', variableName ";
    const std::string chiSquare = "algorithmName 'OChiSquare', classFormation 'getFromData', variableName ";
    harness::Fields fields;
    fields.Numeric("two", {0, 1}).Text("twoTexts", {"a", "b"}, true).Numeric("three", {1, 2, 3}, true);
    fields.Text("four", {"a", "b", "c", "d"}).Continuous("x").Other("other").Text("one", {"a"}).Numeric("none", {});
    const Choice choice =
        Choose(kOne, fields, {"x", "two", "none", "three", "twoTexts", "other", "four", "one", "nowhere"});
    EXPECT_EQ(choice.proposals,
              (Lines{"algorithmName 'OKolmogorovSmirnovNormal', classFormation 'getFromData', "
                     "distributionFunction 'normal', isUseSample 'true', variableName 'x'",
                     binomial + "'two'", chiSquare + "'three'", binomial + "'twoTexts'", chiSquare + "'four'"}));
    EXPECT_EQ(choice.unselected, (Names{"none", "other", "one", "nowhere"}));
}

TEST(AutoSelectOneSample, ASingleCategoryAndAnUnknownFieldAreUnselected) {
    harness::Fields fields;
    fields.Numeric("single", {7});
    const Choice choice = Choose(kOne, fields, {"single", "nowhere"});
    EXPECT_EQ(choice.proposals, Lines{});
    EXPECT_EQ(choice.unselected, (Names{"single", "nowhere"}));
}

// ---- Independent samples ----

TEST(AutoSelectIndependent, TheGroupsAloneDecide) {
    harness::Fields fields;
    fields.Numeric("two", {0, 1}).Text("three", {"a", "b", "c"}).Numeric("one", {1}).Continuous("x");

    const Choice two = Choose(kIndependent, fields, {"x", "three"}, "two");
    EXPECT_EQ(two.proposals, (Lines{"algorithmName 'IMannWhitneyU', variableName 'x', groupVariableName 'two'",
                                    "algorithmName 'IMannWhitneyU', variableName 'three', groupVariableName 'two'"}));
    EXPECT_EQ(two.unselected, Names{});

    const Choice three = Choose(kIndependent, fields, {"x"}, "three");
    EXPECT_EQ(three.proposals, (Lines{"algorithmName 'IKruskalWallis', typeOfMultipleComparison 'pairWise', "
                                      "variableName 'x', groupVariableName 'three'"}));

    for (const char* group : {"one", "x"}) {
        const Choice few = Choose(kIndependent, fields, {"x", "three"}, group);
        EXPECT_EQ(few.proposals, Lines{}) << group;
        EXPECT_EQ(few.unselected, (Names{"x", "three"})) << group;
    }
}

TEST(AutoSelectIndependent, TheTestFieldIsNotLookedAt) {
    harness::Fields fields;
    fields.Numeric("two", {0, 1});
    EXPECT_EQ(Choose(kIndependent, fields, {"nowhere"}, "two").proposals,
              (Lines{"algorithmName 'IMannWhitneyU', variableName 'nowhere', groupVariableName 'two'"}));
}

TEST(AutoSelectIndependent, AnUnknownGroupingFieldMakesNoGroups) {
    harness::Fields fields;
    fields.Continuous("x");
    const Choice choice = Choose(kIndependent, fields, {"x"}, "nowhere");
    EXPECT_EQ(choice.proposals, Lines{});
    EXPECT_EQ(choice.unselected, (Names{"x"}));
}

// ---- Related samples ----

TEST(AutoSelectRelated, TwoContinuousAndTwoOrdinalFields) {
    harness::Fields fields;
    fields.Numeric("o1", {0, 1}, true).Continuous("c1").Numeric("o2", {1, 0}, true).Continuous("c2");
    const Choice choice = Choose(kRelated, fields, {"o1", "c1", "o2", "c2"});
    EXPECT_EQ(choice.proposals,
              (Lines{"algorithmName 'RWilcoxonSignedRanks', variableName ['c1', 'c2']",
                     "algorithmName 'RMcNemar', classFormation 'getFromData', variableName ['o1', 'o2']"}));
    EXPECT_EQ(choice.unselected, Names{});
}

TEST(AutoSelectRelated, ThreeFieldsOfEachSortInTheirOrder) {
    harness::Fields fields;
    fields.Numeric("o1", {0, 1}, true).Numeric("o2", {0, 1}, true).Numeric("o3", {0, 1}, true);
    fields.Text("n1", {"a", "b"}).Text("n2", {"b", "a"}).Text("n3", {"a", "b"});
    fields.Continuous("c1").Continuous("c2").Continuous("c3");
    const std::string cochran =
        "algorithmName 'RCochransQ', classFormation 'getFromData', typeOfMultipleComparison 'pairWise', variableName ";
    EXPECT_EQ(Choose(kRelated, fields, {"o3", "n1", "c1", "o2", "n2", "c3", "o1", "n3", "c2"}).proposals,
              (Lines{"algorithmName 'RFriedmansTwoWayByRanks', typeOfMultipleComparison 'pairWise', "
                     "variableName ['c1', 'c3', 'c2']",
                     cochran + "['n1', 'n2', 'n3']", cochran + "['o3', 'o2', 'o1']"}));
}

TEST(AutoSelectRelated, AFieldOfAnotherKindIsContinuous) {
    harness::Fields fields;
    fields.Continuous("c").Other("other");
    EXPECT_EQ(Choose(kRelated, fields, {"c", "other"}).proposals,
              (Lines{"algorithmName 'RWilcoxonSignedRanks', variableName ['c', 'other']"}));
}

TEST(AutoSelectRelated, UnknownFieldsAreDropped) {
    harness::Fields fields;
    fields.Continuous("c1").Continuous("c2");
    const Choice choice = Choose(kRelated, fields, {"c1", "nowhere", "c2"});
    EXPECT_EQ(choice.proposals, (Lines{"algorithmName 'RWilcoxonSignedRanks', variableName ['c1', 'c2']"}));
    EXPECT_EQ(choice.unselected, Names{});
}

TEST(AutoSelectRelated, AFieldOfAListThatIsTooShortIsNotUnselected) {
    harness::Fields fields;
    fields.Continuous("c").Numeric("o", {0, 1}, true).Text("n", {"a", "b"});
    const Choice choice = Choose(kRelated, fields, {"c", "o", "n"});
    EXPECT_EQ(choice.proposals, Lines{});
    EXPECT_EQ(choice.unselected, Names{});
}

TEST(AutoSelectRelated, ThreeOrdinalFieldsWithThreeValuesAmongThemGetNoTest) {
    harness::Fields fields;
    fields.Numeric("a", {0, 1}, true).Numeric("b", {1, 2}, true).Numeric("c", {0, 1}, true);
    const Choice choice = Choose(kRelated, fields, {"a", "b", "c"});
    EXPECT_EQ(choice.proposals, Lines{});
    EXPECT_EQ(choice.unselected, Names{});
}

// ---- The check for a common pair of categories ----

struct PairCheck {
    const char* name;
    harness::Fields& (*addFields)(harness::Fields&);  // two or three nominal fields
    bool passes;
};

void PrintTo(const PairCheck& check, std::ostream* out) {
    *out << check.name;
}

class CommonPair : public testing::TestWithParam<PairCheck> {};

TEST_P(CommonPair, DecidesOverTheTest) {
    harness::Fields fields;
    GetParam().addFields(fields);
    Names names;
    for (int i = 0; i < fields.List().Size(); ++i) names.push_back(fields.List().GetVarAt(i)->GetName());
    const Choice choice = Choose(kRelated, fields, names);
    EXPECT_EQ(choice.proposals.size(), GetParam().passes ? 1u : 0u);
    if (!GetParam().passes || choice.proposals.empty()) return;
    const std::string test = names.size() == 2 ? "algorithmName 'RMcNemar'" : "algorithmName 'RCochransQ'";
    EXPECT_EQ(choice.proposals[0].substr(0, test.size()), test);
}

using F = harness::Fields;

const PairCheck kPairChecks[] = {
    {"SameNumbers",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 1}).Numeric("b", {0, 1});
     },
     true},
    {"SameTexts",
     [](F& f) -> F& {
         return f.Text("a", {"y", "n"}).Text("b", {"n", "y"});
     },
     true},
    {"OneCategoryEach", [](F& f) -> F& { return f.Numeric("a", {0}).Numeric("b", {1}); }, true},
    {"OneCategoryThenBoth",
     [](F& f) -> F& {
         return f.Numeric("a", {0}).Numeric("b", {1, 0});
     },
     true},
    {"TheSameSingleCategory", [](F& f) -> F& { return f.Numeric("a", {1}).Numeric("b", {1}); }, false},
    {"OtherPair",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 1}).Numeric("b", {1, 2});
     },
     false},
    {"FirstHasThree",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 1, 2}).Numeric("b", {0, 1});
     },
     false},
    {"SecondHasThree",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 1}).Numeric("b", {0, 1, 1});
     },
     false},
    {"NumericAndStringTyped",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 1}).Text("b", {"0", "1"});
     },
     false},
    {"StringAndNumericTyped",
     [](F& f) -> F& {
         return f.Text("a", {"0", "1"}).Numeric("b", {0, 1});
     },
     false},
    {"ExactEqualityOfNumbers",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 0.3}).Numeric("b", {0, 0.1 + 0.2});
     },
     false},
    {"ExactEqualityOfTexts",
     [](F& f) -> F& {
         return f.Text("a", {"y", "n"}).Text("b", {"y", "N"});
     },
     false},
    // The first field's values are taken as they are listed, so a repeated one makes the pair full.
    {"RepeatedInTheFirst",
     [](F& f) -> F& {
         return f.Numeric("a", {1, 1}).Numeric("b", {1});
     },
     true},
    {"RepeatedInTheFirstAndAnother",
     [](F& f) -> F& {
         return f.Numeric("a", {1, 1}).Numeric("b", {0});
     },
     false},
    {"RepeatedInTheSecond",
     [](F& f) -> F& {
         return f.Numeric("a", {1}).Numeric("b", {1, 1});
     },
     false},
    // The first category is read of a field without any, too; an unknown one has the empty text.
    {"NoCategoryAndOne", [](F& f) -> F& { return f.Text("a", {}).Text("b", {"y"}); }, true},
    {"NoCategoryAtAll", [](F& f) -> F& { return f.Text("a", {}).Text("b", {}); }, false},
    {"ThreeOfOnePair",
     [](F& f) -> F& {
         return f.Numeric("a", {0, 1}).Numeric("b", {1}).Numeric("c", {1, 0});
     },
     true},
    {"TheThirdAddsAValue", [](F& f) -> F& { return f.Numeric("a", {0}).Numeric("b", {1}).Numeric("c", {2}); }, false},
};

INSTANTIATE_TEST_SUITE_P(AutoSelectRelated, CommonPair, testing::ValuesIn(kPairChecks),
                         [](const auto& check) { return std::string(check.param.name); });

TEST(AutoSelectRelated, TwoNominalFieldsWithOneCategoryEachGetMcNemar) {
    harness::Fields fields;
    fields.Numeric("zero", {0}).Numeric("one", {1});
    EXPECT_EQ(Choose(kRelated, fields, {"zero", "one"}).proposals,
              (Lines{"algorithmName 'RMcNemar', classFormation 'getFromData', variableName ['zero', 'one']"}));
}

}  // namespace

}  // namespace selection
