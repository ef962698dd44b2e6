// The related family of the settings expansion. Expected entries are written out by hand.

#include <gtest/gtest.h>

#include "tests/selection/Selection.h"

namespace selection {

namespace {

/// Three fields of each sort, the ordinal ones with copies but for "plain", which has none.
harness::Fields EverySort() {
    harness::Fields fields;
    fields.Continuous("c1").Continuous("c2").Continuous("c3").Other("other");
    fields.Numeric("o1", {1, 2, 3}, true).Continuous("$_o1").Numeric("o2", {1, 2, 3}, true).Continuous("$_o2");
    fields.Numeric("plain", {1, 2}, true).Text("so", {"a", "b"}, true);
    fields.Numeric("n1", {0, 1}).Numeric("n2", {0, 1}).Text("n3", {"a", "b"});
    return fields;
}

const Renamed kRenamed{{"o1", "$_o1"}, {"o2", "$_o2"}};

Expanded ExpandTests(const Names& names, const std::vector<Item>& tests, bool keyBehind = true) {
    std::vector<Item> request{{"relatedVariables", names}, {"isAutomaticallyRelated", false}};
    request.insert(request.end(), tests.begin(), tests.end());
    if (keyBehind) request.push_back({"done", true});
    harness::Fields fields = EverySort();
    return Expand(Tree(request), fields, kRenamed);
}

// ---- The continuous group ----

struct ContinuousTest {
    const char* test;
    const char* nameInWarnings;
    bool takesMore;
    const char* furtherKeys;
};

void PrintTo(const ContinuousTest& test, std::ostream* out) {
    *out << test.test;
}

class ExpansionContinuousGroup : public testing::TestWithParam<ContinuousTest> {
 protected:
    Item Test() const { return Selected(GetParam().test, {{"typeOfMultipleComparison", "stepWise"}}); }
    std::string Entry(const std::string& fields) const {
        const std::string test = GetParam().test;
        return test + ": AlgorithmName '" + test + "', variableName " + fields + GetParam().furtherKeys;
    }
};

TEST_P(ExpansionContinuousGroup, APair) {
    const Expanded result = ExpandTests({"c2", "nowhere", "other", "c1"}, {Test()});
    EXPECT_EQ(result.entries, (Lines{Entry("['c2', 'c1'], testIndex 0")}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST_P(ExpansionContinuousGroup, EncodedNamesStandInFront) {
    const Expanded result = ExpandTests({"c1", "plain", "o2"}, {Test()});
    EXPECT_EQ(result.entries, (Lines{Entry("['$_o2', 'c1'], testIndex 0, originVariableName ['o2']")}));
    EXPECT_EQ(result.warnings, Lines{}) << "an ordinal field without a copy takes no part";
}

TEST_P(ExpansionContinuousGroup, AnotherNumberOfFields) {
    const std::string mismatch = std::string("220017 [") + GetParam().nameInWarnings + "]";
    EXPECT_EQ(ExpandTests({"c1"}, {Test()}).warnings, (Lines{mismatch}));

    const Expanded four = ExpandTests({"c3", "o1", "c1", "o2"}, {Test()});
    if (GetParam().takesMore) {
        EXPECT_EQ(four.entries,
                  (Lines{Entry("['$_o1', '$_o2', 'c3', 'c1'], testIndex 0, originVariableName ['o1', 'o2']")}));
        EXPECT_EQ(four.warnings, Lines{});
    } else {
        EXPECT_EQ(four.entries, Lines{});
        EXPECT_EQ(four.warnings, (Lines{mismatch}));
    }
}

TEST_P(ExpansionContinuousGroup, WithoutFieldsOfTheGroup) {
    const Expanded result = ExpandTests({"n1", "plain"}, {Test()});
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, (Lines{std::string("220020 [") + GetParam().nameInWarnings + "]"}));
}

TEST_P(ExpansionContinuousGroup, AsksForContinuousAndOrdinalFields) {
    EXPECT_EQ(ExpandTests({"c1", "o1", "n1"}, {Test()}).warnings, (Lines{"220016 [n1]"}));
}

INSTANTIATE_TEST_SUITE_P(FiveTests, ExpansionContinuousGroup,
                         testing::Values(ContinuousTest{"RSign", "Sign", false, ""},
                                         ContinuousTest{"RWilcoxonSignedRanks", "WilcoxonSignedRanks", false, ""},
                                         ContinuousTest{"RHodgesLehmannEstimatePairs", "HodgesLehmannEstimatePairs",
                                                        false, ""},
                                         ContinuousTest{"RFriedmansTwoWayByRanks", "FriedmansTwoWayByRanks", true,
                                                        ", typeOfMultipleComparison 'stepWise'"},
                                         ContinuousTest{"RKendallsCoefficient", "KendallsCoefficient", true,
                                                        ", typeOfMultipleComparison 'stepWise'"}),
                         [](const auto& test) { return std::string(test.param.test); });

TEST(ExpansionRelated, SignWithThreeContinuousFields) {
    const Expanded result = ExpandTests({"c1", "c2", "c3"}, {Selected("RSign")});
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, (Lines{"220017 [Sign]"}));
}

TEST(ExpansionRelated, SignOverAContinuousFieldAndAnEncodedOne) {
    EXPECT_EQ(ExpandTests({"c1", "o1"}, {Selected("RSign")}).entries,
              (Lines{"RSign: AlgorithmName 'RSign', variableName ['$_o1', 'c1'], testIndex 0, "
                     "originVariableName ['o1']"}));
}

TEST(ExpansionRelated, AComparisonThatTheRequestLacksIsEmpty) {
    EXPECT_EQ(ExpandTests({"c1", "c2"}, {Selected("RKendallsCoefficient")}).entries,
              (Lines{"RKendallsCoefficient: AlgorithmName 'RKendallsCoefficient', variableName ['c1', 'c2'], "
                     "testIndex 0, typeOfMultipleComparison ''"}));
}

TEST(ExpansionRelated, AnEncodedNameServesEveryOrdinalFieldButNoNominalOne) {
    harness::Fields fields = EverySort();
    const Expanded result = Expand(Tree({{"relatedVariables", Names{"n1", "c2", "so"}},
                                         {"isAutomaticallyRelated", false},
                                         Selected("RFriedmansTwoWayByRanks")}),
                                   fields, {{"n1", "$_n1"}, {"so", "$_so"}});
    EXPECT_EQ(result.Plan(), (Lines{"RFriedmansTwoWayByRanks $_so, c2"}));
}

// ---- The categorical group ----

TEST(ExpansionRelated, McNemarWithTwoOrdinalAndTwoNominalFields) {
    const Item test = Selected("RMcNemar", {{"categoriesList", Names{"1"}}, {"classFormation", "givenCategoryList"}});
    const std::string keys = ", classFormation 'givenCategoryList', categoriesList ['1']";
    const Expanded result = ExpandTests({"n1", "o1", "n2", "so"}, {test});
    EXPECT_EQ(result.entries,
              (Lines{"RMcNemar: AlgorithmName 'RMcNemar', variableName ['o1', 'so'], testIndex 0" + keys,
                     "RMcNemar: AlgorithmName 'RMcNemar', variableName ['n1', 'n2'], testIndex 1" + keys}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST(ExpansionRelated, McNemarTakesPairsAlone) {
    EXPECT_EQ(ExpandTests({"n1", "n2", "n3", "o1"}, {Selected("RMcNemar")}).warnings,
              (Lines{"220018 [McNemar]", "220019 [McNemar]"}));
    EXPECT_EQ(ExpandTests({"o1", "o2"}, {Selected("RMcNemar")}).entries,
              (Lines{"RMcNemar: AlgorithmName 'RMcNemar', variableName ['o1', 'o2'], testIndex 0, classFormation '', "
                     "categoriesList []"}));
}

TEST(ExpansionRelated, CochranWithOneOrdinalAndThreeNominalFields) {
    const Expanded result =
        ExpandTests({"o1", "n1", "n2", "n3"}, {Selected("RCochransQ", {{"successCategoryList", Names{"1", "a"}},
                                                                       {"typeOfMultipleComparison", "pairWise"},
                                                                       {"classFormation", "givenCategoryList"}})});
    EXPECT_EQ(result.entries,
              (Lines{"RCochransQ: AlgorithmName 'RCochransQ', variableName ['n1', 'n2', 'n3'], testIndex 0, "
                     "classFormation 'givenCategoryList', successCategoryList ['1', 'a'], "
                     "typeOfMultipleComparison 'pairWise'"}));
    EXPECT_EQ(result.warnings, (Lines{"220018 [CochransQ]"}));
}

TEST(ExpansionRelated, CochranTakesAPairAndDefaults) {
    const std::string keys = "classFormation '', successCategoryList [], typeOfMultipleComparison ''";
    EXPECT_EQ(ExpandTests({"n1", "n2", "o1", "o2"}, {Selected("RCochransQ")}).entries,
              (Lines{"RCochransQ: AlgorithmName 'RCochransQ', variableName ['o1', 'o2'], testIndex 0, " + keys,
                     "RCochransQ: AlgorithmName 'RCochransQ', variableName ['n1', 'n2'], testIndex 1, " + keys}));
    EXPECT_EQ(ExpandTests({"n1"}, {Selected("RCochransQ")}).warnings, (Lines{"220019 [CochransQ]"}));
}

TEST(ExpansionRelated, CategoricalTestsWithoutCategoricalFields) {
    EXPECT_EQ(ExpandTests({"c1", "c2"}, {Selected("RCochransQ"), Selected("RMcNemar")}).warnings,
              (Lines{"220020 [CochransQ ,McNemar]"}))
        << "the continuous fields, of which no test asked, are not named beside it";
}

TEST(ExpansionRelated, CategoricalTestsAskForOrdinalAndNominalFields) {
    EXPECT_EQ(ExpandTests({"c1", "o1", "o2", "n1", "n2"}, {Selected("RMcNemar")}).warnings, (Lines{"220014 [c1]"}));
}

// ---- Marginal homogeneity ----

TEST(ExpansionRelated, MarginalHomogeneityIgnoresNominalFields) {
    const Expanded result = ExpandTests({"n1", "o2", "n2", "so"}, {Selected("RMarginalHomogeneity")});
    EXPECT_EQ(result.entries, (Lines{"RMarginalHomogeneity: AlgorithmName 'RMarginalHomogeneity', "
                                     "variableName ['o2', 'so'], testIndex 0"}));
    EXPECT_EQ(result.warnings, (Lines{"220016 [n1 ,n2]"}));
    EXPECT_EQ(ExpandTests({"n1", "o2", "n2", "so"}, {Selected("RMarginalHomogeneity"), Selected("RMcNemar")}).warnings,
              Lines{})
        << "another test has asked for them";
}

TEST(ExpansionRelated, MarginalHomogeneityAsksForNoContinuousFields) {
    EXPECT_EQ(ExpandTests({"c1", "c2", "o1", "o2"}, {Selected("RMarginalHomogeneity")}).warnings,
              (Lines{"220014 [c1 ,c2]"}));
}

TEST(ExpansionRelated, MarginalHomogeneityWithOtherNumbersOfFields) {
    EXPECT_EQ(ExpandTests({"o1", "o2", "so"}, {Selected("RMarginalHomogeneity")}).warnings,
              (Lines{"220018 [MarginalHomogeneity]"}));
    EXPECT_EQ(ExpandTests({"n1", "n2"}, {Selected("RMarginalHomogeneity")}).warnings,
              (Lines{"220020 [MarginalHomogeneity]"}));
}

// ---- Warnings ----

TEST(ExpansionRelatedWarnings, OnlyNominalFieldsAndSignKeepTheUnusedFieldsBack) {
    EXPECT_EQ(ExpandTests({"n1", "n2"}, {Selected("RSign")}).warnings, (Lines{"220020 [Sign]"}));
}

TEST(ExpansionRelatedWarnings, FieldsOfWhichNoTestAsked) {
    EXPECT_EQ(ExpandTests({"n1", "c1", "o1", "c2"}, {NotSelected("RSign"), NotSelected("RMcNemar")}).warnings,
              (Lines{"220014 [c1 ,c2]", "220015 [o1]", "220016 [n1]"}));
    EXPECT_EQ(ExpandTests({"n1", "c1", "o1", "c2"}, {}).warnings,
              (Lines{"220014 [c1 ,c2]", "220015 [o1]", "220016 [n1]"}));
}

TEST(ExpansionRelatedWarnings, MismatchesOfAllSortsInTheirOrder) {
    const Expanded result = ExpandTests({"c1", "c2", "o1", "n1"},
                                        {Selected("RCochransQ"), Selected("RMarginalHomogeneity"), Selected("RSign"),
                                         Selected("RMcNemar"), Selected("RWilcoxonSignedRanks")});
    EXPECT_EQ(result.warnings,
              (Lines{"220017 [Sign ,WilcoxonSignedRanks]", "220018 [CochransQ ,MarginalHomogeneity ,McNemar]",
                     "220019 [CochransQ ,McNemar]"}));
}

TEST(ExpansionRelatedWarnings, MismatchesFollowTestsWithoutFields) {
    EXPECT_EQ(ExpandTests({"n1", "c1"}, {Selected("RMcNemar"), Selected("RMarginalHomogeneity")}).warnings,
              (Lines{"220020 [MarginalHomogeneity]", "220019 [McNemar]"}));
}

TEST(ExpansionRelatedWarnings, NoneWhereTheRequestEndsWithTheTests) {
    const Expanded result = ExpandTests({"c1", "c2", "o1", "n1"}, {Selected("RSign"), Selected("RCochransQ")}, false);
    EXPECT_EQ(result.warnings, Lines{});
    EXPECT_EQ(result.status.GetErrorCode(), 220001);
}

TEST(ExpansionRelated, FieldsThatAreAllUnknown) {
    const Expanded result = ExpandTests({"nowhere"}, {Selected("RSign")});
    EXPECT_EQ(result.warnings, (Lines{"220020 [Sign]"}));
}

}  // namespace

}  // namespace selection
