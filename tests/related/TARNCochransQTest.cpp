// Cochran's Q test. Reference values: worked by hand as fractions, significances scipy 1.17, chi2.sf and norm.sf.

#include "related/TARNCochransQ.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "tests/related/RankedRun.h"

namespace {

using harness::kNoCategory;
using harness::MessagesOf;
using harness::Number;
using harness::Texts;
using ranked::Fields;
using ranked::Names;
using ranked::Rows;
using ranked::RowsOf;
using ranked::Table;

constexpr const char* kTest = "RCochransQ";
constexpr double kTolerance = 1e-12;

/// Responses of 18 sets of housewives to three kinds of interviews: Siegel (1956), Nonparametric Statistics for the
/// Behavioral Sciences, chapter 7. Q is 16.7 there. Rotated, so that the first record has a success first.
Rows Interviews() {
    return {{1, 1, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0},
            {1, 1, 1}, {1, 1, 1}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {1, 1, 1}, {1, 1, 0}, {1, 1, 0}, {0, 0, 0}};
}

/// Fields x0, x1, ... of the categories "no" = 0 and "yes" = 1.
Fields YesNo(std::size_t count) {
    Fields fields;
    for (const std::string& name : Names(count)) fields.Text(name, {"no", "yes"});
    return fields;
}

QKSettings Entry(std::size_t count, const std::string& comparison = "none") {
    return ranked::Entry(Names(count), comparison);
}

template <typename Value>
QKSettings ListEntry(std::size_t count, const std::vector<Value>& list, const std::string& comparison = "none") {
    QKSettings entry = Entry(count, comparison);
    entry.AddSetting("classFormation", "givenCategoryList");
    AddVecSetting(entry, "successCategoryList", list, false);
    return entry;
}

Table Result(const Rows& rows, const std::string& comparison = "none",
             const std::vector<std::pair<std::string, double>>& common = {}) {
    Fields fields = YesNo(rows.front().size());
    return harness::ResultOf(kTest, Entry(rows.front().size(), comparison), fields, rows, common);
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
std::vector<std::string> Classes(const Table& test) {
    return RowsOf(test, "TwoClassComparison", "Content");
}

// ---- Statistic ----

TEST(CochransQ, GivesTheStatisticOfTheInterviews) {
    const Table test = Result(Interviews());
    EXPECT_EQ(test.Attribute("name"), kTest);
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable TwoClassComparison",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_R_CochransQ_1");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0;1;2");
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic",
                                              "Attribute DegreeOfFreedom", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "18");
    // 2 (3 (13^2 + 13^2 + 3^2) - 29^2) / (3 * 29 - 63)
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 400.0 / 24, kTolerance);
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "2");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.00024036947641951407, kTolerance);  // exp(-25 / 3)
}

TEST(CochransQ, PercentagesAreTruncatedAndColumnsAreCategories) {
    const Table test = Result(Interviews());
    EXPECT_EQ(Classes(test), Texts({"28;72", "28;72", "84;16"}));  // 13 / 18 = 72.2 %, 3 / 18 = 16.7 %
    const auto content = test.Sub("TwoClassComparison").Node().child("SimpleTable");
    EXPECT_EQ(std::string(content.child_value("RowNames")), "0;1;2");
    EXPECT_EQ(std::string(content.child_value("ColumnNames")), "0;1");
}

TEST(CochransQ, SuccessInCategory0StandsFirst) {
    Rows rows = Interviews();
    for (auto& row : rows) {
        for (double& value : row) value = 1 - value;
    }
    const Table test = Result(rows);
    EXPECT_EQ(Classes(test), Texts({"72;28", "72;28", "16;84"}));
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), Statistics(Result(Interviews())).Row("TestStatistic"));
}

TEST(CochransQ, FirstRecordSetsTheSuccessAndAnotherOrderKeepsTheStatistic) {
    Rows rows = Interviews();
    std::reverse(rows.begin(), rows.end());  // 0 is the success now
    const Table test = Result(rows);
    EXPECT_EQ(Classes(test), Texts({"27;73", "27;73", "83;17"}));  // 5 / 18 = 27.8 %, 15 / 18 = 83.3 %
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 400.0 / 24, kTolerance);
}

TEST(CochransQ, EveryRecordAllSuccessOrAllFailureGivesQ0AndRetains) {
    const Table test = Result({{1, 1, 1}, {0, 0, 0}, {1, 1, 1}});
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "0");
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "1");
}

TEST(CochransQ, SignificanceEqualToTheLevelRetains) {
    EXPECT_EQ(Result({{1, 1}, {0, 0}}, "none", {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result({{1, 1}, {0, 0}}, "none", {{"sigLevel", 1.01}}).Attribute("decision"), "reject");
}

TEST(CochransQ, SignificanceEqualToTheLevelRefusesTheComparison) {
    const Table test = Result({{1, 1, 1}, {0, 0, 0}}, "stepWise", {{"sigLevel", 1.0}});
    EXPECT_EQ(MessagesOf(test), Texts({"221218 warning"}));
    EXPECT_EQ(std::ranges::count(test.ChildNames(), "StructuredTable StepwiseResult"), 0);
}

// ---- Weights and missing values ----

TEST(CochransQ, WeightsAreTruncated) {
    Fields fields = YesNo(3);
    fields.Weight("w");
    Rows weighted = Interviews();
    for (auto& row : weighted) row.push_back(1.9);
    weighted[1][3] = 3.2;
    weighted[4][3] = 0.5;
    Rows repeated = Interviews();
    repeated.insert(repeated.end(), 2, repeated[1]);
    repeated.erase(repeated.begin() + 4);
    const Table test = harness::ResultOf(kTest, Entry(3, "pairWise"), fields, weighted);
    const Table expected = Result(repeated, "pairWise");
    EXPECT_EQ(Statistics(test).Row("TotalN"), "19");
    for (const char* row : {"TotalN", "TestStatistic", "AsymptoticSig2Tailed"}) {
        EXPECT_EQ(Statistics(test).Row(row), Statistics(expected).Row(row)) << row;
    }
    EXPECT_EQ(RowsOf(test, "PairwiseResult", "Content"), RowsOf(expected, "PairwiseResult", "Content"));
}

TEST(CochransQ, FirstRecordOfWeight0StillSetsTheSuccess) {
    Fields fields = YesNo(2);
    fields.Weight("w");
    const Table test = harness::ResultOf(kTest, Entry(2), fields, {{0, 1, 0.9}, {1, 0, 2}, {0, 0, 1}, {0, 1, 1}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "4");
    EXPECT_EQ(Classes(test), Texts({"50;50", "75;25"}));
}

TEST(CochransQ, FirstRecordIsTheFirstThatMissesNoneOfItsFields) {
    const Table test = Result({{0, kNoCategory}, {kNoCategory, 0}, {1, 0}, {0, 0}, {0, 1}, {1, 0}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "4");
    EXPECT_EQ(Classes(test), Texts({"50;50", "75;25"}));  // in the columns of the categories, whichever succeeds
}

TEST(CochransQ, NoSuccessGives220003) {
    const auto messages = Texts({"220003 error"});
    Fields fields = YesNo(2);
    EXPECT_EQ(MessagesOf(harness::ResultOf(kTest, ListEntry(2, Texts({"yes"})), fields, {{0, 0}, {0, 0}})), messages);
    EXPECT_EQ(MessagesOf(Result({{1, kNoCategory}})), messages);
    Fields weighted = YesNo(2);
    weighted.Weight("w");
    EXPECT_EQ(MessagesOf(harness::ResultOf(kTest, Entry(2), weighted, {{1, 0, 0.5}})), messages);
}

TEST(CochransQ, NothingButSuccessesGives221210) {
    const Table test = Result({{1, 1, 1}, {1, 1, 1}}, "stepWise");
    EXPECT_EQ(MessagesOf(test), Texts({"221210 error"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
}

// ---- Classes of the data ----

/// The codes of a table of one row over fields with these categories.
std::vector<std::string> MessagesFor(const std::vector<std::vector<std::string>>& categories) {
    Fields fields;
    std::size_t i = 0;
    for (const auto& texts : categories) fields.Text("x" + std::to_string(i++), texts);
    return MessagesOf(
        harness::ResultOf(kTest, Entry(categories.size()), fields, {std::vector<double>(categories.size(), 0)}));
}

TEST(CochransQ, UnusableCategoriesGive221209) {
    const auto unusable = Texts({"221209 error"});
    EXPECT_EQ(MessagesFor({{"a"}, {"a"}, {"a"}}), unusable);  // constant at one value
    EXPECT_EQ(MessagesFor({{"a", "b"}, {"a", "b"}, {"a", "b", "c"}}), unusable);
    EXPECT_EQ(MessagesFor({{"a", "b"}, {"a"}, {"c"}}), unusable);
    EXPECT_EQ(MessagesFor({{"a", "b"}, {"a", "c"}}), unusable);
    EXPECT_EQ(MessagesFor({{"a", "b"}, {}}), unusable);
    Fields mixed;
    mixed.Text("x0", {"1", "2"}).Numeric("x1", {1, 2});  // equal texts, but not of one kind
    EXPECT_EQ(MessagesOf(harness::ResultOf(kTest, Entry(2), mixed, {{0, 0}})), unusable);
}

TEST(CochransQ, ThreeDifferentSingleCategoriesGive221213) {
    EXPECT_EQ(MessagesFor({{"a"}, {"b"}, {"c"}}), Texts({"221213 error"}));
    EXPECT_EQ(MessagesFor({{"a"}, {"b"}, {"a"}, {"b"}}), Texts({}));
}

TEST(CochransQ, TwoFieldsOfOneDifferentCategoryEachAreValid) {
    Fields fields;
    fields.Text("x0", {"a"}).Text("x1", {"b"});
    const Table test = harness::ResultOf(kTest, Entry(2), fields, {{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}});
    EXPECT_TRUE(MessagesOf(test).empty());
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "5");  // (2 * 25 - 25) / (2 * 5 - 5)
    EXPECT_EQ(Classes(test), Texts({"100;0", "100;0"}));    // of field 1, none of which succeeds, the rest stands first
}

TEST(CochransQ, CategoriesMeetByTextOrValueNotByIndex) {
    Fields texts;
    texts.Text("x0", {"no", "yes"}).Text("x1", {"yes", "no"}).Text("x2", {"yes"});
    const Table test = harness::ResultOf(kTest, Entry(3), texts, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 1, 0}});
    // Successes: 3, 1 and 4 of 4.
    EXPECT_EQ(Classes(test), Texts({"25;75", "25;75", "100;0"}));
    Fields values;
    values.Numeric("x0", {1, 2}).Numeric("x1", {2, 1}).Numeric("x2", {2});
    EXPECT_EQ(Classes(harness::ResultOf(kTest, Entry(3), values, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 1, 0}})),
              Classes(test));
}

// ---- Given classes ----

TEST(CochransQ, GivenTextsAreSuccesses) {
    Fields fields;
    for (const std::string& name : Names(3)) fields.Text(name, {"never", "rarely", "often"});
    Rows rows = Interviews();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (double& value : rows[i]) value = value == 0 ? 0 : static_cast<double>(1 + i % 2);
    }
    const Table test = harness::ResultOf(kTest, ListEntry(3, Texts({"often", "rarely", "always"})), fields, rows);
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_R_CochransQ_1");
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 400.0 / 24, kTolerance);
    EXPECT_EQ(test.ChildNames().size(), 3U);  // no table of unknown values
}

TEST(CochransQ, GivenNumbersAreSuccessesOfNumericFields) {
    Fields fields;
    for (const std::string& name : Names(3)) fields.Numeric(name, {5, 7});
    for (const QKSettings& entry : {ListEntry(3, std::vector<double>{7}), ListEntry(3, Texts({"7"}))}) {
        EXPECT_NEAR(Number(Statistics(harness::ResultOf(kTest, entry, fields, Interviews())), "TestStatistic"),
                    400.0 / 24, kTolerance);
    }
}

TEST(CochransQ, FieldsOfAnotherKindThanTheFirstMatchNothingOfTheList) {
    Fields fields;
    fields.Numeric("x0", {0, 1}).Text("x1", {"0", "1"});
    const Table test = harness::ResultOf(kTest, ListEntry(2, std::vector<double>{1}), fields, {{1, 1}, {1, 1}, {0, 1}});
    EXPECT_EQ(Classes(test), Texts({"34;66", "100;0"}));
}

TEST(CochransQ, ListOfNoUseGives221210) {
    const auto messages = [](const std::vector<std::string>& list) {
        Fields fields = YesNo(2);
        const Table test = harness::ResultOf(kTest, ListEntry(2, list), fields, {{0, 1}, {1, 1}});
        EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_R_CochransQ_1");
        return MessagesOf(test);
    };
    EXPECT_EQ(messages({}), Texts({"221210 error"}));
    EXPECT_EQ(messages({"perhaps"}), Texts({"221210 error"}));
    EXPECT_EQ(messages({"yes", "no"}), Texts({"221210 error"}));
    EXPECT_EQ(messages({"yes", "perhaps"}), Texts({}));
    Fields fields = YesNo(2);
    QKSettings absent = Entry(2);
    absent.AddSetting("classFormation", "givenCategoryList");
    EXPECT_EQ(MessagesOf(harness::ResultOf(kTest, absent, fields, {{0, 1}})), Texts({"221210 error"}));
}

TEST(CochransQ, AnotherFormationIsThatOfTheData) {
    Fields fields = YesNo(3);
    QKSettings entry = Entry(3);
    entry.AddSetting("classFormation", "getFromData");
    AddVecSetting(entry, "successCategoryList", Texts({"nothing"}), false);
    EXPECT_NEAR(Number(Statistics(harness::ResultOf(kTest, entry, fields, Interviews())), "TestStatistic"), 400.0 / 24,
                kTolerance);
}

// ---- Failures ----

TEST(CochransQ, PlanFailuresHaveTheirCodesAndTheClassesAreCheckedAllTheSame) {
    const auto messages = [](const QKSettings& entry) {
        Fields fields = YesNo(2);
        fields.Continuous("c").Other("o");
        const Table test = harness::ResultOf(kTest, entry, fields, {{1, 0, 1, 1}});
        EXPECT_EQ(test.Attribute("decision"), "unknown");
        auto all = MessagesOf(test);
        all.push_back(test.Sub("Condition").Row("%0"));
        return all;
    };
    EXPECT_EQ(messages(QKSettings()), Texts({"221215 error", "221214 error", ""}));
    EXPECT_EQ(messages(ranked::Entry({"x0", "nowhere", "x1"})), Texts({"221203 error nowhere", "221214 error", "0"}));
    EXPECT_EQ(messages(ranked::Entry({"x0"})), Texts({"221214 error", "0"}));
    EXPECT_EQ(messages(ranked::Entry({"x0", "c", "o"})), Texts({"221216 error 2", "221209 error", "0;2;3"}));
    EXPECT_EQ(messages(ranked::Entry({"o"})), Texts({"221216 error 3", "221214 error", "3"}));
}

std::unique_ptr<TARNCochransQ> Alone(Fields& fields, double pairWise, double stepWise) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", std::vector<int>{0, 1, 2}, false);
    AddVecSetting(*settings, "successCategoryListStr", Texts({"yes"}), false);
    settings->AddSetting("userSpecifyGroupList", true);
    settings->AddSetting("pairWise", pairWise);
    settings->AddSetting("stepWise", stepWise);
    return std::make_unique<TARNCochransQ>(std::move(settings), CategoryMatcher(fields.List()));
}

TEST(CochransQ, NoDescriptivesGive221206) {
    Fields fields = YesNo(3);
    const auto test = Alone(fields, 0, 0);
    EXPECT_EQ(test->BeginPass().GetErrorCode(), 221206);
    EXPECT_FALSE(test->NeedsAnotherPass());
    EXPECT_EQ(test->GetPassKind(), 0);
}

// ---- Width ----

TEST(SuccessCounts, ProductsAre32BitsWide) {
    SuccessCounts counts(Arithmetic::AsDefined(), 2);
    counts.n = 70000;
    counts.ofField = {70000, 0};
    counts.sumRowSuccessSquared = 70000;
    // 2 * 70000^2 - 70000^2 = 4,900,000,000 wraps to 605,032,704, over 2 * 70000 - 70000.
    EXPECT_DOUBLE_EQ(counts.Q(), 605032704.0 / 70000);
    // 70000^2 wraps to 605,032,704 here as well.
    EXPECT_DOUBLE_EQ(counts.StandardError(), std::sqrt(2 * 70000.0 / (605032704.0 * 2)));
    EXPECT_DOUBLE_EQ(counts.Difference(1, 0), -1);
}

TEST(CochranTerms, NumeratorIsUnsignedAndDenominatorSigned) {
    EXPECT_EQ(CochranTerms({3, 3}, 20).Q(Arithmetic::AsDefined()), 0);  // the numerator is 0
    // (2 * 10 - 16) / (2 * 4 - 20)
    EXPECT_DOUBLE_EQ(CochranTerms({3, 1}, 20).Q(Arithmetic::AsDefined()), 4.0 / -12);
    EXPECT_EQ(CochranTerms({3, 1}, 8).Q(Arithmetic::AsDefined()), 0);
}

TEST(SuccessCounts, PercentageIsTruncated) {
    SuccessCounts counts(Arithmetic::AsDefined(), 3);
    counts.n = 3;
    counts.ofField = {2, 3, 0};
    EXPECT_EQ(counts.Percentage(0), 66);
    EXPECT_EQ(counts.Percentage(1), 100);
    EXPECT_EQ(counts.Percentage(2), 0);
    counts.n = 4'000'000'000;
    counts.ofField = {4'000'000'000, 0, 1};
    EXPECT_EQ(counts.Percentage(0), 100);
}

}  // namespace
