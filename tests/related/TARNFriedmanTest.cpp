// The Friedman test. Reference values: scipy 1.17, friedmanchisquare where nothing else is said; statistics of subsets
// and of pairs are fractions worked by hand, their significances scipy's chi2.sf and norm.sf.

#include "related/TARNFriedman.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "platform/common/QKDistFun.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/related/RankedRun.h"

namespace {

using harness::MessagesOf;
using harness::Number;
using harness::Texts;
using ranked::ContinuousFields;
using ranked::Entry;
using ranked::Fields;
using ranked::FirstBase;
using ranked::Names;
using ranked::Rows;
using ranked::RowsOf;
using ranked::Table;

constexpr const char* kTest = "RFriedmansTwoWayByRanks";
constexpr double kTolerance = 1e-12;

Table Result(const Rows& rows, const std::string& comparison = "none",
             const std::vector<std::pair<std::string, double>>& common = {}) {
    return ranked::ResultOf(kTest, rows, comparison, common);
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}

// ---- Statistic ----

TEST(Friedman, GivesTheTieCorrectedStatisticOfTheFirstBaseTimes) {
    const Table test = Result(FirstBase());
    EXPECT_EQ(test.Attribute("name"), kTest);
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable VariableInformation0",
                                        "StructuredTable VariableInformation1", "StructuredTable VariableInformation2",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "R_FriedmansTwoWayByRanks_1");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0;1;2");
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic",
                                              "Attribute DegreeOfFreedom", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "22");
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 78.0 / 7, kTolerance);
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "2");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.003805040775511383, kTolerance);
}

TEST(Friedman, TellsMeanRankAndFrequenciesOfRanksPerField) {
    const Table field = Result(FirstBase()).Sub("VariableInformation1");
    EXPECT_EQ(field.ChildNames(), Texts({"Attribute GroupIndex", "Attribute MeanOfRank", "SimpleTable Interval"}));
    EXPECT_EQ(field.Row("GroupIndex"), "1");
    EXPECT_NEAR(Number(field, "MeanOfRank"), 47.0 / 22, kTolerance);
    EXPECT_EQ(field.SimpleRows("Interval"), Texts({"2;13;4;3", "1;2;2.5;3"}));
    EXPECT_EQ(std::string(field.Node().child("SimpleTable").child_value("RowNames")), "count;value");
    EXPECT_EQ(std::string(field.Node().child("SimpleTable").child_value("ColumnNames")), "");
}

TEST(Friedman, FieldsStandInTheOrderInWhichTheyAreNamed) {
    Fields fields = ContinuousFields(3);
    const Table test = harness::ResultOf(kTest, Entry({"x2", "x0"}), fields, FirstBase());
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "2;0");
    EXPECT_EQ(test.Sub("VariableInformation0").Row("GroupIndex"), "2");
    EXPECT_EQ(test.Sub("VariableInformation1").Row("GroupIndex"), "0");
}

TEST(Friedman, AnotherOrderOfRecordsChangesNothing) {
    Rows rows = FirstBase();
    std::reverse(rows.begin(), rows.end());
    EXPECT_EQ(Statistics(Result(rows)).Row("TestStatistic"), Statistics(Result(FirstBase())).Row("TestStatistic"));
}

TEST(Friedman, EveryRowConstantGivesStatistic0AndRetains) {
    const Table test = Result({{1, 1, 1}, {2, 2, 2}, {7, 7, 7}});
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "0");
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(test.Sub("VariableInformation0").SimpleRows("Interval"), Texts({"3", "2"}));
}

TEST(Friedman, OneRecordAlone) {  // 12 / (3 * 4) * 14 - 3 * 4 = 2, chi2.sf(2, 2) = exp(-1)
    const Table test = Result({{1, 2, 3}});
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "2");
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.36787944117144233, kTolerance);
}

// ---- Weights and missing values ----

TEST(Friedman, RecordOfWeight3IsThreeBlocksAndFractionsAreCut) {
    Rows rows = FirstBase();
    for (auto& row : rows) row.push_back(1.9);
    rows[0][3] = 3;
    rows[2][3] = 2.5;
    const Table statistics = Statistics(ranked::WeightedResultOf(kTest, rows));
    EXPECT_EQ(statistics.Row("TotalN"), "25");
    // friedmanchisquare with the first row three times and the third twice
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 19.0 / 3, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.04214384350927673, kTolerance);
}

TEST(Friedman, WeightsOfTiedRowsCountInTheTieSum) {
    const Table weighted = ranked::WeightedResultOf(kTest, {{1, 1, 2, 4}, {3, 1, 2, 1}, {2, 2, 2, 2}});
    const Table repeated = Result({{1, 1, 2}, {1, 1, 2}, {1, 1, 2}, {1, 1, 2}, {3, 1, 2}, {2, 2, 2}, {2, 2, 2}});
    EXPECT_EQ(Statistics(weighted).Row("TestStatistic"), Statistics(repeated).Row("TestStatistic"));
    EXPECT_EQ(Statistics(weighted).Row("TotalN"), "7");
}

TEST(Friedman, WeightOf0IsRankedAndAddsNothingButItsRanks) {
    const Table test = ranked::WeightedResultOf(kTest, {{1, 2, 3, 2}, {2, 1, 3, 0.9}, {1, 2, 3, 1}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "3");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "6");
    EXPECT_EQ(test.Sub("VariableInformation0").SimpleRows("Interval"), Texts({"3;0", "1;2"}));
    EXPECT_EQ(test.Sub("VariableInformation2").SimpleRows("Interval"), Texts({"3", "3"}));
}

TEST(Friedman, NoCaseGives220003) {
    const std::vector<std::string> expected{"220003 error"};
    const Table test = ranked::WeightedResultOf(kTest, {{1, 2, 3, 0.5}, {2, 1, 3, 0}}, "stepWise");
    EXPECT_EQ(MessagesOf(test), expected);
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    EXPECT_EQ(MessagesOf(Result({{1, harness::kNone, 2}})), expected);
}

TEST(Friedman, RecordThatMissesOneOfItsFieldsIsLeftOut) {
    Fields fields = ContinuousFields(4);
    const Table test = harness::ResultOf(
        kTest, Entry(Names(3)), fields,
        {{1, 2, 3, 1}, {3, harness::kNone, 1, 1}, {1, 2, 3, harness::kNone}, {harness::kNone, 2, 3, 1}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "2");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "4");
}

// ---- All pairs ----

TEST(Friedman, ComparesAllPairs) {
    const Table test = Result(FirstBase(), "pairWise");
    EXPECT_EQ(test.ChildNames()[4], "StructuredTable PairwiseResult");
    EXPECT_EQ(test.ChildNames().back(), "StructuredTable StatisticsResult");
    EXPECT_FALSE(test.Sub("WarningMessages").Exists());
    const auto samples = RowsOf(test, "PairwiseResult", "PairwiseInfo");
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_EQ(samples[0], "0;1;2");
    ranked::ExpectNumbers(samples[1], {53.0 / 22, 47.0 / 22, 32.0 / 22});
    const auto pairs = RowsOf(test, "PairwiseResult", "Content");
    ASSERT_EQ(pairs.size(), 3U);
    const double error = 0.30151134457776363;  // sqrt(12 / (6 * 22))
    ranked::ExpectNumbers(pairs[0], {0, 1, 6.0 / 22, error, 0.9045340337332908, 0.36571229628151325, 1});
    ranked::ExpectNumbers(pairs[1],
                          {0, 2, 21.0 / 22, error, 3.165869118066518, 0.0015462034770807383, 0.004638610431242215});
    ranked::ExpectNumbers(pairs[2],
                          {1, 2, 15.0 / 22, error, 2.261335084333227, 0.023738515250054562, 0.07121554575016369});
}

TEST(Friedman, RefusesAComparisonAfterNoSignificantResult) {
    const Rows rows{{1, 2, 3}, {3, 2, 1}, {1, 3, 2}};
    const Table pairs = Result(rows, "pairWise");
    EXPECT_EQ(MessagesOf(pairs), Texts({"221813 warning"}));
    EXPECT_EQ(pairs.ChildNames().back(), "StructuredTable WarningMessages");  // behind everything
    EXPECT_FALSE(pairs.Sub("PairwiseResult").Exists());
    EXPECT_EQ(pairs.Attribute("decision"), "retain");
    const Table steps = Result(rows, "stepWise");
    EXPECT_EQ(MessagesOf(steps), Texts({"221814 warning"}));
    EXPECT_FALSE(steps.Sub("StepwiseResult").Exists());
    EXPECT_TRUE(Statistics(steps).Exists());
    EXPECT_TRUE(MessagesOf(Result(rows)).empty());
}

TEST(Friedman, RefusesAComparisonOfTwoFieldsAndKeepsTheStatistics) {
    const Rows rows{{1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}};
    const Table pairs = Result(rows, "pairWise");
    EXPECT_EQ(MessagesOf(pairs), Texts({"221815 warning"}));
    EXPECT_EQ(pairs.Attribute("decision"), "reject");
    EXPECT_EQ(Statistics(pairs).Row("TestStatistic"), "5");
    EXPECT_EQ(MessagesOf(Result(rows, "stepWise")), Texts({"221816 warning"}));
}

TEST(Friedman, SignificanceEqualToTheLevelIsNotSignificant) {
    const double sig = 1 - QKMath::QKDistFun::CdfChi(2, 2);
    const Table at = Result({{1, 2, 3}}, "pairWise", {{"sigLevel", sig}});
    EXPECT_EQ(at.Attribute("decision"), "retain");
    EXPECT_EQ(MessagesOf(at), Texts({"221813 warning"}));
    const Table above = Result({{1, 2, 3}}, "pairWise", {{"sigLevel", std::nextafter(sig, 1)}});
    EXPECT_EQ(above.Attribute("decision"), "reject");
    EXPECT_TRUE(above.Sub("PairwiseResult").Exists());
}

// ---- Passes, allocations, width ----

std::unique_ptr<TARNFriedman> Alone(const std::vector<int>& fields, const std::string& comparison) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", fields, false);
    settings->AddSetting("typeOfMultipleComparison", comparison);
    return std::make_unique<TARNFriedman>(std::move(settings));
}

Record MakeRecord(const std::vector<double>& values) {
    Record record(values.size());
    std::copy(values.begin(), values.end(), record.begin());
    return record;
}

TEST(Friedman, RanksARowWithoutAnAllocationOnceItsRanksHaveComeUp) {
    const auto test = Alone({0, 1, 2, 3}, "stepWise");
    const Rows rows{{1, 2, 3, 4}, {1, 2, 4, 3}, {1, 1, 3, 4}, {2, 1, 4, 3}};
    for (int pass = 0; pass < 3; ++pass) {
        ASSERT_FALSE(test->BeginPass().IsError());
        std::vector<Record> records;
        for (int round = 0; round < 8; ++round) {
            for (const auto& row : rows) records.push_back(MakeRecord(row));
        }
        const auto warmUp = rows.size();
        for (std::size_t i = 0; i < warmUp; ++i) EXPECT_FALSE(test->ProcessRecord(records[i]).IsError());
        bool failed = false;
        {
            const component_test::AllocationFailure failure(0, true);
            for (std::size_t i = warmUp; i < records.size(); ++i) (void)test->ProcessRecord(records[i]);
            failed = component_test::AllocationFailure::HasFailed();
        }
        EXPECT_FALSE(failed) << pass;
        ASSERT_FALSE(test->EndPass().IsError());
        if (!test->NeedsAnotherPass()) break;
    }
}

TEST(Friedman, ExpectsAPassPerFieldWithStepsAndOneWithout) {
    EXPECT_EQ((Alone({0, 1}, "none")->GetPassKind()), 0);
    const auto steps = Alone({0, 1, 2}, "stepWise");
    EXPECT_FALSE(steps->BeginPass().IsError());
    EXPECT_EQ(steps->GetPassKind(), 3);
    Record record = MakeRecord({1, 2, 3});
    for (int i = 0; i < 9; ++i) EXPECT_FALSE(steps->ProcessRecord(record).IsError());
    EXPECT_FALSE(steps->EndPass().IsError());
    EXPECT_EQ(steps->GetPassKind(), 2);
    EXPECT_TRUE(steps->NeedsAnotherPass());
    const auto pairs = Alone({0, 1, 2}, "pairWise");
    EXPECT_FALSE(pairs->BeginPass().IsError());
    EXPECT_EQ(pairs->GetPassKind(), 1);
    EXPECT_FALSE(pairs->NeedsAnotherPass());
    std::vector<int> used{7};
    pairs->GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{7, 0, 1, 2}));
}

TEST(Friedman, FewerThanTwoFieldsGive221809InThePass) {
    EXPECT_EQ(Alone({0}, "none")->BeginPass().GetErrorCode(), 221809);
    EXPECT_EQ(Alone({}, "none")->BeginPass().GetErrorCode(), 221809);
}

TEST(Friedman, ProductsAre32BitsWide) {
    // k (k + 1) n = 12 * 2^30 wraps to 0 and so does (k - 1) (k + 1) k n: 12 / 0 and 0 / 0.
    const Table test = ranked::WeightedResultOf(kTest, {{1, 2, 3, 1073741824}});
    EXPECT_EQ(Statistics(test).Row("TotalN"), "1073741824");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "nan");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    // 12 * 400,000,000 wraps to 505,032,704 and 24 * 400,000,000 to 1,010,065,408.
    const double n = 4e8;
    const double squares = n * n * 14;
    EXPECT_NEAR(FriedmanChiSquare({{n, 2 * n, 3 * n}, {}}, 400'000'000, 0, Arithmetic::AsDefined()),
                12 / 505032704.0 * squares - 12 * n, 1e-3);
}

// ---- Failures ----

std::vector<std::string> MessagesOfEntry(const QKSettings& entry) {
    Fields fields;
    fields.Continuous("x0").Continuous("x1").Numeric("g", {1, 2}).Other("o");
    const Table test = harness::ResultOf(kTest, entry, fields, {{1, 2, 0, 1}, {2, 1, 1, 1}});
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    auto messages = MessagesOf(test);
    messages.push_back(test.Sub("Condition").Row("%0"));
    return messages;
}

TEST(Friedman, PlanFailuresHaveTheirCodes) {
    QKSettings entry;
    EXPECT_EQ(MessagesOfEntry(entry), Texts({"221811 error", ""}));
    entry.AddSetting("typeOfMultipleComparison", "none");
    EXPECT_EQ(MessagesOfEntry(entry), Texts({"221811 error", ""}));
    EXPECT_EQ(MessagesOfEntry(Entry({"x0", "nowhere", "x1", "nobody"})), Texts({"221803 error nowhere", "0"}));
    EXPECT_EQ(MessagesOfEntry(Entry({"x0"})), Texts({"221809 error", "0"}));
    EXPECT_EQ(MessagesOfEntry(Entry({})), Texts({"221809 error", ""}));
    EXPECT_EQ(MessagesOfEntry(Entry({"x0", "g", "o"})), Texts({"221804 error 2", "0;2;3"}));
    EXPECT_EQ(MessagesOfEntry(Entry({"x0", "o"})), Texts({"221804 error 3", "0;3"}));
    QKSettings noType;
    AddVecSetting(noType, "variableName", Names(2), false);
    EXPECT_EQ(MessagesOfEntry(noType), Texts({"221801 error", "0;1"}));
}

TEST(Friedman, AnotherTypeOfComparisonIsNone) {
    for (const char* type : {"none", "pairwise", "STEPWISE", ""}) {
        const Table test = Result(FirstBase(), type);
        EXPECT_TRUE(MessagesOf(test).empty());
        EXPECT_FALSE(test.Sub("PairwiseResult").Exists());
        EXPECT_FALSE(test.Sub("StepwiseResult").Exists());
    }
}

TEST(Friedman, AsksForTheDescriptivesOfItsFieldsAndTheFrequenciesOfTheirOrigins) {
    Fields fields = ContinuousFields(3);
    fields.Numeric("g", {1, 2}).Numeric("h", {1, 2});
    QKSettings entry = Entry({"x0", "x2"});
    AddVecSetting(entry, "originVariableName", Texts({"g", "nowhere"}), false);
    QKSettings settings;
    settings.AddSetting(kTest, entry);
    const harness::Outcome outcome = harness::Run(settings, fields, {{1, 2, 3, 0, 1}, {1, 2, 3, 1, 1}});
    EXPECT_EQ(outcome.document.FieldInfo(0).Sub("ContinuousDistribution").Row("Mean"), "1");
    EXPECT_TRUE(outcome.document.FieldInfo(2).Exists());
    EXPECT_FALSE(outcome.document.FieldInfo(1).Exists());
    EXPECT_TRUE(outcome.document.FieldInfo(3).Exists());
    EXPECT_FALSE(outcome.document.FieldInfo(4).Exists());
}

}  // namespace
