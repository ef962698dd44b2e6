// The runs test. Reference values: mean and standard deviation of the number of runs by enumeration of all orders of
// small classes, or by the formula of Wald and Wolfowitz in Python; significances by scipy 1.17, 2 * norm.cdf(-|z|).

#include "onesample/TARNRuns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "support/QKVecValue.h"
#include "tests/harness/CollectorRig.h"
#include "tests/harness/DrivenTest.h"
#include "tests/harness/EntryRun.h"

namespace {

using harness::ElementOf;
using harness::Fields;
using harness::kNoCategory;
using harness::kNone;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

constexpr double kTolerance = 1e-12;

QKSettings EntryWith(const std::string& key, const std::string& value) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting(key, value);
    return entry;
}

QKSettings CutEntry(double cutPoint = 2) {
    QKSettings entry = EntryWith("contVarClassFormation", "cutPointValue");
    entry.AddSetting("cutPointValue", cutPoint);
    return entry;
}

template <typename Value>
QKSettings ListEntry(const std::vector<Value>& list) {
    QKSettings entry = EntryWith("catVarClassFormation", "givenCategoryList");
    AddVecSetting(entry, "givenCategoryList", list, false);
    return entry;
}

const QKSettings kDataEntry = EntryWith("catVarClassFormation", "getFromData");

Table Result(const std::vector<double>& values, const QKSettings& entry = CutEntry(),
             const std::vector<std::pair<std::string, double>>& common = {}) {
    Fields fields;
    fields.Continuous("x");
    return harness::ResultOf("ORuns", entry, fields, harness::Columns({values}), common);
}

Table ResultOfText(const std::vector<std::string>& categories, const std::vector<double>& values,
                   const QKSettings& entry = kDataEntry) {
    Fields fields;
    fields.Text("x", categories);
    return harness::ResultOf("ORuns", entry, fields, harness::Columns({values}));
}

/// Values below (1) and at the cut of 2: `runs` runs, even in number, of that many values in all.
std::vector<double> Values(int lower, int upper, int runs) {
    std::vector<double> values;
    for (int i = 0; i < runs / 2 - 1; ++i) values.insert(values.end(), {1, 2});
    values.insert(values.end(), static_cast<std::size_t>(lower - runs / 2 + 1), 1);
    values.insert(values.end(), static_cast<std::size_t>(upper - runs / 2 + 1), 2);
    return values;
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
Table Condition(const Table& test) {
    return test.Sub("Condition");
}
void ExpectError(const Table& test, const std::vector<std::string>& messages) {
    EXPECT_EQ(MessagesOf(test), messages);
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_FALSE(Statistics(test).Exists());
}
void ExpectLists(const Table& test, const std::string& key, const std::string& first, const std::string& second) {
    EXPECT_EQ(Condition(test).Row("ConditionKey"), key);
    EXPECT_EQ(Condition(test).Row("%1"), first);
    EXPECT_EQ(Condition(test).Row("%2"), second);
}

// ---- Statistic ----

TEST(Runs, CountsRunsAgainstTheirExpectation) {
    const Table test = Result({1, 2, 3, 2, 0, 1, 5});  // lower, three upper, two lower, upper
    EXPECT_EQ(test.Attribute("name"), "ORuns");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "One_Sample");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable RunsParameters",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(Condition(test).ChildNames(), Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1"}));
    EXPECT_EQ(Condition(test).Row("ConditionKey"), "ACutPointIsSpecified_O_Runs_2");
    EXPECT_EQ(Condition(test).Row("%0"), "0");
    EXPECT_EQ(Condition(test).Row("%1"), "2");
    const Table parameters = test.Sub("RunsParameters");
    EXPECT_EQ(parameters.ChildNames(), Texts({"Attribute Mean", "Attribute StdDev", "Attribute ObservedRunNumber"}));
    EXPECT_EQ(parameters.Row("ObservedRunNumber"), "4");
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                              "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "7");
    EXPECT_EQ(statistics.Row("TestStatistic"), "4");
}

TEST(Runs, MeanAndDeviationAreThoseOfAllOrders) {
    const Table uneven = Result({1, 1, 1, 2, 2}).Sub("RunsParameters");  // the 10 orders of 3 and 2
    EXPECT_EQ(uneven.Row("Mean"), "3.4");
    EXPECT_NEAR(Number(uneven, "StdDev"), std::sqrt(0.84), kTolerance);
    const Table other = Result({1, 1, 1, 1, 2, 2}).Sub("RunsParameters");  // the 15 orders of 4 and 2
    EXPECT_NEAR(Number(other, "Mean"), 11.0 / 3, kTolerance);
    EXPECT_NEAR(Number(other, "StdDev"), std::sqrt(8.0 / 9), kTolerance);
}

TEST(Runs, ContinuityCorrectionMovesTheDifferenceTowardsZero) {
    const Table few = Statistics(Result({1, 1, 1, 1, 2, 2, 2, 2, 2, 1}));  // 3 runs of 6 expected
    EXPECT_NEAR(Number(few, "StandardError"), 1.4907119849998598, kTolerance);
    EXPECT_NEAR(Number(few, "StandardTestStatistic"), -1.6770509831248424, kTolerance);  // -2.5 over it
    EXPECT_NEAR(Number(few, "AsymptoticSig2Tailed"), 0.09353251268909303, kTolerance);
    const Table many = Statistics(Result({1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));  // 10 runs of 6 expected
    EXPECT_NEAR(Number(many, "StandardTestStatistic"), 2.3478713763747794, kTolerance);
    EXPECT_NEAR(Number(many, "AsymptoticSig2Tailed"), 0.01888104015609877, kTolerance);
}

TEST(Runs, FortyNineCasesHaveTheCorrectionAndFiftyHaveNot) {
    const Table corrected = Statistics(Result(Values(24, 25, 16)));
    EXPECT_EQ(corrected.Row("TotalN"), "49");
    EXPECT_EQ(corrected.Row("TestStatistic"), "16");
    EXPECT_NEAR(Number(corrected, "StandardTestStatistic"), -2.596798469973688, kTolerance);  // -8.99 / 3.46
    EXPECT_NEAR(Number(corrected, "AsymptoticSig2Tailed"), 0.009409711450962817, kTolerance);
    const Table plain = Statistics(Result(Values(25, 25, 16)));
    EXPECT_EQ(plain.Row("TotalN"), "50");
    EXPECT_NEAR(Number(plain, "StandardTestStatistic"), -2.857738033247041, kTolerance);  // -10 / 3.5
    EXPECT_NEAR(Number(plain, "AsymptoticSig2Tailed"), 0.00426672482217613, kTolerance);
    EXPECT_NEAR(Number(Statistics(Result(Values(25, 25, 30))), "StandardTestStatistic"), 1.1430952132988164,
                kTolerance);
}

TEST(Runs, DifferenceOfExactlyOneHalfGivesSignificanceOne) {
    for (const std::vector<double>& values : {std::vector<double>{1, 2, 2, 2}, {2, 1, 2, 2}}) {  // 2.5 expected
        const Table statistics = Statistics(Result(values));
        EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
        EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
    }
}

TEST(Runs, SignificanceIsCutToOne) {  // 26 runs of 26 expected, without the correction
    const Table statistics = Statistics(Result(Values(25, 25, 26)));
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
}

TEST(Runs, TwoCasesHaveNoDeviationAndRetain) {
    const Table test = Result({1, 2});
    EXPECT_EQ(Statistics(test).Row("StandardError"), "0");
    EXPECT_EQ(Statistics(test).Row("StandardTestStatistic"), "0");
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

TEST(Runs, FarTailKeepsItsDigits) {
    // The lower tail directly: as one minus the upper tail it would be 0.
    const Table statistics = Statistics(Result(Values(500, 500, 2)));
    const double z = (2 - 501.0) / std::sqrt((500000.0 - 1000) * 500000 / (1e6 * 999));
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), z, 1e-9);
    EXPECT_GT(Number(statistics, "AsymptoticSig2Tailed"), 0);
    EXPECT_NEAR(std::log(Number(statistics, "AsymptoticSig2Tailed")), std::log(std::erfc(-z / std::sqrt(2.0))), 1e-9);
}

TEST(Runs, DecisionEqualToTheLevelRetains) {
    EXPECT_EQ(Result({1, 2}, CutEntry(), {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result({1, 2}, CutEntry(), {{"sigLevel", 1.01}}).Attribute("decision"), "reject");
}

// ---- Classes of a cut ----

TEST(Runs, AllValuesInOneClassGive220112) {
    ExpectError(Result({0, 1, 1}), Texts({"220112 error"}));
    ExpectError(Result({5}), Texts({"220112 error"}));
    ExpectError(Result({kNone}), Texts({"220112 error"}));
}

TEST(Runs, CutPointEqualToEveryValuePutsAllInTheUpperClass) {
    ExpectError(Result({2, 2, 2}), Texts({"220112 error"}));
}

TEST(Runs, WeightOnARecordMakesOneRunAndAddsToTheCount) {
    Fields fields;
    fields.Continuous("x").Weight("w");
    const Rows rows{{1, 3}, {1, 1.9}, {5, 2}, {1, 0.9}, {kNone, 4}, {1, 1}};
    const Table test = harness::ResultOf("ORuns", CutEntry(), fields, rows);
    EXPECT_EQ(Statistics(test).Row("TotalN"), "7");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "3");  // a weight below 1 makes a run, too
    EXPECT_NEAR(Number(test.Sub("RunsParameters"), "Mean"), 2.0 * 5 * 2 / 7 + 1, kTolerance);
}

TEST(Runs, MissingValuesDoNotEndARun) {
    EXPECT_EQ(Statistics(Result({1, kNone, 1, 2})).Row("TestStatistic"), "2");
}

TEST(Runs, CutAtTheMeanRequestsTheMeanAlone) {
    Fields fields;
    fields.Continuous("x");
    const harness::Outcome outcome =
        harness::RunEntry("ORuns", EntryWith("contVarClassFormation", "cutPointMean"), fields, {{1}, {2}, {6}});
    const Table test = outcome.document.Test(0);
    EXPECT_EQ(Condition(test).Row("%1"), "3");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "2");
    const Table field = outcome.document.FieldInfo(0).Sub("ContinuousDistribution");
    EXPECT_EQ(field.Row("Mean"), "3");
    EXPECT_EQ(field.Row("Min"), "-1.79769313486232e+308");
}

TEST(Runs, MedianIsMissingAsLongAsNoSortedTestIsPlannedAndAllValuesAreUpper) {
    // The values show as classes: the first one, and the first other one.
    const Table test = Result({4, 4, 1, 7}, EntryWith("contVarClassFormation", "cutPointMedian"));
    ExpectError(test, Texts({"220112 error"}));
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "4", "1");
}

std::unique_ptr<QKSettings> OwnSettings(int measureLevel, const std::string& cut) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("measureLevel", measureLevel);
    settings->AddSetting("dataCutPoint", cut);
    return settings;
}

TEST(Runs, MedianOfTheFieldCutsWhereItIsKnown) {
    Fields fields;
    fields.Continuous("x");
    const Rows rows{{5}, {1}, {2}, {9}, {3}};
    CollectorRig rig(fields, rows);
    rig.Sort(0);
    rig.Request(0, Statistic::kMedian);
    EXPECT_TRUE(rig.Compute().IsOK());
    UnivariateResults results(*rig.collector);
    TARNRuns test(OwnSettings(1, "cutPointMedian"));
    test.SetUnivariateResults(&results);
    EXPECT_TRUE(test.BeginPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 1);
    std::vector<int> used{4};
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{4, 0}));
    harness::RowStream stream(rows);
    while (stream.HasMore()) EXPECT_TRUE(test.ProcessRecord(*stream.Next()).IsOK());
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
    const Table element = ElementOf(test);
    EXPECT_EQ(Condition(element).Row("%1"), "3");
    EXPECT_EQ(Statistics(element).Row("TestStatistic"), "3");  // the median itself is upper: 5 | 1 2 | 9 3
}

TEST(Runs, ModeOfACategoricalFieldIsItsFrequencyAndPutsAllInTheUpperClass) {
    Fields fields;
    fields.Text("x", {"a", "b"});
    CollectorRig rig(fields, {{0}, {1}, {1}, {1}});
    rig.Request(0, Statistic::kModeFrequency);
    EXPECT_TRUE(rig.Compute().IsOK());
    UnivariateResults results(*rig.collector);
    TARNRuns test(OwnSettings(3, "mode"));
    test.SetUnivariateResults(&results);
    EXPECT_TRUE(test.BeginPass().IsOK());
    Record record(1);  // "a"
    EXPECT_TRUE(test.ProcessRecord(record).IsOK());
    EXPECT_EQ(test.EndPass().GetErrorCode(), 220112);
    EXPECT_EQ(Condition(ElementOf(test)).Row("%1"), "3");
}

// ---- Classes of categories ----

TEST(Runs, ClassesFromTheDataStartWithTheFirstRecordAndShowTheKeyOfLists) {
    const Table test = ResultOfText({"a", "b"}, {1, 1, 0, 1});
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "1", "0");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "3");
    EXPECT_EQ(Condition(test).ChildNames(),
              Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1", "Attribute %2"}));
}

TEST(Runs, WithoutARecordTheKeyIsThatOfClassesFromTheData) {
    const Table test = ResultOfText({"a", "b"}, {kNoCategory});
    ExpectError(test, Texts({"220112 error"}));
    ExpectLists(test, "ABinaryTestVariableIsSpecified_O_Runs_3", "", "");
}

TEST(Runs, ThirdValueCountsInTheUpperClassWithClassesFromTheData) {
    // Another text than the known ones takes the classes from the data, without a look at the number of categories.
    const Table test = ResultOfText({"a", "b", "c"}, {0, 1, 2, 0}, EntryWith("catVarClassFormation", ""));
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "0", "1");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "3");
    EXPECT_EQ(Statistics(test).Row("TotalN"), "4");
}

TEST(Runs, ClassesFromTheDataWantExactlyTwoCategories) {
    for (const std::vector<std::string>& categories : {Texts({"a"}), Texts({"a", "b", "c"})}) {
        const Table test = ResultOfText(categories, {0, 0});
        ExpectError(test, Texts({"220111 error"}));
        ExpectLists(test, "ABinaryTestVariableIsSpecified_O_Runs_3", "", "");
    }
}

TEST(Runs, GivenCategoriesAreTheLowerClassAndAllOthersTheUpperOne) {
    const Table test = ResultOfText({"a", "b", "c", "d"}, {0, 2, 1, 3, 1, 0}, ListEntry(Texts({"c", "a"})));
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "2;0", "1;3");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "3");
    EXPECT_FALSE(test.Sub("ValsNotInTheCategoreis").Exists());
}

TEST(Runs, UnknownGivenCategoriesShowAsMinusOneBehindTheOthersAndInATable) {
    const Table test = ResultOfText({"a", "b"}, {0, 1}, ListEntry(Texts({"x", "a", "y"})));
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "0;-1;-1", "1");
    EXPECT_EQ(test.ChildNames()[1], "StructuredTable ValsNotInTheCategoreis");
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").ChildNames(), Texts({"Attribute 0", "Attribute 1"}));
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").Row("0"), "x");
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").Row("1"), "y");
}

TEST(Runs, ListOfUnknownCategoriesAloneIsFilledByTheFirstRecord) {
    const Table test = ResultOfText({"a", "b"}, {1, 0, 1}, ListEntry(Texts({"x"})));
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "1;-1", "0;1");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "3");
}

TEST(Runs, ListOfAllCategoriesHasItsSecondOneOnBothSides) {
    const Table test = ResultOfText({"a", "b"}, {0, 1}, ListEntry(Texts({"a", "b"})));
    ExpectError(test, Texts({"220112 error"}));
    ExpectLists(test, "CategoryListsAreSpecified_O_Runs_3", "0;1", "1");
}

TEST(Runs, NumericCategoriesMeetByValue) {
    Fields fields;
    fields.Numeric("x", {10, 20});
    const Rows rows{{0}, {1}, {1}};
    const Table ofTexts = harness::ResultOf("ORuns", ListEntry(Texts({"20.0", "z"})), fields, rows);
    ExpectLists(ofTexts, "CategoryListsAreSpecified_O_Runs_3", "1;-1", "0");
    EXPECT_EQ(ofTexts.Sub("ValsNotInTheCategoreis").Row("0"), "z");
    const Table ofNumbers = harness::ResultOf("ORuns", ListEntry(std::vector<double>{20, 30}), fields, rows);
    ExpectLists(ofNumbers, "CategoryListsAreSpecified_O_Runs_3", "1;-1", "0");
    EXPECT_EQ(ofNumbers.Sub("ValsNotInTheCategoreis").Row("0"), "30");
}

TEST(Runs, EmptyOrAbsentListGives220109) {
    ExpectError(ResultOfText({"a", "b"}, {0, 1}, ListEntry(std::vector<std::string>{})), Texts({"220109 error"}));
    ExpectError(ResultOfText({"a", "b"}, {0, 1}, EntryWith("catVarClassFormation", "givenCategoryList")),
                Texts({"220109 error"}));
}

// ---- Field and formation ----

TEST(Runs, AbsentNameOrFormationGives220101) {
    QKSettings nameless;
    nameless.AddSetting("contVarClassFormation", "cutPointMean");
    const Table test = Result({1, 2}, nameless);
    ExpectError(test, Texts({"220101 error"}));
    EXPECT_EQ(Condition(test).Row("%0"), "-1");

    QKSettings formless;
    formless.AddSetting("variableName", "x");
    const Table continuous = Result({1, 2}, formless);
    ExpectError(continuous, Texts({"220101 error"}));
    EXPECT_EQ(Condition(continuous).Row("%0"), "0");
    ExpectError(ResultOfText({"a", "b"}, {0, 1}, formless), Texts({"220101 error"}));
    // The other kind's formation is not looked at.
    ExpectError(Result({1, 2}, kDataEntry), Texts({"220101 error"}));
}

TEST(Runs, UnknownFieldGives220103WithItsName) {
    QKSettings entry;
    entry.AddSetting("variableName", "nowhere");
    ExpectError(Result({1, 2}, entry), Texts({"220103 error nowhere"}));
}

TEST(Runs, RequestedCutValueThatIsAbsentGives220110) {
    const Table test = Result({1, 2}, EntryWith("contVarClassFormation", "cutPointValue"));
    ExpectError(test, Texts({"220110 error"}));
    ExpectLists(test, "ABinaryTestVariableIsSpecified_O_Runs_3", "", "");
}

TEST(Runs, UnknownCutGives220101AndTheTestMissesItsValue) {
    ExpectError(Result({1, 2}, EntryWith("contVarClassFormation", "middle")), Texts({"220101 error", "220110 error"}));
}

TEST(Runs, FieldOfNoUsableLevelEndsTheRun) {
    Fields fields;
    fields.Other("x");
    EXPECT_EQ(harness::RunEntry("ORuns", CutEntry(), fields, {{1}}).status.GetErrorCode(), 220004);
}

}  // namespace
