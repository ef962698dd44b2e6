// The chi-square test of frequencies. Reference values: scipy 1.17, chisquare(observed, expected), and arithmetic.

#include "onesample/TARNChiSquare.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/QKVecValue.h"
#include "tests/harness/CollectorRig.h"
#include "tests/harness/DrivenTest.h"
#include "tests/harness/EntryRun.h"

namespace {

using harness::ElementOf;
using harness::Fields;
using harness::kNoCategory;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

constexpr double kTolerance = 1e-12;

struct Expectation {
    std::string category;
    double value;
};

QKSettings DataEntry(const std::string& name = "x") {
    QKSettings entry;
    entry.AddSetting("variableName", name);
    entry.AddSetting("classFormation", "getFromData");
    return entry;
}

QKSettings CustomEntry(const std::vector<QKSettings>& elements) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting("classFormation", "givenExpectedValue");
    AddVecSetting(entry, "custom", elements, false);
    return entry;
}

QKSettings CustomEntry(const std::vector<Expectation>& expectations) {
    std::vector<QKSettings> elements;
    for (const Expectation& expectation : expectations) {
        QKSettings element;
        element.AddSetting("categoryValue", expectation.category);
        element.AddSetting("expectedValue", expectation.value);
        elements.push_back(element);
    }
    return CustomEntry(elements);
}

/// Rows with these numbers of the categories 0, 1, ...
Rows Counts(const std::vector<int>& counts) {
    Rows rows;
    for (std::size_t category = 0; category < counts.size(); ++category) {
        rows.insert(rows.end(), static_cast<std::size_t>(counts[category]), {static_cast<double>(category), 1});
    }
    return rows;
}

Table Result(const std::vector<std::string>& categories, const Rows& rows, const QKSettings& entry = DataEntry(),
             const std::vector<std::pair<std::string, double>>& common = {}) {
    Fields fields;
    fields.Text("x", categories).Weight("w");
    return harness::ResultOf("OChiSquare", entry, fields, rows, common);
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
Table Comparison(const Table& test) {
    return test.Sub("TwoClassComparison");
}
std::string Categories(const Table& test) {
    return Comparison(test).Node().child("SimpleTable").child("RowNames").text().get();
}
std::string Key(const Table& test) {
    return test.Sub("Condition").Row("ConditionKey");
}
void ExpectError(const Table& test, const std::vector<std::string>& messages) {
    EXPECT_EQ(MessagesOf(test), messages);
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
}

// ---- Categories from the data ----

TEST(ChiSquare, ComparesFrequenciesWithEqualOnes) {
    const Table test = Result({"a", "b", "c"}, Counts({16, 18, 11}));
    EXPECT_EQ(test.Attribute("name"), "OChiSquare");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "One_Sample");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable TwoClassComparison", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(Key(test), "DefaultEqualProbabilities_O_ChiSquare_1");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(Comparison(test).ChildNames(), Texts({"SimpleTable Content"}));
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"16;15", "18;15", "11;15"}));
    EXPECT_EQ(Categories(test), "0;1;2");
    EXPECT_STREQ(Comparison(test).Node().child("SimpleTable").child("ColumnNames").text().get(), "0;1");
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic",
                                              "Attribute DegreeOfFreedom", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "45");
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 26.0 / 15, kTolerance);
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "2");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.42035038450868, 1e-13);  // chisquare([16, 18, 11])
}

TEST(ChiSquare, ExpectedCountsOfFiveOrMoreStillGiveTheMessage) {
    EXPECT_EQ(MessagesOf(Result({"a", "b"}, Counts({6, 4}))), Texts({"220211 helpMessage 0 0 5"}));
}

TEST(ChiSquare, MessageTellsTheSmallExpectedCountsTheirPercentageAndTheSmallest) {
    EXPECT_EQ(MessagesOf(Result({"a", "b"}, Counts({6, 3}))), Texts({"220211 helpMessage 2 100 4.5"}));
    const Table test = Result({"a", "b", "c"}, Counts({6, 3, 1}), CustomEntry({{"a", 5}, {"b", 3}, {"c", 2}}));
    EXPECT_EQ(MessagesOf(test), Texts({"220211 helpMessage 2 66.6666666666667 2"}));
}

TEST(ChiSquare, CategoryWithoutObservationsKeepsItsCell) {
    const Table test = Result({"a", "b", "c"}, Counts({10, 0, 5}));
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"10;5", "0;5", "5;5"}));
    EXPECT_EQ(Statistics(test).Row("DegreeOfFreedom"), "2");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "10");
}

TEST(ChiSquare, EqualFrequenciesGiveStatisticZeroAndSignificanceOne) {
    const Table statistics = Statistics(Result({"a", "b"}, Counts({7, 7})));
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
}

TEST(ChiSquare, OneRecordIsEnough) {
    const Table statistics = Statistics(Result({"a", "b"}, Counts({1})));
    EXPECT_EQ(statistics.Row("TotalN"), "1");
    EXPECT_EQ(statistics.Row("TestStatistic"), "1");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.31731050786291415, kTolerance);  // chisquare([1, 0])
}

TEST(ChiSquare, OrderOfRecordsDoesNotMatter) {
    Rows rows = Counts({4, 7, 2});
    const std::string statistic = Statistics(Result({"a", "b", "c"}, rows)).Row("TestStatistic");
    std::swap(rows.front(), rows.back());
    EXPECT_EQ(Statistics(Result({"a", "b", "c"}, rows)).Row("TestStatistic"), statistic);
}

TEST(ChiSquare, DecisionEqualToTheLevelRetains) {
    const Rows rows = Counts({7, 7});
    EXPECT_EQ(Result({"a", "b"}, rows, DataEntry(), {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result({"a", "b"}, rows, DataEntry(), {{"sigLevel", 1.01}}).Attribute("decision"), "reject");
}

TEST(ChiSquare, WeightsAreTruncatedAndMissingValuesTakeNoPart) {
    const Table test = Result({"a", "b"}, {{0, 3.9}, {1, 0.9}, {1, 1}, {kNoCategory, 5}});
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"3;2", "1;2"}));
    EXPECT_EQ(Statistics(test).Row("TotalN"), "4");
}

TEST(ChiSquare, NoCaseLeftGives220003AndTheMessageOfTheCountsBehindIt) {
    ExpectError(Result({"a", "b"}, {{0, 0.5}}),
                Texts({"220003 error", "220211 helpMessage 0 0 1.79769313486232e+308"}));
}

TEST(ChiSquare, TotalWrapsAt32Bits) {
    const Table test = Result({"a", "b"}, {{0, 2147483647}, {1, 2147483647}, {1, 3}});  // 2^32 + 1 in all
    EXPECT_EQ(Statistics(test).Row("TotalN"), "1");
}

// ---- Given categories ----

TEST(ChiSquare, ExpectedValuesOfAnyScaleMeanProportions) {
    const Table test = Result({"a", "b", "c"}, Counts({9, 20, 11}), CustomEntry({{"a", 1}, {"b", 2}, {"c", 1}}));
    EXPECT_EQ(Key(test), "UserSpecifiesProbabilities_O_ChiSquare_1");
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"9;10", "20;20", "11;10"}));
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 0.2, kTolerance);
    // chisquare([9, 20, 11], [10, 20, 10])
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.9048374180359595, kTolerance);
}

TEST(ChiSquare, CellsStandInTheOrderOfTheList) {
    const Table test = Result({"a", "b"}, Counts({4, 8}), CustomEntry({{"b", 0.5}, {"a", 0.5}}));
    EXPECT_EQ(Categories(test), "1;0");
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"8;6", "4;6"}));
}

TEST(ChiSquare, CategoryThatIsNotListedStaysOutOfTheTotal) {
    const Table test = Result({"a", "b", "c"}, Counts({4, 100, 8}), CustomEntry({{"a", 1}, {"c", 1}}));
    EXPECT_EQ(Statistics(test).Row("TotalN"), "12");
    EXPECT_EQ(Statistics(test).Row("DegreeOfFreedom"), "1");
}

TEST(ChiSquare, UnknownCategoryIsACellAndStandsInATableBehindTheComparison) {
    const Table test = Result({"a", "b"}, Counts({6, 6}), CustomEntry({{"a", 1}, {"q", 1}, {"b", 1}}));
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable TwoClassComparison", "StructuredTable ValsNotInTheCategoreis",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(Categories(test), "0;-1;1");
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"6;4", "0;4", "6;4"}));
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").ChildNames(), Texts({"Attribute 0"}));
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").Row("0"), "q");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "6");
    EXPECT_EQ(Statistics(test).Row("DegreeOfFreedom"), "2");
}

TEST(ChiSquare, NumericCategoriesMeetByValue) {
    Fields fields;
    fields.Numeric("x", {2.5, 10});
    const QKSettings entry = CustomEntry({{"10.0", 1}, {"2.50", 3}, {"7", 4}});
    const Table test = harness::ResultOf("OChiSquare", entry, fields, {{0}, {0}, {1}, {0}});
    EXPECT_EQ(Categories(test), "1;0;-1");
    EXPECT_EQ(Comparison(test).SimpleRows("Content"), Texts({"1;0.5", "3;1.5", "0;2"}));
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").Row("0"), "7");
}

TEST(ChiSquare, ExpectedValueOfZeroOrBelowRefusesTheTest) {
    for (const double value : {0.0, -1.0}) {
        const Table test = Result({"a", "b"}, Counts({1, 1}), CustomEntry({{"a", 1}, {"b", value}}));
        ExpectError(test, Texts({"220212 error"}));
        EXPECT_EQ(Key(test), "UserSpecifiesProbabilities_O_ChiSquare_1");
    }
}

TEST(ChiSquare, ElementThatLacksAKeyRefusesTheTest) {
    QKSettings whole;
    whole.AddSetting("categoryValue", "a");
    whole.AddSetting("expectedValue", 1.0);
    QKSettings valueless;
    valueless.AddSetting("categoryValue", "b");
    QKSettings nameless;
    nameless.AddSetting("expectedValue", 1.0);
    for (const QKSettings& element : {valueless, nameless}) {
        ExpectError(Result({"a", "b"}, Counts({1, 1}), CustomEntry({whole, element, whole})), Texts({"220212 error"}));
    }
}

TEST(ChiSquare, TextInPlaceOfANumericCategoryRefusesTheTest) {
    Fields fields;
    fields.Numeric("x", {1, 2});
    const QKSettings entry = CustomEntry({{"1", 1}, {"two", 1}, {"2", 1}});
    ExpectError(harness::ResultOf("OChiSquare", entry, fields, {{0}}), Texts({"220212 error"}));
}

TEST(ChiSquare, SingleGivenCategoryIsTooFew) {
    ExpectError(Result({"a", "b"}, Counts({1, 1}), CustomEntry({{"a", 1}})), Texts({"220209 error"}));
}

TEST(ChiSquare, AbsentListGives220201AndAnEmptyOne220212) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting("classFormation", "givenExpectedValue");
    ExpectError(Result({"a", "b"}, Counts({1, 1}), entry), Texts({"220201 error"}));
    ExpectError(Result({"a", "b"}, Counts({1, 1}), CustomEntry(std::vector<QKSettings>{})), Texts({"220212 error"}));
}

// ---- Field and formation ----
// A field that is refused has no level among the test's settings, which the test then misses on its own.

TEST(ChiSquare, AbsentNameHasAnEmptyParameter) {
    QKSettings entry;
    entry.AddSetting("classFormation", "getFromData");
    const Table test = Result({"a", "b"}, Counts({1, 1}), entry);
    ExpectError(test, Texts({"220203 error ", "220201 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1");
}

TEST(ChiSquare, UnknownFieldIsOneThatIsNotCategorical) {
    const Table test = Result({"a", "b"}, Counts({1, 1}), DataEntry("nowhere"));
    ExpectError(test, Texts({"220204 error nowhere", "220201 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1");
}

TEST(ChiSquare, ContinuousFieldIsRefusedByName) {
    const Table test = Result({"a", "b"}, Counts({1, 1}), DataEntry("w"));
    ExpectError(test, Texts({"220204 error w", "220201 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "1");
    EXPECT_EQ(Key(test), "UserSpecifiesProbabilities_O_ChiSquare_1");
}

TEST(ChiSquare, FieldOfOneCategoryHasTooFew) {
    ExpectError(Result({"a"}, Counts({3})), Texts({"220209 error", "220201 error"}));
}

TEST(ChiSquare, FieldOfNoUsableLevelEndsTheRun) {
    Fields fields;
    fields.Other("x");
    EXPECT_EQ(harness::RunEntry("OChiSquare", DataEntry(), fields, {{1}}).status.GetErrorCode(), 220004);
}

TEST(ChiSquare, AbsentFormationGives220201WithTheName) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    ExpectError(Result({"a", "b"}, Counts({1, 1}), entry), Texts({"220201 error x"}));
}

TEST(ChiSquare, AnotherFormationHasNoCells) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting("classFormation", "something");
    ExpectError(Result({"a", "b"}, Counts({1, 1}), entry),
                Texts({"220003 error", "220211 helpMessage 0 nan 1.79769313486232e+308"}));
}

// ---- The test's own settings ----

QKSettings OwnSettings(int measureLevel) {
    QKSettings settings;
    settings.AddSetting("variableIndex", 0);
    settings.AddSetting("measureLevel", measureLevel);
    return settings;
}

TEST(ChiSquare, LevelThatIsNotCategoricalGives220201) {
    TARNChiSquare test(std::make_unique<QKSettings>(OwnSettings(1)));
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 220201);
}

TEST(ChiSquare, ProportionsOfAnotherLengthGive220212) {
    QKSettings settings = OwnSettings(3);
    settings.AddSetting("classFormation", "givenExpectedValue");
    AddVecSetting(settings, "originalGivenCategoryList", Texts({"a", "b"}), false);
    AddVecSetting(settings, "givenCategoryList", std::vector<double>{0, 1}, false);
    AddVecSetting(settings, "expectedValue", std::vector<double>{1.0}, false);
    TARNChiSquare test(std::make_unique<QKSettings>(settings));
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 220212);
}

TEST(ChiSquare, ListWithoutProportionsHasEqualOnesUnderTheKeyOfGivenOnes) {
    Fields fields;
    fields.Text("x", {"a", "b", "c"});
    CollectorRig rig(fields, {{0}, {0}, {0}, {1}, {2}});
    rig.Request(0, Statistic::kFrequencies);
    EXPECT_TRUE(rig.Compute().IsOK());
    UnivariateResults results(*rig.collector);

    QKSettings settings = OwnSettings(3);
    settings.AddSetting("classFormation", "givenExpectedValue");
    AddVecSetting(settings, "originalGivenCategoryList", Texts({"a", "b"}), false);
    AddVecSetting(settings, "givenCategoryList", std::vector<double>{0, 1}, false);
    TARNChiSquare test(std::make_unique<QKSettings>(settings));
    test.SetUnivariateResults(&results);
    EXPECT_TRUE(test.BeginPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 1);
    std::vector<int> used{5};
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{5, 0}));
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
    const Table element = ElementOf(test);
    EXPECT_EQ(Key(element), "UserSpecifiesProbabilities_O_ChiSquare_1");
    EXPECT_EQ(Comparison(element).SimpleRows("Content"), Texts({"3;2", "1;2"}));
    EXPECT_EQ(element.Attribute("decision"), "retain");  // without a level nothing is rejected
}

}  // namespace
