// The McNemar test. Reference values: scipy 1.17, as the call beside each says.

#include "related/TARNMcNemar.h"

#include <gtest/gtest.h>

#include "tests/related/PairRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Table;
using pairs::Columns;
using pairs::Entry;
using pairs::Number;
using pairs::Rows;
using pairs::Texts;

constexpr double kTolerance = 1e-12;
const std::vector<std::string> kExactHelp{"221612 helpMessage"};

/// Two fields of the same two categories, 0 = "no" and 1 = "yes".
Fields YesNo() {
    Fields fields;
    fields.Text("before", {"no", "yes"}).Text("after", {"no", "yes"});
    return fields;
}

/// Rows with these numbers of (yes, no), (no, yes), (yes, yes) and (no, no), yes being category 1; the first row
/// starts with yes.
Rows Table2x2(int successFail, int failSuccess, int bothSuccess, int bothFail) {
    Rows rows;
    rows.insert(rows.end(), static_cast<std::size_t>(bothSuccess), {1, 1});
    rows.insert(rows.end(), static_cast<std::size_t>(successFail), {1, 0});
    rows.insert(rows.end(), static_cast<std::size_t>(failSuccess), {0, 1});
    rows.insert(rows.end(), static_cast<std::size_t>(bothFail), {0, 0});
    return rows;
}

Table Result(Fields& fields, Rows rows, const QKSettings& entry = Entry({"before", "after"}),
             const std::vector<std::pair<std::string, double>>& common = {}) {
    return pairs::ResultOf("RMcNemar", entry, fields, std::move(rows), common);
}

Table ResultOfYesNo(Rows rows, const std::vector<std::pair<std::string, double>>& common = {}) {
    Fields fields = YesNo();
    return Result(fields, std::move(rows), Entry({"before", "after"}), common);
}

template <typename Value>
QKSettings ListEntry(const std::vector<std::string>& names, const std::vector<Value>& list) {
    QKSettings entry = Entry(names);
    entry.AddSetting("classFormation", "givenCategoryList");
    AddVecSetting(entry, "categoriesList", list, false);
    return entry;
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
std::vector<std::string> Counts(const Table& test) {
    return test.Sub("CategoryFieldsComparison").SimpleRows("Content");
}

// ---- Statistic ----

TEST(McNemar, GivesTheCorrectedStatisticWithBothSignificances) {
    const Table test = ResultOfYesNo(Table2x2(10, 2, 5, 4));
    EXPECT_EQ(test.Attribute("name"), "RMcNemar");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(test.ChildNames(),
              Texts({"StructuredTable Condition", "StructuredTable WarningMessages", "StructuredTable StatisticsResult",
                     "StructuredTable CategoryFieldsComparison"}));
    EXPECT_EQ(MessagesOf(test), kExactHelp);
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(),
              Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute DegreeOfFreedom",
                     "Attribute AsymptoticSig2Tailed", "Attribute ExactSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "21");
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "1");
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 49.0 / 12, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.04330814281079206, kTolerance);  // chi2.sf(49/12, 1)
    EXPECT_NEAR(Number(statistics, "ExactSig2Tailed"), 0.03857421875, kTolerance);  // binomtest(2, 12).pvalue
}

TEST(McNemar, TabulatesTheFourCountsAndNoListsWithoutGivenCategories) {
    const Table test = ResultOfYesNo(Table2x2(10, 2, 5, 4));
    const Table condition = test.Sub("Condition");
    EXPECT_EQ(condition.Row("ConditionKey"), "AllDistinctValuesUsed_R_McNemar_2");
    EXPECT_EQ(condition.Row("%0"), "0");
    EXPECT_EQ(condition.Row("%1"), "1");
    const Table comparison = test.Sub("CategoryFieldsComparison");
    EXPECT_EQ(comparison.ChildNames(),
              Texts({"Attribute RowNames", "Attribute RowSuccessList", "Attribute RowFailList", "Attribute ColumnNames",
                     "Attribute ColumnSuccessList", "Attribute ColumnFailList", "SimpleTable Content"}));
    EXPECT_EQ(comparison.Row("RowNames"), "0");
    EXPECT_EQ(comparison.Row("RowSuccessList"), "");
    EXPECT_EQ(comparison.Row("RowFailList"), "");
    EXPECT_EQ(comparison.Row("ColumnNames"), "1");
    EXPECT_EQ(comparison.Row("ColumnSuccessList"), "");
    EXPECT_EQ(comparison.Row("ColumnFailList"), "");
    EXPECT_EQ(Counts(test), Texts({"5;10", "2;4"}));
}

TEST(McNemar, EqualNumbersOfChangesGiveStatisticZeroAndSignificanceOne) {
    const Table statistics = Statistics(ResultOfYesNo(Table2x2(10, 10, 1, 0)));
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");
}

TEST(McNemar, OneChangeAloneGivesStatisticZero) {  // (|1 - 0| - 1)^2 / 1
    const Table statistics = Statistics(ResultOfYesNo(Table2x2(1, 0, 1, 0)));
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");
}

TEST(McNemar, NoChangeAtAllHasExactSignificanceOne) {
    const Table test = ResultOfYesNo(Table2x2(0, 0, 3, 2));
    EXPECT_EQ(MessagesOf(test), kExactHelp);
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "0");
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(Statistics(test).Row("ExactSig2Tailed"), "1");
    EXPECT_EQ(Statistics(test).Row("TotalN"), "5");
}

TEST(McNemar, NoCaseAtAllIsNoErrorOfThisTest) {
    const Table test = ResultOfYesNo({{harness::kNoCategory, 1}});
    EXPECT_EQ(MessagesOf(test), kExactHelp);
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(Statistics(test).Row("TotalN"), "0");
    EXPECT_EQ(Counts(test), Texts({"0;0", "0;0"}));
}

TEST(McNemar, TwentyFiveChangesShowTheExactRowTwentySixDoNot) {
    const Table exact = ResultOfYesNo(Table2x2(17, 8, 1, 0));
    EXPECT_EQ(MessagesOf(exact), kExactHelp);
    EXPECT_NEAR(Number(Statistics(exact), "TestStatistic"), 2.56, kTolerance);
    EXPECT_NEAR(Number(Statistics(exact), "AsymptoticSig2Tailed"), 0.10959858339911568,
                kTolerance);                                                                     // chi2.sf(2.56, 1)
    EXPECT_NEAR(Number(Statistics(exact), "ExactSig2Tailed"), 0.10775214433670044, kTolerance);  // binomtest(8, 25)

    const Table asymptotic = ResultOfYesNo(Table2x2(17, 9, 1, 0));
    EXPECT_TRUE(MessagesOf(asymptotic).empty());
    EXPECT_FALSE(asymptotic.Sub("WarningMessages").Exists());
    EXPECT_FALSE(Statistics(asymptotic).HasRow("ExactSig2Tailed"));
    EXPECT_NEAR(Number(Statistics(asymptotic), "AsymptoticSig2Tailed"), 0.1698105050855175, kTolerance);
}

TEST(McNemar, SmallExactAndLargeAsymptoticSignificanceRetain) {
    // scipy: chi2.sf(25/6, 1) = 0.0412..., binomtest(0, 6).pvalue = 0.03125; the level lies between them.
    const Table test = ResultOfYesNo(Table2x2(6, 0, 1, 0), {{"sigLevel", 0.035}});
    EXPECT_EQ(Statistics(test).Row("ExactSig2Tailed"), "0.03125");
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.041226833337163815, kTolerance);
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

TEST(McNemar, SignificanceEqualToTheLevelRetains) {
    EXPECT_EQ(ResultOfYesNo(Table2x2(3, 3, 1, 0), {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
    EXPECT_EQ(ResultOfYesNo(Table2x2(3, 3, 1, 0), {{"sigLevel", 1.01}}).Attribute("decision"), "reject");
}

// ---- Classes from the data ----

TEST(McNemar, FirstRecordsFirstFieldDefinesSuccessAndAnotherOrderSwapsTheCounts) {
    Rows rows{{1, 0}, {1, 1}, {0, 1}, {0, 1}, {0, 1}, {0, 0}, {0, 0}};
    const Table first = ResultOfYesNo(rows);
    EXPECT_EQ(Counts(first), Texts({"1;1", "3;2"}));  // success is "yes"
    std::swap(rows.front(), rows.back());
    const Table second = ResultOfYesNo(rows);
    EXPECT_EQ(Counts(second), Texts({"2;3", "1;1"}));  // success is "no"
    EXPECT_EQ(Statistics(first).Row("TestStatistic"), "0.25");
    EXPECT_EQ(Statistics(second).Row("TestStatistic"), "0.25");
}

TEST(McNemar, FirstRecordDefinesSuccessWhateverItsWeight) {
    Fields fields = YesNo();
    fields.Weight("w");
    const Table test = Result(fields, {{0, 1, 0.9}, {1, 0, 2.9}, {0, 0, 3}});
    EXPECT_EQ(Counts(test), Texts({"3;0", "2;0"}));
    EXPECT_EQ(Statistics(test).Row("TotalN"), "5");
}

TEST(McNemar, FirstRecordIsTheFirstThatMissesNeitherField) {
    const Table test = ResultOfYesNo({{0, harness::kNoCategory}, {harness::kNoCategory, 0}, {1, 0}, {0, 1}, {0, 1}});
    EXPECT_EQ(Counts(test), Texts({"0;1", "2;0"}));
}

TEST(McNemar, CategoriesMeetByTextNotByIndex) {
    Fields fields;
    fields.Text("before", {"no", "yes"}).Text("after", {"yes", "no"});
    const Table test = Result(fields, {{1, 0}, {1, 1}, {0, 1}, {0, 1}});  // yes-yes, yes-no, no-no twice
    EXPECT_EQ(Counts(test), Texts({"1;1", "0;2"}));
}

TEST(McNemar, CategoriesMeetByValueNotByIndex) {
    Fields fields;
    fields.Numeric("before", {1, 2}).Numeric("after", {2, 1});
    const Table test = Result(fields, {{0, 1}, {0, 0}, {1, 0}, {1, 0}});  // 1-1, 1-2, 2-2 twice
    EXPECT_EQ(Counts(test), Texts({"1;1", "0;2"}));
}

TEST(McNemar, TwoFieldsWithASingleDifferentCategoryEachAreAccepted) {
    Fields fields;
    fields.Text("before", {"yes"}).Text("after", {"no"});
    const Table test = Result(fields, {{0, 0}, {0, 0}, {0, 0}});
    EXPECT_EQ(Counts(test), Texts({"0;3", "0;0"}));
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 4.0 / 3, kTolerance);
}

TEST(McNemar, OneCategoryBesideTwoIsAcceptedIfItIsOneOfThem) {
    Fields fields;
    fields.Text("before", {"yes"}).Text("after", {"no", "yes"});
    EXPECT_EQ(Counts(Result(fields, {{0, 0}, {0, 1}, {0, 1}})), Texts({"2;1", "0;0"}));
}

TEST(McNemar, UnusableCategoriesGive221609) {
    const auto messages = [](const std::vector<std::string>& before, const std::vector<std::string>& after) {
        Fields fields;
        fields.Text("before", before).Text("after", after);
        const Table test = Result(fields, {{0, 0}});
        EXPECT_EQ(test.Attribute("decision"), "unknown");
        EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
        return MessagesOf(test);
    };
    const std::vector<std::string> unusable{"221609 error"};
    EXPECT_EQ(messages({"a", "b", "c"}, {"a", "b", "c"}), unusable);
    EXPECT_EQ(messages({"a", "b"}, {"a", "b", "c"}), unusable);
    EXPECT_EQ(messages({"a"}, {"a"}), unusable);
    EXPECT_EQ(messages({"a", "b"}, {"c"}), unusable);
    EXPECT_EQ(messages({"a", "b"}, {"a", "c"}), unusable);
    EXPECT_EQ(messages({"a", "b"}, {}), unusable);
}

// ---- Given classes ----

TEST(McNemar, GivenTextsAreSuccessesInBothFields) {
    Fields fields;
    fields.Text("before", {"a", "b", "c"}).Text("after", {"c", "b", "a"});
    const Table test =
        Result(fields, {{2, 2}, {0, 2}, {1, 1}, {2, 0}}, ListEntry({"before", "after"}, Texts({"a", "b"})));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_R_McNemar_2");
    EXPECT_EQ(Counts(test), Texts({"2;0", "1;1"}));
    const Table comparison = test.Sub("CategoryFieldsComparison");
    EXPECT_EQ(comparison.Row("RowSuccessList"), "0;1");
    EXPECT_EQ(comparison.Row("RowFailList"), "2");
    EXPECT_EQ(comparison.Row("ColumnSuccessList"), "2;1");
}

TEST(McNemar, SecondFieldsFailuresAreReadUnderTheFirstFieldsKey) {
    Fields fields;
    fields.Text("before", {"a", "b", "c"}).Text("after", {"c", "b", "a"});
    const Table test = Result(fields, {{0, 0}}, ListEntry({"before", "after"}, Texts({"a"})));
    const Table comparison = test.Sub("CategoryFieldsComparison");
    EXPECT_EQ(comparison.Row("RowFailList"), "1;2");
    EXPECT_EQ(comparison.Row("ColumnSuccessList"), "2");
    EXPECT_EQ(comparison.Row("ColumnFailList"), "1;2");  // not 0;1, which it is to the second field
}

TEST(McNemar, GivenNumbersMayComeAsTexts) {
    Fields fields;
    fields.Numeric("before", {0, 1, 2}).Numeric("after", {0, 1, 2});
    const Rows rows{{1, 0}, {1, 2}, {1, 1}, {0, 1}, {2, 2}};
    const Table ofTexts = Result(fields, rows, ListEntry({"before", "after"}, Texts({"1"})));
    EXPECT_EQ(Counts(ofTexts), Texts({"1;2", "1;1"}));
    const Table ofNumbers = Result(fields, rows, ListEntry({"before", "after"}, std::vector<double>{1}));
    EXPECT_EQ(Counts(ofNumbers), Texts({"1;2", "1;1"}));
    EXPECT_EQ(ofNumbers.Sub("CategoryFieldsComparison").Row("RowSuccessList"), "1");
}

TEST(McNemar, UnknownGivenCategoriesStandInTablesOfTheirOwn) {
    Fields fields;
    fields.Numeric("before", {0, 1}).Numeric("after", {1, 2});
    const Table test =
        Result(fields, {{1, 0}, {0, 1}}, ListEntry({"before", "after"}, std::vector<double>{7, 1, 2, 8.5}));
    const Table comparison = test.Sub("CategoryFieldsComparison");
    EXPECT_EQ(comparison.ChildNames(),
              Texts({"Attribute RowNames", "Attribute RowSuccessList", "StructuredTable RowValsNotInTheCategoreis",
                     "Attribute RowFailList", "Attribute ColumnNames", "Attribute ColumnSuccessList",
                     "StructuredTable ColValsNotInTheCategoreis", "Attribute ColumnFailList", "SimpleTable Content"}));
    EXPECT_EQ(comparison.Row("RowSuccessList"), "-1;1;-1;-1");
    EXPECT_EQ(comparison.Row("ColumnSuccessList"), "-1;0;1;-1");
    const Table ofRow = comparison.Sub("RowValsNotInTheCategoreis");
    EXPECT_EQ(ofRow.ChildNames(), Texts({"Attribute 0", "Attribute 1", "Attribute 2"}));
    EXPECT_EQ(ofRow.Row("0"), "7");
    EXPECT_EQ(ofRow.Row("1"), "2");
    EXPECT_EQ(ofRow.Row("2"), "8.5");
    const Table ofColumn = comparison.Sub("ColValsNotInTheCategoreis");
    EXPECT_EQ(ofColumn.Row("0"), "7");
    EXPECT_EQ(ofColumn.Row("1"), "8.5");
    EXPECT_EQ(Counts(test), Texts({"1;0", "1;0"}));
}

TEST(McNemar, ThreeCategoriesAreNoErrorWithAGivenList) {
    Fields fields;
    fields.Text("before", {"a", "b", "c"}).Text("after", {"x"});
    EXPECT_EQ(Counts(Result(fields, {{0, 0}, {1, 0}}, ListEntry({"before", "after"}, Texts({"b"})))),
              Texts({"0;1", "0;1"}));
}

TEST(McNemar, ListOfUnknownCategoriesAloneGives221611) {
    Fields fields = YesNo();
    const Table test = Result(fields, {{0, 1}}, ListEntry({"before", "after"}, Texts({"perhaps"})));
    EXPECT_EQ(MessagesOf(test), Texts({"221611 error"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_R_McNemar_2");
}

TEST(McNemar, EmptyOrAbsentListGives221611AndTheFrequenciesAreRequestedBefore) {
    Fields fields = YesNo();
    const QKSettings empty = ListEntry({"before", "after"}, std::vector<std::string>{});
    EXPECT_EQ(MessagesOf(Result(fields, {{0, 1}}, empty)), Texts({"221611 error"}));

    QKSettings absent = Entry({"before", "after"});
    absent.AddSetting("classFormation", "givenCategoryList");
    const harness::Outcome outcome = pairs::RunEntry("RMcNemar", absent, fields, {{0, 1}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), Texts({"221611 error"}));
    EXPECT_EQ(outcome.document.Test(0).Sub("Condition").Row("%1"), "1");
    EXPECT_TRUE(outcome.document.FieldInfo(0).Exists());
    EXPECT_TRUE(outcome.document.FieldInfo(1).Exists());
}

TEST(McNemar, AnotherFormationActsAsClassesFromTheData) {
    Fields fields = YesNo();
    QKSettings entry = ListEntry({"before", "after"}, Texts({"no"}));
    entry.RemoveSetting("classFormation", true);
    entry.AddSetting("classFormation", "givencategorylist");
    const Table test = Result(fields, {{1, 0}}, entry);
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "AllDistinctValuesUsed_R_McNemar_2");
    EXPECT_EQ(Counts(test), Texts({"0;1", "0;0"}));
}

// ---- Failures ----

TEST(McNemar, AbsentVariableNameGives221603) {
    Fields fields = YesNo();
    const Table test = Result(fields, {{0, 1}}, QKSettings());
    EXPECT_EQ(MessagesOf(test), Texts({"221603 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "__MISSING__");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "__MISSING__");
}

TEST(McNemar, NotTwoNamesGive221614) {
    Fields fields = YesNo();
    for (const auto& names : {Texts({}), Texts({"before"}), Texts({"before", "after", "before"}), Texts({"nowhere"})}) {
        EXPECT_EQ(MessagesOf(Result(fields, {{0, 1}}, Entry(names))), Texts({"221614 error"}));
    }
}

TEST(McNemar, FieldsThatAreNotOfOneCategoricalKindGive221613WithTheirIndicesInTheCondition) {
    Fields fields;
    fields.Text("text", {"1"}).Numeric("number", {1}).Continuous("x").Other("other").Continuous("y");
    const Rows rows{{0, 0, 1, 1, 1}};
    for (const auto& names :
         {Texts({"text", "number"}), Texts({"x", "y"}), Texts({"number", "x"}), Texts({"other", "text"})}) {
        EXPECT_EQ(MessagesOf(Result(fields, rows, Entry(names))), Texts({"221613 error"}));
    }
    const Table mixed = Result(fields, rows, Entry({"text", "number"}));
    EXPECT_EQ(mixed.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(mixed.Sub("Condition").Row("%1"), "1");
}

TEST(McNemar, UnknownFieldGives221613WithoutAParameter) {
    Fields fields = YesNo();
    const Table test = Result(fields, {{0, 1}}, Entry({"before", "nowhere"}));
    EXPECT_EQ(MessagesOf(test), Texts({"221613 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "__MISSING__");
}

TEST(McNemar, NegativeWeightsLetTheBinomialFunctionFailWith221605) {
    Fields fields = YesNo();
    fields.Weight("w");
    const Table test = Result(fields, {{1, 0, -5}});
    EXPECT_EQ(MessagesOf(test), Texts({"221612 helpMessage", "221605 error"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_FALSE(Statistics(test).Exists());
}

TEST(McNemar, NoDescriptivesGive221606) {
    Fields fields = YesNo();
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variablePairFirstIndex", 0);
    settings->AddSetting("variablePairSecondIndex", 1);
    TARNMcNemar test(std::move(settings), CategoryMatcher(fields.List()));
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 221606);
    EXPECT_EQ(test.GetPassKind(), 0);
}

TEST(McNemar, MakesOnePassOverItsPair) {
    Fields fields = YesNo();
    TARNMcNemar test(std::make_unique<QKSettings>(), CategoryMatcher(fields.List()));
    EXPECT_FALSE(test.NeedsAnotherPass());
    std::vector<int> used{7};
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{7, -1, -1}));
}

TEST(McNemar, WeightsAreTruncated) {
    Fields fields = YesNo();
    fields.Weight("w");
    const Table test = Result(fields, {{1, 0, 2.9}, {0, 1, 0.9}, {1, 1, 1}, {0, 0, 4.5}});
    EXPECT_EQ(Counts(test), Texts({"1;2", "0;4"}));
}

TEST(McNemar, MissingValuesOfOtherFieldsDoNotCost) {
    Fields fields = YesNo();
    fields.Continuous("x");
    EXPECT_EQ(Statistics(Result(fields, {{1, 0, harness::kNone}, {1, 1, 2}})).Row("TotalN"), "2");
}

}  // namespace
