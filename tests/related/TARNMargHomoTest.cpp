// The marginal homogeneity test. Reference values: all 2^n exchanges of the two fields' categories in the records, by
// enumeration, and sums worked by hand; scipy 1.17 for the normal tail, as the call beside each says.

#include "related/TARNMargHomo.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/related/PairRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Table;
using pairs::Entry;
using pairs::Number;
using pairs::Rows;
using pairs::Texts;

constexpr double kTolerance = 1e-12;

/// Counts beside the diagonal: rows 2 1, 4 6, 0 3.
const std::vector<std::vector<int>> kCounts{{5, 2, 1}, {4, 3, 6}, {0, 3, 7}};

Rows RowsOf(const std::vector<std::vector<int>>& counts) {
    Rows rows;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        for (std::size_t j = 0; j < counts.size(); ++j) {
            const Rows::value_type record{static_cast<double>(i), static_cast<double>(j)};
            rows.insert(rows.end(), static_cast<std::size_t>(counts[i][j]), record);
        }
    }
    return rows;
}

Fields Numeric(const std::vector<double>& categories) {
    Fields fields;
    fields.Numeric("before", categories).Numeric("after", categories);
    return fields;
}

Table Result(Fields& fields, Rows rows, const QKSettings& entry = Entry({"before", "after"}),
             const std::vector<std::pair<std::string, double>>& common = {}) {
    return pairs::ResultOf("RMarginalHomogeneity", entry, fields, std::move(rows), common);
}

Table ResultOfNumeric(const std::vector<double>& categories, const std::vector<std::vector<int>>& counts) {
    Fields fields = Numeric(categories);
    return Result(fields, RowsOf(counts));
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
std::vector<std::string> Cells(const Table& test) {
    return test.Sub("CategoryFieldsComparison").SimpleRows("Content");
}

struct Moments {
    double mean = 0;
    double variance = 0;
};

/// Of the sum of the first field's scores over the records beside the diagonal, if each record's two categories may
/// as well be exchanged.
Moments MomentsByEnumeration(const std::vector<std::vector<int>>& counts, const std::vector<double>& scores) {
    std::vector<std::pair<double, double>> records;
    for (const std::vector<double>& row : RowsOf(counts)) {
        if (row[0] != row[1]) {
            records.emplace_back(scores[static_cast<std::size_t>(row[0])], scores[static_cast<std::size_t>(row[1])]);
        }
    }
    const std::size_t exchanges = std::size_t{1} << records.size();
    double sum = 0;
    double squares = 0;
    for (std::size_t bits = 0; bits < exchanges; ++bits) {
        double total = 0;
        for (std::size_t i = 0; i < records.size(); ++i) total += bits >> i & 1 ? records[i].second : records[i].first;
        sum += total;
        squares += total * total;
    }
    const auto n = static_cast<double>(exchanges);
    return {sum / n, squares / n - sum / n * (sum / n)};
}

// ---- Statistic ----

TEST(MargHomo, GivesTheSumOfScoresBesideTheDiagonal) {
    const Table test = ResultOfNumeric({1, 2, 3}, kCounts);
    EXPECT_EQ(test.Attribute("name"), "RMarginalHomogeneity");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable StatisticsResult",
                                        "StructuredTable CategoryFieldsComparison"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "AllDistinctValuesUsed_R_MarginalHomogeneity_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                              "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "31");
    EXPECT_EQ(statistics.Row("TestStatistic"), "32");  // 3 * 1 + 10 * 2 + 3 * 3
    const Moments moments = MomentsByEnumeration(kCounts, {1, 2, 3});
    EXPECT_NEAR(Number(statistics, "StandardError"), std::sqrt(moments.variance), kTolerance);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), (32 - moments.mean) / std::sqrt(moments.variance),
                kTolerance);
    // 2 * norm.sf(0.6882472016116852)
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.4912971242158931, kTolerance);
}

TEST(MargHomo, TwoCategoriesGiveTheRootOfTheUncorrectedChangeStatistic) {
    const Table statistics = Statistics(ResultOfNumeric({0, 1}, {{3, 9}, {4, 2}}));
    EXPECT_EQ(statistics.Row("TestStatistic"), "4");
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), (4 - 9) / std::sqrt(4 + 9), kTolerance);
}

TEST(MargHomo, ScoresAreTheValuesOfNumericCategories) {
    const Table statistics = Statistics(ResultOfNumeric({1, 2, 10}, kCounts));
    EXPECT_EQ(statistics.Row("TestStatistic"), "53");  // 3 * 1 + 10 * 2 + 3 * 10
    const Moments moments = MomentsByEnumeration(kCounts, {1, 2, 10});
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), (53 - moments.mean) / std::sqrt(moments.variance),
                kTolerance);
    EXPECT_NE(statistics.Row("StandardTestStatistic"),
              Statistics(ResultOfNumeric({1, 2, 3}, kCounts)).Row("StandardTestStatistic"));
}

TEST(MargHomo, ScoresAreTheIndicesOfTexts) {
    Fields fields;
    fields.Text("before", {"10", "20", "90"}).Text("after", {"10", "20", "90"});
    EXPECT_EQ(Statistics(Result(fields, RowsOf(kCounts))).Row("TestStatistic"), "16");  // 10 * 1 + 3 * 2
}

TEST(MargHomo, AllRecordsOnTheDiagonalRetain) {
    const Table test = ResultOfNumeric({1, 2}, {{3, 0}, {0, 4}});
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.Row("TotalN"), "7");
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_EQ(statistics.Row("StandardError"), "0");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

TEST(MargHomo, SymmetricTableGivesZeroStandardStatistic) {
    const Table statistics = Statistics(ResultOfNumeric({1, 2, 3}, {{1, 2, 3}, {2, 5, 4}, {3, 4, 0}}));
    EXPECT_EQ(statistics.Row("TestStatistic"), "38");  // 5 * 1 + 6 * 2 + 7 * 3
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
}

TEST(MargHomo, DiagonalCellsCountInTotalNAlone) {
    const Table without = ResultOfNumeric({1, 2}, {{0, 3}, {1, 0}});
    const Table with = ResultOfNumeric({1, 2}, {{50, 3}, {1, 9}});
    for (const char* row : {"TestStatistic", "StandardError", "StandardTestStatistic", "AsymptoticSig2Tailed"}) {
        EXPECT_EQ(Statistics(with).Row(row), Statistics(without).Row(row)) << row;
    }
    EXPECT_EQ(Statistics(without).Row("TotalN"), "4");
    EXPECT_EQ(Statistics(with).Row("TotalN"), "63");
}

TEST(MargHomo, SignificanceEqualToTheLevelRetains) {
    Fields fields = Numeric({1, 2});
    const auto decision = [&](double level) {
        return Result(fields, {{0, 1}, {1, 0}}, Entry({"before", "after"}), {{"sigLevel", level}})
            .Attribute("decision");
    };
    EXPECT_EQ(decision(1.0), "retain");
    EXPECT_EQ(decision(1.5), "reject");
}

// ---- Table ----

TEST(MargHomo, ContentHasARowForEachCategoryZeroRowsToo) {
    const Table test = ResultOfNumeric({1, 2, 3, 4}, {{0, 2, 0, 0}, {0, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, 0, 0}});
    EXPECT_EQ(Cells(test), Texts({"0;2;0;0", "0;0;0;0", "1;0;0;0", "0;0;0;0"}));
    const Table comparison = test.Sub("CategoryFieldsComparison");
    EXPECT_EQ(comparison.ChildNames(), Texts({"Attribute RowNames", "Attribute ColumnNames", "SimpleTable Content"}));
    EXPECT_EQ(comparison.Row("RowNames"), "0");
    EXPECT_EQ(comparison.Row("ColumnNames"), "1");
}

TEST(MargHomo, SecondFieldsCategoriesAreAlignedWithTheFirsts) {
    Fields fields;
    fields.Numeric("before", {1, 2, 3}).Numeric("after", {3, 1, 2});
    const Table test = Result(fields, {{0, 1}, {0, 0}, {1, 0}, {2, 2}});  // 1-1, 1-3, 2-3, 3-2
    EXPECT_EQ(Cells(test), Texts({"1;0;1", "0;0;1", "0;1;0"}));
}

TEST(MargHomo, NumbersAlignWithEqualTextsOfAFirstTextField) {
    Fields fields;
    fields.Text("before", {"1", "2.5"}).Numeric("after", {2.5, 1});
    EXPECT_EQ(Cells(Result(fields, {{0, 0}, {1, 0}})), Texts({"0;1", "0;1"}));
}

TEST(MargHomo, FieldWithItselfIsAllDiagonal) {
    Fields fields = Numeric({4, 5});
    EXPECT_EQ(Cells(Result(fields, {{0, 0}, {1, 0}}, Entry({"before", "before"}))), Texts({"1;0", "0;1"}));
}

TEST(MargHomo, WeightIsTruncated) {
    Fields fields = Numeric({1, 2});
    fields.Weight("w");
    const Table test = Result(fields, {{0, 1, 2.7}, {1, 0, 0.9}, {1, 1, 1}});
    EXPECT_EQ(Cells(test), Texts({"0;2", "0;1"}));
    EXPECT_EQ(Statistics(test).Row("TotalN"), "3");
}

TEST(MargHomo, MissingValuesOfThePairCostTheRecordAndOthersDoNot) {
    Fields fields = Numeric({1, 2});
    fields.Continuous("x");
    const Table test = Result(fields, {{0, 1, harness::kNone}, {-1, 1, 3}, {1, -1, 3}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "1");
}

// ---- Failures ----

TEST(MargHomo, AbsentVariableNameGives221703) {
    Fields fields = Numeric({1, 2});
    const Table test = Result(fields, {{0, 1}}, QKSettings());
    EXPECT_EQ(MessagesOf(test), Texts({"221703 error"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "-1");
}

TEST(MargHomo, NotTwoNamesGive221711) {
    Fields fields = Numeric({1, 2});
    for (const auto& names : {Texts({}), Texts({"before"}), Texts({"before", "after", "after"})}) {
        EXPECT_EQ(MessagesOf(Result(fields, {{0, 1}}, Entry(names))), Texts({"221711 error"}));
    }
}

TEST(MargHomo, FieldsThatAreNotCategoricalGive221710AndShowNoIndices) {
    Fields fields = Numeric({1, 2});
    fields.Continuous("x").Other("other");
    for (const char* name : {"x", "other", "nowhere"}) {
        const Table test = Result(fields, {{0, 1, 1, 1}}, Entry({"before", name}));
        EXPECT_EQ(MessagesOf(test), Texts({"221710 error"})) << name;
        EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1") << name;
        EXPECT_EQ(test.Sub("Condition").Row("%1"), "-1") << name;
    }
}

TEST(MargHomo, FieldsWithoutCategoriesGive221710) {
    Fields fields = Numeric({});
    fields.Continuous("x");
    const Table test = Result(fields, {{-1, -1, 5}});
    EXPECT_EQ(MessagesOf(test), Texts({"221710 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
}

TEST(MargHomo, CategoriesThatDoNotAlignGive221709) {
    const auto messages = [](const std::vector<double>& first, const std::vector<double>& second) {
        Fields fields;
        fields.Numeric("before", first).Numeric("after", second);
        return MessagesOf(Result(fields, {{0, 0}}));
    };
    EXPECT_EQ(messages({1, 2}, {1, 3}), Texts({"221709 error"}));
    EXPECT_EQ(messages({1, 2}, {1, 2, 3}), Texts({"221709 error"}));
    EXPECT_EQ(messages({1, 2, 3}, {1, 2}), Texts({"221709 error"}));

    Fields fields;  // by number, since the first field has numbers; a text has none
    fields.Numeric("before", {1, 2}).Text("after", {"1", "2"});
    const Table test = Result(fields, {{0, 0}});
    EXPECT_EQ(MessagesOf(test), Texts({"221709 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
}

TEST(MargHomo, NoCaseGives220003) {
    Fields fields = Numeric({1, 2});
    fields.Weight("w");
    const Table test = Result(fields, {{0, 1, 0.9}, {-1, 1, 5}});
    EXPECT_EQ(MessagesOf(test), Texts({"220003 error"}));
    EXPECT_FALSE(Statistics(test).Exists());
}

TEST(MargHomo, NegativeTotalGives220003) {
    Fields fields = Numeric({1, 2});
    fields.Weight("w");
    EXPECT_EQ(MessagesOf(Result(fields, {{0, 1, -2}, {0, 1, 1}})), Texts({"220003 error"}));
}

TEST(MargHomo, RequestsTheFrequenciesOfBothFields) {
    Fields fields = Numeric({1, 2});
    const harness::Outcome outcome =
        pairs::RunEntry("RMarginalHomogeneity", Entry({"before", "after"}), fields, {{0, 1}, {0, 0}, {0, 1}});
    // The counts and below them the categories.
    const auto frequencies = [&](int field) {
        return outcome.document.FieldInfo(field).Sub("CategoricalDistribution").SimpleRows("Interval");
    };
    EXPECT_EQ(frequencies(0), Texts({"3;0", "0;1"}));
    EXPECT_EQ(frequencies(1), Texts({"1;2", "0;1"}));
}

// ---- The test's own settings ----

class MargHomoSettings : public testing::Test {
 protected:
    MargHomoSettings() { fields_.Numeric("before", {1, 2}).Numeric("after", {1, 2}); }

    std::unique_ptr<TARNCategoryTable> Aligned() {
        auto table = std::make_unique<TARNCategoryTable>(fields_.List());
        EXPECT_FALSE(table->AddField(0).IsError());
        EXPECT_FALSE(table->AddField(1).IsError());
        return table;
    }

    static std::unique_ptr<QKSettings> Settings() {
        auto settings = std::make_unique<QKSettings>();
        settings->AddSetting("variablePairFirstIndex", 0);
        settings->AddSetting("variablePairSecondIndex", 1);
        return settings;
    }

    Fields fields_;
};

TEST_F(MargHomoSettings, AbsentSigLevelGives221701) {
    auto settings = Settings();
    settings->AddSetting("numberOfCategories", 2);
    TARNMargHomo test(std::move(settings), Aligned());
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 221701);
    EXPECT_EQ(test.GetPassKind(), 0);
}

TEST_F(MargHomoSettings, NothingToMakeScoresFromGives221701) {
    auto settings = Settings();
    settings->AddSetting("sigLevel", 0.05);
    TARNMargHomo withoutCount(std::make_unique<QKSettings>(*settings), Aligned());
    EXPECT_EQ(withoutCount.BeginPass().GetErrorCode(), 221701);
    settings->AddSetting("numberOfCategories", 2);
    TARNMargHomo withoutTable(std::move(settings), nullptr);
    EXPECT_EQ(withoutTable.BeginPass().GetErrorCode(), 221701);
}

TEST_F(MargHomoSettings, GivenScoresStandInPlaceOfTheValues) {
    auto settings = Settings();
    settings->AddSetting("sigLevel", 0.05);
    AddVecSetting(*settings, "scoreList", std::vector<double>{10, 30}, false);
    TARNMargHomo test(std::move(settings), Aligned());
    ASSERT_FALSE(test.BeginPass().IsError());
    EXPECT_EQ(test.GetPassKind(), 1);
    for (const double first : {0.0, 0.0, 1.0}) {
        Record record(2);
        record[0] = first;
        record[1] = 1 - first;
        EXPECT_FALSE(test.ProcessRecord(record).IsError());
    }
    ASSERT_FALSE(test.EndPass().IsError());
    EXPECT_FALSE(test.NeedsAnotherPass());
    const std::unique_ptr<QKXML::XMLElement> element(test.MakeResultElement());
    const auto statistics = element->GetChildren()[1]->AsElement();
    const auto testStatistic = statistics->GetChildren()[1]->AsElement();
    EXPECT_EQ(testStatistic->GetAttributes()[1].second, "50");  // 10 + 10 + 30
}

TEST_F(MargHomoSettings, CategoryTableAnswersInTheFirstFieldsCategories) {
    Fields fields;
    fields.Text("a", {"x", "y"}).Text("b", {"y", "x"}).Text("c", {"x", "z"}).Continuous("d");
    TARNCategoryTable table(fields.List());
    EXPECT_EQ(table.AddField(3).GetErrorCode(), 220006);
    EXPECT_EQ(table.AddField(9).GetErrorCode(), 220006);
    EXPECT_FALSE(table.AddField(0).IsError());
    EXPECT_FALSE(table.AddField(1).IsError());
    EXPECT_FALSE(table.AddField(1).IsError());
    EXPECT_EQ(table.AddField(2).GetErrorCode(), 220006);
    EXPECT_EQ(table.FindAligned(1, 0), 1);
    EXPECT_EQ(table.FindAligned(1, 1), 0);
    EXPECT_EQ(table.FindAligned(1, 2), -1);
    EXPECT_EQ(table.FindAligned(1, -1), -1);
    EXPECT_EQ(table.FindAligned(7, 0), -1);
    EXPECT_EQ(table.ScoreOf(1), 1);
}

// By hand: 3 cases go from 100 to 1200, 1 case from 1500 to 1499, 2 stay at 7. S = 3 * 100 + 1500 = 1800, M = (3 * 1300
// + 2999) / 2 = 3449.5, V = 3 * 550^2 + 0.5^2.
TEST(MargHomo, OfThousandsOfCategoriesEmptyCellsAddNothing) {
    constexpr int kCategories = 1501;
    std::vector<double> categories(kCategories);
    for (std::size_t i = 0; i < categories.size(); ++i) categories[i] = static_cast<double>(i);
    Fields fields = Numeric(categories);
    fields.Weight("w");
    const Table test = Result(fields, {{100, 1200, 3}, {1500, 1499, 1}, {7, 7, 2}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "6");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "1800");
    EXPECT_NEAR(Number(Statistics(test), "StandardError"), std::sqrt(907500.25), kTolerance * 1000);
    EXPECT_NEAR(Number(Statistics(test), "StandardTestStatistic"), -1649.5 / std::sqrt(907500.25), kTolerance);
    const std::vector<std::string> cells = Cells(test);
    ASSERT_EQ(cells.size(), categories.size());
    std::string empty = "0";
    for (int i = 1; i < kCategories; ++i) empty += ";0";
    EXPECT_EQ(cells[0], empty);
    std::string counted = empty;
    counted[2 * 1200] = '3';  // each cell in front has a digit and a separator
    EXPECT_EQ(cells[100], counted);
}

}  // namespace
