// The comparisons of the Kruskal-Wallis test, and its passes. Reference values: scipy 1.17 (scipy.stats.kruskal of the
// groups of a subset), adjusted by hand; the pairs of Dunn (1964) and the walks of the subsets by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "independent/TARNKruskalWOneWay.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/independent/SeveralGroupsRun.h"

namespace {

using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using harness::Table;
using several::Categories;
using several::Comparing;
using several::ExpectRow;
using several::kEmpty;
using several::MessagesIn;
using several::Pairs;
using several::Samples;
using several::Subsets;
using several::TextOf;
using several::TwoSided;

constexpr const char* kTest = "IKruskalWallis";

const Samples kTied{{2.1, 3.4, 3.4, 5.0, 7.7}, {1.0, 2.1, 3.4, 4.2}, {6.1, 7.7, 7.7, 8.8, 9.0, 9.9}, {5.0, 5.0, 6.1}};
/// Three, four groups that lie apart.
const Samples kApart{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
const Samples kFourApart{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
/// Three alike and one above them.
const Samples kThreeAlike{{1, 4, 7, 10, 13}, {2, 5, 8, 11, 14}, {3, 6, 9, 12, 15}, {101, 102, 103, 104, 105}};
const Samples kAllAlike{{1, 4, 7, 10}, {2, 5, 8, 11}, {3, 6, 9, 12}};

Table Result(const Samples& samples, const std::string& comparison = "none", const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Comparing(comparison), Categories(samples.size()), RowsOf(samples), common);
}
// ---- All pairs ----

TEST(KruskalWallis, PairsOfGroupsApart) {
    // Mean ranks 2, 5, 8; the standard error is the root of (9 * 10 / 12) * (1/3 + 1/3) = 5. Three pairs.
    const Table test = Result(kApart, "pairWise");
    const double oneApart = TwoSided(3 / std::sqrt(5));
    const double twoApart = TwoSided(6 / std::sqrt(5));
    ASSERT_EQ(Pairs(test).size(), 3U);
    ExpectRow(Pairs(test)[0], "0", "1", {-3, std::sqrt(5), -3 / std::sqrt(5), oneApart, 3 * oneApart});
    ExpectRow(Pairs(test)[1], "0", "2", {-6, std::sqrt(5), -6 / std::sqrt(5), twoApart, 3 * twoApart});
    ExpectRow(Pairs(test)[2], "1", "2", {-3, std::sqrt(5), -3 / std::sqrt(5), oneApart, 3 * oneApart});
    const Table pairwise = test.Sub("PairwiseResult");
    EXPECT_EQ(pairwise.ChildNames(),
              Texts({"Attribute fieldIndex", "SimpleTable PairwiseInfo", "SimpleTable Content"}));
    EXPECT_EQ(pairwise.Row("fieldIndex"), "1");
    EXPECT_EQ(pairwise.SimpleRows("PairwiseInfo"), Texts({"0;1;2", "2;5;8"}));
    EXPECT_EQ(MessagesIn(test), Texts({"222111 helpMessage"}));
}

TEST(KruskalWallis, PairsUnderTiesTakeTheTieSumOffTheStandardError) {
    // N = 18, runs of 2 2 3 3 3 tied values: 2 * 6 + 3 * 24 = 84; group sizes 5, 4, 6, 3; six pairs.
    const double variance = 18.0 * 19 / 12 - 84.0 / (12 * 17);
    const double d01 = 7.1 - 3.875;
    const double e01 = std::sqrt(variance * (1.0 / 5 + 1.0 / 4));
    const double d12 = 3.875 - 90.5 / 6;
    const double e12 = std::sqrt(variance * (1.0 / 4 + 1.0 / 6));
    const std::vector<std::string> pairs = Pairs(Result(kTied, "pairWise"));
    ASSERT_EQ(pairs.size(), 6U);
    ExpectRow(pairs[0], "0", "1", {d01, e01, d01 / e01, TwoSided(d01 / e01), 1});
    const double p12 = TwoSided(d12 / e12);
    ExpectRow(pairs[3], "1", "2", {d12, e12, d12 / e12, p12, 6 * p12});
    EXPECT_NEAR(6 * p12, 0.0063104767088266404, 1e-14);
    EXPECT_EQ(pairs[5].substr(0, 9), "2;3;5.25;");
}

// The factor of the pairs counts categories without data, as all that the field has.
TEST(KruskalWallis, AdjustmentOfThePairsUsesEveryCategory) {
    const Table test = Result({{1, 2, 3}, {}, {4, 5, 6}, {7, 8, 9}}, "pairWise");
    const double twoApart = TwoSided(6 / std::sqrt(5));
    ASSERT_EQ(Pairs(test).size(), 3U);
    ExpectRow(Pairs(test)[1], "0", "3", {-6, std::sqrt(5), -6 / std::sqrt(5), twoApart, 6 * twoApart});
    EXPECT_EQ(harness::SplitValues(Pairs(test)[0])[6], "1");  // 6 * 0.18, limited
    EXPECT_EQ(test.Sub("PairwiseResult").SimpleRows("PairwiseInfo"), Texts({"0;2;3", "2;5;8"}));
}

TEST(KruskalWallis, GroupOfNegativeWeightHasNoMeanRankAmongThePairs) {
    // N = 8, rank sums 6, 15, 24 and -9: 12 * (279 - 81) / 72 - 27 = 6, a significance of 0.11 at 3 degrees.
    Rows rows = RowsOf(kApart);
    for (std::vector<double>& row : rows) row.push_back(1);
    rows.push_back({20, 3, -1});
    harness::Fields fields = Categories(4);
    fields.Weight("w");
    const Table test = groups::ResultOf(kTest, Comparing("pairWise"), fields, rows, {{"sigLevel", 0.2}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "8");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TestStatistic"), "6");
    EXPECT_EQ(test.Sub("PairwiseResult").SimpleRows("PairwiseInfo"), Texts({"0;1;2;3", "2;5;8;"}));
}

TEST(KruskalWallis, TwoGroupsWithDataAreNotCompared) {
    const Samples samples{{1, 2, 3, 4}, {}, {5, 6, 7, 8}};
    const Table pairwise = Result(samples, "pairWise");
    EXPECT_EQ(pairwise.Attribute("decision"), "reject");
    EXPECT_EQ(MessagesIn(pairwise), Texts({"222111 helpMessage", "222118 warning"}));
    EXPECT_FALSE(pairwise.Sub("PairwiseResult").Exists());
    const Table stepwise = Result(samples, "stepWise");
    EXPECT_EQ(MessagesIn(stepwise), Texts({"222111 helpMessage", "222116 warning"}));
    EXPECT_FALSE(stepwise.Sub("StepwiseResult").Exists());
    EXPECT_TRUE(stepwise.Sub("BoxPlotInfo").Exists());
    EXPECT_EQ(MessagesIn(Result(samples)), Texts({"222111 helpMessage"}));
}

TEST(KruskalWallis, NothingIsComparedWithoutASignificantStatistic) {
    const Table pairwise = Result(kAllAlike, "pairWise");
    EXPECT_EQ(MessagesIn(pairwise), Texts({"222111 helpMessage", "222119 warning"}));
    EXPECT_FALSE(pairwise.Sub("PairwiseResult").Exists());
    const Table stepwise = Result(kAllAlike, "stepWise");
    EXPECT_EQ(MessagesIn(stepwise), Texts({"222111 helpMessage", "222117 warning"}));
    EXPECT_FALSE(stepwise.Sub("StepwiseResult").Exists());
    // With two groups the lack of significance is told, not the lack of groups.
    EXPECT_EQ(MessagesIn(Result({{1, 3}, {2, 4}}, "pairWise")), Texts({"222111 helpMessage", "222119 warning"}));
}

TEST(KruskalWallis, SignificanceExactlyAtTheLevelIsNone) {
    const Table test = Result({{4, 4}, {4}, {4, 4, 4}}, "pairWise", {{"sigLevel", 1.0}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(MessagesIn(test), Texts({"222111 helpMessage", "222119 warning"}));
}

// ---- Step by step ----

TEST(KruskalWallis, SubsetsUnderTies) {
    // In order of the mean ranks 1, 0, 3, 2. The first three hold together; the last one is alone.
    const Table test = Result(kTied, "stepWise");
    const Table stepwise = test.Sub("StepwiseResult");
    EXPECT_EQ(stepwise.ChildNames(),
              Texts({"Attribute fieldIndex", "SimpleTable StepwiseInfo", "SimpleTable Content"}));
    EXPECT_EQ(stepwise.Row("fieldIndex"), "1");
    EXPECT_EQ(stepwise.SimpleRows("StepwiseInfo")[0], "1;0;3;2");
    ASSERT_EQ(Subsets(test).size(), 2U);
    ExpectRow(Subsets(test)[0], "0", "2",
              {4.5942539109506626, kEmpty, kEmpty, 0.10054730602891247, 0.10054730602891247});
    EXPECT_EQ(Subsets(test)[1], "3;3;__MISSING__;;;__MISSING__;__MISSING__;");
    EXPECT_EQ(MessagesIn(test), Texts({"222111 helpMessage", "220013 warning 3;3"}));
}

// A negative weight keeps the subsets from being ranked in one walk; each is ranked by itself then. The numbers are
// those of the samples without what is counted too often and taken back.
TEST(KruskalWallis, SubsetsOfWhatIsTakenBackAreThoseOfTheRest) {
    Rows rows = RowsOf(kTied);
    for (auto& row : rows) row.push_back(1);
    rows.push_back({3.4, 0, 2});
    rows.push_back({3.4, 0, -2});
    harness::Fields fields = Categories(kTied.size());
    fields.Weight("w");
    const Table test = groups::ResultOf(kTest, Comparing("stepWise"), fields, rows);
    ASSERT_EQ(Subsets(test).size(), 2U);
    ExpectRow(Subsets(test)[0], "0", "2",
              {4.5942539109506626, kEmpty, kEmpty, 0.10054730602891247, 0.10054730602891247});
    EXPECT_EQ(Subsets(test)[1], "3;3;__MISSING__;;;__MISSING__;__MISSING__;");
}

// What is found is shown in the order in which it was found, and never cut short behind a subset.
TEST(KruskalWallis, SubsetsStandInTheOrderInWhichTheyAreFound) {
    const Table test =
        Result({{1, 3, 5, 7}, {2, 4, 6, 8}, {51, 53, 55, 57}, {52, 54, 56, 58}, {101, 102, 103, 104}}, "stepWise");
    // kruskal of {1 3 5 7}, {2 4 6 8}: 1/3, 0.5637; of five groups two are adjusted by the power 5/2.
    const double sig = 0.56370286165077377;
    const double adjusted = 1 - std::pow(1 - sig, 2.5);
    ASSERT_EQ(Subsets(test).size(), 3U);
    ExpectRow(Subsets(test)[0], "2", "3", {1.0 / 3, kEmpty, kEmpty, sig, adjusted});
    ExpectRow(Subsets(test)[1], "0", "1", {1.0 / 3, kEmpty, kEmpty, sig, adjusted});
    EXPECT_EQ(Subsets(test)[2].substr(0, 4), "4;4;");
}

TEST(KruskalWallis, ThreeGroupsApartAreAlone) {
    const Table test = Result(kApart, "stepWise");
    EXPECT_EQ(Subsets(test),
              Texts({"0;0;__MISSING__;;;__MISSING__;__MISSING__;", "1;1;__MISSING__;;;__MISSING__;__MISSING__;",
                     "2;2;__MISSING__;;;__MISSING__;__MISSING__;"}));
    EXPECT_EQ(MessagesIn(test),
              Texts({"222111 helpMessage", "220013 warning 0;0", "220013 warning 1;1", "220013 warning 2;2"}));
}

// Two neighbours out of four: kruskal gives 0.0495, below the level; adjusted 0.0966, above it. They are apart.
TEST(KruskalWallis, StepsAreDecidedByThePlainSignificance) {
    const Table test = Result(kFourApart, "stepWise");
    ASSERT_EQ(Subsets(test).size(), 4U);
    for (int position = 0; position < 4; ++position) {
        const std::string place = std::to_string(position);
        EXPECT_EQ(Subsets(test)[static_cast<std::size_t>(position)],
                  place + ";" + place + ";__MISSING__;;;__MISSING__;__MISSING__;");
    }
}

// Two of three groups are one less than all, unless the field has a fourth category.
TEST(KruskalWallis, AdjustmentOfASubsetUsesEveryCategory) {
    const double sig = 0.56370286165077377;
    const Samples three{{1, 3, 5, 7}, {2, 4, 6, 8}, {101, 102, 103, 104}};
    ExpectRow(Subsets(Result(three, "stepWise"))[0], "0", "1", {1.0 / 3, kEmpty, kEmpty, sig, sig});
    const Table test = Result({three[0], {}, three[1], three[2]}, "stepWise");
    ExpectRow(Subsets(test)[0], "0", "1", {1.0 / 3, kEmpty, kEmpty, sig, 1 - (1 - sig) * (1 - sig)});
    EXPECT_EQ(test.Sub("StepwiseResult").SimpleRows("StepwiseInfo"), Texts({"0;2;3", "4;5;10.5"}));
    EXPECT_EQ(MessagesIn(test), Texts({"222111 helpMessage", "220013 warning 2;2"}));
}

TEST(KruskalWallis, EqualMeanRanksAreOrderedByTheirMedians) {
    // Both have the rank sum 18 in the lower eight; their medians are 5 and 4.
    const Samples samples{{1, 4, 6, 7}, {2, 3, 5, 8}, {101, 102, 103, 104, 105, 106}};
    EXPECT_EQ(Result(samples, "stepWise").Sub("StepwiseResult").SimpleRows("StepwiseInfo"),
              Texts({"1;0;2", "4.5;4.5;11.5"}));
    EXPECT_EQ(Result({samples[1], samples[0], samples[2]}, "stepWise").Sub("StepwiseResult").SimpleRows("StepwiseInfo"),
              Texts({"0;1;2", "4.5;4.5;11.5"}));
    // Equal in both they keep the order of the categories.
    EXPECT_EQ(
        Result({samples[2], {1, 2, 3}, {1, 2, 3}}, "stepWise").Sub("StepwiseResult").SimpleRows("StepwiseInfo")[0],
        "1;2;0");
}

// The tables of pairs name their rows across, those of subsets along the side.
TEST(KruskalWallis, NamesOfTheTablesOfGroupsStandOnDifferentSides) {
    const std::string pairs = TextOf(Result(kApart, "pairWise").Sub("PairwiseResult"), "PairwiseInfo");
    EXPECT_NE(pairs.find("<ColumnNames>IndexOrder;Value</ColumnNames>"), std::string::npos) << pairs;
    const std::string steps = TextOf(Result(kApart, "stepWise").Sub("StepwiseResult"), "StepwiseInfo");
    EXPECT_NE(steps.find("<RowNames>IndexOrder;Value</RowNames>"), std::string::npos) << steps;
}

// ---- Passes ----

/// The test in the hand of a worker, with the codes that it raises, the repeated ones too.
class Driven : public TARNKruskalWOneWay {
 public:
    explicit Driven(int categories, const char* comparison) : TARNKruskalWOneWay(Settings(categories, comparison)) {}

    void AddStatusMessage(const QKStatus& raised, MessageKind kind) override {
        codes.push_back(raised.GetErrorCode());
        TARNTest::AddStatusMessage(raised, kind);
    }

    /// Runs one pass; false where it fails to begin.
    bool Pass(Rows rows) {
        if (BeginPass().IsError()) return false;
        std::sort(rows.begin(), rows.end());
        for (std::vector<double>& row : rows) {
            Record record = Record::View(row.data(), row.size());
            EXPECT_FALSE(ProcessRecord(record).IsError());
        }
        static_cast<void>(EndPass());
        remaining.push_back(GetPassKind());
        return true;
    }
    int PassesOver(const Rows& rows) {
        int passes = 0;
        do {
            Pass(rows);
            ++passes;
        } while (NeedsAnotherPass() && passes < 100);
        return passes;
    }

    std::vector<long> codes;
    std::vector<int> remaining;  // what progress is told after each pass

 private:
    static std::unique_ptr<QKSettings> Settings(int categories, const char* comparison) {
        auto settings = std::make_unique<QKSettings>();
        settings->AddSetting("variableIndex", 0);
        settings->AddSetting("groupVariableIndex", 1);
        if (categories > 0) settings->AddSetting("numberOfCategories", categories);
        settings->AddSetting("typeOfMultipleComparison", comparison);
        return settings;
    }
};

TEST(KruskalWallis, MakesThreePassesAndOneForEachStep) {
    Driven plain(3, "none");
    EXPECT_EQ(plain.PassesOver(RowsOf(kApart)), 3);
    EXPECT_EQ(plain.remaining, (std::vector<int>{2, 1, 0}));
    Driven pairs(3, "pairWise");
    EXPECT_EQ(pairs.PassesOver(RowsOf(kApart)), 3);
    Driven steps(4, "stepWise");
    EXPECT_EQ(steps.PassesOver(RowsOf(kFourApart)), 4);  // the first step goes with the third pass
    EXPECT_EQ(steps.remaining, (std::vector<int>{4, 3, 2, 1}));
}

TEST(KruskalWallis, EndsAfterThreePassesWhereNothingIsCompared) {
    Driven refused(3, "stepWise");
    EXPECT_EQ(refused.PassesOver(RowsOf(kAllAlike)), 3);
    EXPECT_EQ(refused.codes, (std::vector<long>{222111, 222117}));
    EXPECT_EQ(refused.remaining, (std::vector<int>{2, 1, 0}));
}

TEST(KruskalWallis, RemarkIsRaisedAtEachComputation) {
    // All four groups; 0 to 2, 1 to 3 and 2 to 3; 0 to 1 and 1 to 2.
    Driven apart(4, "stepWise");
    apart.PassesOver(RowsOf(kFourApart));
    EXPECT_EQ(std::count(apart.codes.begin(), apart.codes.end(), 222111), 6);
}

TEST(KruskalWallis, SubsetInsideAFoundOneIsNotComputed) {
    // 0 to 2 holds in the first step. 1 to 3 and 2 to 3 don't, and what is left of them, 1 to 2, lies inside.
    Driven alike(4, "stepWise");
    EXPECT_EQ(alike.PassesOver(RowsOf(kThreeAlike)), 4);
    EXPECT_EQ(std::count(alike.codes.begin(), alike.codes.end(), 222111), 4);
}

// The group field first: the other tests of groups name the test field first.
TEST(KruskalWallis, UsesTheGroupFieldAndThenTheTestField) {
    Driven test(3, "none");
    EXPECT_TRUE(test.BeginPass().IsOK());
    std::vector<int> used;
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{1, 0}));
}

TEST(KruskalWallis, ExhaustedMemoryOfTheBoxesIsAnErrorOfTheTest) {
    for (long failures = 0; failures < 3; ++failures) {
        Driven test(3, "stepWise");
        ASSERT_TRUE(test.Pass(RowsOf(kApart)));
        long code = 0;
        {
            const component_test::AllocationFailure failure(failures);
            code = test.BeginPass().GetErrorCode();
        }
        EXPECT_EQ(code, 220002) << failures;
        EXPECT_FALSE(test.NeedsAnotherPass());
    }
}

TEST(KruskalWallis, NoCategoryAtAll) {
    Driven none(0, "none");
    EXPECT_EQ(none.PassesOver(RowsOf(kApart)), 1);
    EXPECT_EQ(none.codes, (std::vector<long>{222112}));
}

}  // namespace
