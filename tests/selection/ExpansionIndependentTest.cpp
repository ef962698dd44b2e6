// The independent family of the settings expansion. Expected entries are written out by hand.

#include <gtest/gtest.h>

#include "tests/selection/Selection.h"

namespace selection {

namespace {

harness::Fields EverySort() {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y").Continuous("z").Other("other");
    fields.Numeric("g", {0, 1}).Text("gs", {"a", "b"});
    fields.Numeric("nom", {0, 1}).Numeric("ord", {1, 2, 3}, true).Continuous("$_ord").Numeric("plain", {1, 2}, true);
    fields.Text("s", {"a", "b"}).Text("so", {"a", "b"}, true);
    return fields;
}

const Renamed kRenamed{{"ord", "$_ord"}};

enum class RequestEnds { kWithTheTests, kBehindThem };

Expanded ExpandTests(const Names& names, const std::vector<Item>& tests, const std::string& group = "g",
                     RequestEnds end = RequestEnds::kBehindThem) {
    std::vector<Item> request{
        {"independentVariables", names}, {"groupVariable", Names{group}}, {"isAutomaticallyIndependent", false}};
    request.insert(request.end(), tests.begin(), tests.end());
    if (end == RequestEnds::kBehindThem) request.push_back({"done", true});
    harness::Fields fields = EverySort();
    return Expand(Tree(request), fields, kRenamed);
}

/// All eight tests of the family, of which only Moses' is selected.
std::vector<Item> EightTests() {
    return {NotSelected("IWaldWolfowitzRuns"), NotSelected("IHodgesLehmannEstimateIndependent"),
            NotSelected("IKMedian"),           Selected("IMoses"),
            NotSelected("IMannWhitneyU"),      NotSelected("IKolmogorovSmirnov"),
            NotSelected("IKruskalWallis"),     NotSelected("IJonckheereTerpstra")};
}

// ---- Entries ----

struct IndependentCase {
    const char* test;
    const char* planName;
    const char* keysWithoutAny;
    const char* keys;
};

void PrintTo(const IndependentCase& test, std::ostream* out) {
    *out << test.test;
}

class ExpansionIndependent : public testing::TestWithParam<IndependentCase> {
 protected:
    std::string Entry(const std::string& fields, const std::string& keys) const {
        const std::string name = GetParam().planName;
        return name + ": AlgorithmName '" + name + "', variableName " + fields + keys;
    }
};

TEST_P(ExpansionIndependent, EntryWithoutKeys) {
    const Expanded result = ExpandTests({"x"}, {Selected(GetParam().test)});
    EXPECT_EQ(result.entries, (Lines{Entry("'x', groupVariableName 'g', testIndex 0", GetParam().keysWithoutAny)}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST_P(ExpansionIndependent, EntryWithKeysAndAnOrdinalNumericFieldUnderItsEncodedName) {
    const Item test = Selected(GetParam().test, {{"orderOfHypotheses", "orderLargestToSmallest"},
                                                 {"median", 2.5},
                                                 {"NumberOfOutliers", 3},
                                                 {"userSpecifyMedian", true},
                                                 {"userSpecifyNumberOfOutliers", true},
                                                 {"userSpecifyGroupList", true},
                                                 {"userSpecifyGroupRange", true},
                                                 {"typeOfMultipleComparison", "stepWise"}});
    EXPECT_EQ(
        ExpandTests({"x", "ord"}, {test}, "gs").entries,
        (Lines{Entry("'x', groupVariableName 'gs', testIndex 0", GetParam().keys),
               Entry("'$_ord', groupVariableName 'gs', testIndex 1, originVariableName 'ord'", GetParam().keys)}));
}

INSTANTIATE_TEST_SUITE_P(
    EightTests, ExpansionIndependent,
    testing::Values(
        IndependentCase{"IWaldWolfowitzRuns", "IWaldWolfowitzRuns", "", ""},
        IndependentCase{"IHodgesLehmannEstimateIndependent", "IHodgesLehmannEstimateGroups", "", ""},
        IndependentCase{"IKMedian", "IMedian",
                        ", typeOfMultipleComparison '', userSpecifyMedian 0, median missing, userSpecifyGroupRange 0",
                        ", typeOfMultipleComparison 'stepWise', userSpecifyMedian 1, median 2.5, "
                        "userSpecifyGroupRange 1"},
        IndependentCase{"IMoses", "IMoses",
                        ", userSpecifyNumberOfOutliers 0, NumberOfOutliers missing, userSpecifyGroupList 0",
                        ", userSpecifyNumberOfOutliers 1, NumberOfOutliers 3, userSpecifyGroupList 1"},
        IndependentCase{"IMannWhitneyU", "IMannWhitneyU", ", userSpecifyGroupList 0", ", userSpecifyGroupList 1"},
        IndependentCase{"IKolmogorovSmirnov", "IKolmogorovSmirnov", "", ""},
        IndependentCase{"IKruskalWallis", "IKruskalWallis", ", typeOfMultipleComparison ''",
                        ", typeOfMultipleComparison 'stepWise'"},
        IndependentCase{"IJonckheereTerpstra", "IJonckheereTerpstra",
                        ", typeOfMultipleComparison '', orderOfHypotheses ''",
                        ", typeOfMultipleComparison 'stepWise', orderOfHypotheses 'orderLargestToSmallest'"}),
    [](const auto& test) { return std::string(test.param.test); });

TEST(ExpansionIndependentFamily, TwoSelectedTestsAndThreeFieldsMakeSixEntries) {
    EXPECT_EQ(
        ExpandTests({"x", "y", "z"}, {Selected("IMoses"), NotSelected("IKMedian"), Selected("IKruskalWallis")}).Plan(),
        (Lines{"IMoses x", "IMoses y", "IMoses z", "IKruskalWallis x", "IKruskalWallis y", "IKruskalWallis z"}));
}

TEST(ExpansionIndependentFamily, AnOrdinalNumericFieldWithAnEncodedName) {
    EXPECT_EQ(ExpandTests({"ord"}, {Selected("IKolmogorovSmirnov")}).entries,
              (Lines{"IKolmogorovSmirnov: AlgorithmName 'IKolmogorovSmirnov', variableName '$_ord', "
                     "groupVariableName 'g', testIndex 0, originVariableName 'ord'"}));
}

TEST(ExpansionIndependentFamily, EverySortOfField) {
    const Expanded result =
        ExpandTests({"s", "x", "nowhere", "nom", "ord", "other", "plain", "so"}, {Selected("IMoses")});
    EXPECT_EQ(result.Plan(), (Lines{"IMoses x", "IMoses $_ord"}));
    EXPECT_EQ(result.warnings, (Lines{"220025 [s ,nom ,plain ,so]"}));
}

TEST(ExpansionIndependentFamily, AnEncodedNameServesAnOrdinalNumericFieldAlone) {
    harness::Fields fields = EverySort();
    const Expanded result = Expand(Tree({{"independentVariables", Names{"nom", "so", "ord"}},
                                         {"groupVariable", Names{"g"}},
                                         {"isAutomaticallyIndependent", false},
                                         Selected("IMoses"),
                                         {"done", true}}),
                                   fields, {{"nom", "$_nom"}, {"so", "$_so"}, {"ord", "$_ord"}});
    EXPECT_EQ(result.Plan(), (Lines{"IMoses $_ord"}));
    EXPECT_EQ(result.warnings, (Lines{"220025 [nom ,so]"}));
}

// ---- The grouping field ----

TEST(ExpansionIndependentFamily, AContinuousGroupingField) {
    const Expanded result = ExpandTests({"x", "s"}, EightTests(), "y");
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, (Lines{"220024 [y]"})) << "the fields are not looked at, so 220025 is not given";
}

TEST(ExpansionIndependentFamily, AnUnknownGroupingField) {
    const Expanded result = ExpandTests({"x"}, EightTests(), "nowhere");
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, (Lines{"220024 [nowhere]"}));
}

TEST(ExpansionIndependentFamily, AGroupingFieldOfAnotherKind) {
    EXPECT_EQ(ExpandTests({"x"}, EightTests(), "other").warnings, (Lines{"220024 [other]"}));
}

TEST(ExpansionIndependentFamily, WithoutAnyTestTheGroupingFieldCountsAsUnusable) {
    EXPECT_EQ(ExpandTests({"x", "s"}, {}).warnings, (Lines{"220024 [g]"}));
}

// ---- Categorical fields ----

TEST(ExpansionIndependentFamily, FieldsOfKindsOneAndThreeTogether) {
    const Expanded result = ExpandTests({"x", "s"}, {Selected("IMoses"), Selected("IMannWhitneyU")});
    EXPECT_EQ(result.Plan(), (Lines{"IMoses x", "IMannWhitneyU x"}));
    EXPECT_EQ(result.warnings, (Lines{"220025 [s]"}));
}

TEST(ExpansionIndependentFamily, CategoricalFieldsAloneMakeNoEntry) {
    const Expanded result = ExpandTests({"s", "nom"}, {Selected("IMoses")});
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, (Lines{"220025 [s ,nom]"}));
    EXPECT_EQ(result.status.GetErrorCode(), 220001);
}

TEST(ExpansionIndependentFamily, WarnsThoughNoTestIsSelected) {
    EXPECT_EQ(ExpandTests({"x", "s"}, {NotSelected("IMoses")}).warnings, (Lines{"220025 [s]"}));
}

// ---- Where the request ends ----

TEST(ExpansionIndependentFamily, AllEightTestsAreResolvedThoughTheyAreTheLastSettings) {
    const Expanded result = ExpandTests({"x", "s"}, EightTests(), "g", RequestEnds::kWithTheTests);
    EXPECT_EQ(result.Plan(), (Lines{"IMoses x"}));
    EXPECT_EQ(result.warnings, (Lines{"220025 [s]"}));
}

TEST(ExpansionIndependentFamily, SevenTestsAsTheLastSettingsAreLost) {
    std::vector<Item> seven = EightTests();
    seven.pop_back();
    for (const char* group : {"g", "x"}) {
        const Expanded result = ExpandTests({"x", "s"}, seven, group, RequestEnds::kWithTheTests);
        EXPECT_EQ(result.entries, Lines{});
        EXPECT_EQ(result.warnings, Lines{});
    }
}

TEST(ExpansionIndependentFamily, NineNamesAsTheLastSettingsAreLost) {
    std::vector<Item> nine = EightTests();
    nine.push_back(Selected("IMoses"));
    const Expanded result = ExpandTests({"x", "s"}, nine, "g", RequestEnds::kWithTheTests);
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, Lines{});
}

TEST(ExpansionIndependentFamily, EightNamesCountThoughOneIsRepeated) {
    std::vector<Item> eight = EightTests();
    eight.back() = Selected("IMoses");
    const Expanded result = ExpandTests({"x"}, eight, "g", RequestEnds::kWithTheTests);
    EXPECT_EQ(result.Plan(), (Lines{"IMoses x", "IMoses x"}));
}

TEST(ExpansionIndependentFamily, NothingBehindTheFamilysKey) {
    EXPECT_EQ(ExpandTests({"x"}, {}, "y", RequestEnds::kWithTheTests).warnings, Lines{});
}

TEST(ExpansionIndependentFamily, ANameOfThePlanIsNoNameOfTheRequest) {
    const Expanded result = ExpandTests({"x"}, {Selected("IMoses"), Selected("IMedian"), Selected("IKruskalWallis")});
    EXPECT_EQ(result.Plan(), (Lines{"IMoses x"}));
}

TEST(ExpansionIndependentFamily, TheNextFamilyIsFoundBehindTheTests) {
    harness::Fields fields = EverySort();
    const Expanded result = Expand(Tree({{"independentVariables", Names{"x"}},
                                         {"groupVariable", Names{"g"}},
                                         {"oneSampleVariables", Names{"y"}},
                                         {"isAutomaticallyIndependent", false},
                                         Selected("IMoses"),
                                         {"isAutomaticallyOneSample", true}}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"IMoses x", "OKolmogorovSmirnovNormal y"}));
}

}  // namespace

}  // namespace selection
