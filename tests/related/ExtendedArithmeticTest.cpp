// The tests of related samples beyond the widths of their definition: just below a limit both arithmetics say the same,
// above it the extended one is right and the other one wraps around. References: whole numbers and fractions without
// rounding, square roots and tails by mpmath with 40 digits; a few from R, which are named.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "related/RankedRows.h"
#include "tests/harness/BothArithmetics.h"
#include "tests/related/PairRun.h"
#include "tests/related/RankedRun.h"

namespace {

using harness::BothArithmetics;
using harness::Fields;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

constexpr double kTwelveDigits = 1e-12;

/// What the extended element says of itself: nothing, "extended", "textbook" or both.
std::string MarkOf(const BothArithmetics& both) {
    return harness::WayOf(both.Extended());
}

/// A value with the weight of its record.
struct Weighted {
    double value;
    double weight;
};
using Sample = std::vector<Weighted>;

BothArithmetics PairTest(const std::string& test, const Sample& differences) {
    Fields fields;
    fields.Continuous("before").Continuous("after").Weight("w");
    Rows rows;
    for (const auto& [difference, weight] : differences) rows.push_back({0, difference, weight});
    return harness::RunBoth(test, pairs::Entry({"before", "after"}), fields, rows);
}

/// Rows of values, the last of which is the weight.
BothArithmetics RankedTest(const std::string& test, const Rows& rows, const std::string& comparison = "none") {
    const std::size_t count = rows.front().size() - 1;
    Fields fields = ranked::ContinuousFields(count);
    fields.Weight("w");
    return harness::RunBoth(test, ranked::Entry(ranked::Names(count), comparison), fields, rows);
}

/// 1 is the success, 0 the failure, the last value of a row its weight.
BothArithmetics CochranTest(const Rows& rows, const std::string& comparison = "none") {
    const std::size_t count = rows.front().size() - 1;
    Fields fields;
    for (const std::string& name : ranked::Names(count)) fields.Text(name, {"no", "yes"});
    fields.Weight("w");
    QKSettings entry = ranked::Entry(ranked::Names(count), comparison);
    entry.AddSetting("classFormation", "givenCategoryList");
    AddVecSetting(entry, "successCategoryList", Texts({"yes"}), false);
    return harness::RunBoth("RCochransQ", entry, fields, rows);
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}

void ExpectStatistics(const Table& test, const std::vector<std::pair<std::string, double>>& expected) {
    for (const auto& [row, value] : expected) {
        EXPECT_TRUE(harness::IsNear(Statistics(test), row, value, kTwelveDigits));
    }
}

/// Their statistics are equal to the letter, and nothing is marked.
void ExpectSame(const BothArithmetics& both) {
    EXPECT_EQ(MarkOf(both), "");
    for (const pugi::xml_node row : Statistics(both.Defined()).Node().children("Attribute")) {
        const std::string name = row.attribute("name").value();
        EXPECT_EQ(Statistics(both.Extended()).Row(name), row.attribute("value").value()) << name;
    }
}

/// The differences 1 .. 250, and the same below 0 with a little less weight: 1,000,001,500,000 in all.
Sample Mirrored() {
    Sample sample;
    for (int i = 1; i <= 250; ++i) {
        sample.push_back({double(i), 2e9 + 2000 * (i % 7)});
        sample.push_back({double(-i), 2e9});
    }
    return sample;
}

/// 500 differences that lie close together, with the weight divided among them.
Sample Irregular(std::int64_t total, bool hasZero) {
    Sample sample;
    for (std::int64_t a = 1; a <= 500; ++a) {
        const double difference = static_cast<double>(a * a * 7919 % 10007 - 4000) / 16;
        const std::int64_t weight = total / 500 + (a <= total % 500 ? 1 : 0);
        sample.push_back({hasZero && a == 1 ? 0 : difference, static_cast<double>(weight)});
    }
    return sample;
}

Sample Scaled(double scale) {
    Sample sample{{-5, 3}, {3, 5}, {3, 2}, {-2, 4}, {7, 1}, {1, 6}, {0, 7}, {-8, 2}, {4, 3}, {6, 4}, {-3, 8}};
    for (Weighted& each : sample) each.weight *= scale;
    return sample;
}

// ---- Sign test ----

TEST(ExtendedSign, CountsBeyond32Bits) {
    const BothArithmetics below = PairTest("RSign", Scaled(47721858));
    EXPECT_EQ(Statistics(below.Extended()).Row("TotalN"), "2147483610");
    EXPECT_EQ(Statistics(below.Defined()).Row("StandardTestStatistic"),
              Statistics(below.Extended()).Row("StandardTestStatistic"));
    EXPECT_EQ(MarkOf(below), "");

    const BothArithmetics above = PairTest("RSign", Scaled(47721859));
    EXPECT_EQ(MarkOf(above), "extended");
    EXPECT_EQ(Statistics(above.Extended()).Row("TotalN"), "2147483655");
    EXPECT_EQ(Statistics(above.Defined()).Row("TotalN"), "-2147483641");  // 2^32 less
    ExpectStatistics(above.Extended(), {{"TestStatistic", 1002159039},
                                        {"StandardError", 21292.1971740823403},
                                        {"StandardTestStatistic", 4482.56780263981712}});
    EXPECT_EQ(above.Extended().Sub("ContinuousDistribution").Row("Ties"), "334053013");
}

TEST(ExtendedSign, IsRightForAMillionMillionCases) {
    const BothArithmetics both = PairTest("RSign", Mirrored());
    EXPECT_EQ(MarkOf(both), "extended");
    EXPECT_EQ(Statistics(both.Extended()).Row("TotalN"), "1000001500000");
    ExpectStatistics(both.Extended(), {{"TestStatistic", 500001500000},
                                       {"StandardError", 500000.374999859375},
                                       {"StandardTestStatistic", 1.49999787500201562},
                                       {"AsymptoticSig2Tailed", 0.133614952987852873}});
}

TEST(ExtendedSign, KeepsTheDigitsOfTails) {
    const BothArithmetics far = PairTest("RSign", {{1, 6825}, {-1, 3175}});
    EXPECT_EQ(MarkOf(far), "");
    EXPECT_EQ(Statistics(far.Defined()).Row("AsymptoticSig2Tailed"), "0");
    ExpectStatistics(far.Extended(), {{"AsymptoticSig2Tailed", 1.59780824253107913e-291}});
    // Twice 1 + 25 of 2^25, and twice 1.
    ExpectStatistics(PairTest("RSign", {{1, 24}, {-1, 1}}).Extended(), {{"ExactSig2Tailed", 1.54972076416015625e-6}});
    ExpectStatistics(PairTest("RSign", {{1, 25}}).Extended(), {{"ExactSig2Tailed", 5.9604644775390625e-8}});
}

// ---- Wilcoxon test ----

TEST(ExtendedWilcoxonPairs, ProductIsNotBoundBy32Bits) {
    const auto run = [](double n) {
        return PairTest("RWilcoxonSignedRanks", {{2, 20000}, {-1, 16000}, {-3, n - 36000}, {0, 5000}});
    };
    const BothArithmetics below = run(46340);
    EXPECT_EQ(MarkOf(below), "");
    EXPECT_EQ(Statistics(below.Defined()).Row("StandardError"), Statistics(below.Extended()).Row("StandardError"));
    EXPECT_EQ(Statistics(below.Defined()).Row("StandardTestStatistic"),
              Statistics(below.Extended()).Row("StandardTestStatistic"));
    ExpectStatistics(below.Extended(), {{"StandardError", 2831565.47405251606},
                                        {"StandardTestStatistic", -5.95094309293286711},
                                        {"AsymptoticSig2Tailed", 2.66601777194956872e-9}});

    const BothArithmetics above = run(46341);
    EXPECT_EQ(MarkOf(above), "extended");
    EXPECT_EQ(Statistics(above.Defined()).Row("StandardError"), "nan");  // of a negative product
    ExpectStatistics(above.Extended(), {{"TestStatistic", 520010000},
                                        {"StandardError", 2831659.09371966067},
                                        {"StandardTestStatistic", -5.95892900293827608},
                                        {"AsymptoticSig2Tailed", 2.53896365319178243e-9}});
}

TEST(ExtendedWilcoxonPairs, IsRightForAMillionMillionCases) {
    const BothArithmetics both = PairTest("RWilcoxonSignedRanks", Mirrored());
    EXPECT_EQ(MarkOf(both), "extended");
    ExpectStatistics(both.Extended(), {{"TotalN", 1000001500000},
                                       {"TestStatistic", 2.50001126021375001e+23},
                                       {"StandardError", 288675206762180214.0},
                                       {"StandardTestStatistic", 1.30257311224566874},
                                       {"AsymptoticSig2Tailed", 0.192720542253311305}});
}

TEST(ExtendedWilcoxonPairs, KeepsTheDigitsOfTails) {
    const Sample sample{{1, 600}, {2, 500}, {3, 700}, {-1, 50}, {-2, 30}, {-3, 12}};
    ExpectStatistics(
        PairTest("RWilcoxonSignedRanks", sample).Extended(),
        {{"StandardTestStatistic", 35.5768274638360529}, {"AsymptoticSig2Tailed", 3.19782273663999922e-277}});
}

// ---- Hodges-Lehmann estimate ----

std::vector<std::string> EstimateOf(const Table& test) {
    const Table interval = Statistics(test).Sub("Asymptotic");
    return {Statistics(test).Row("Estimate"), interval.Row("Lower"), interval.Row("Upper")};
}

TEST(ExtendedHodgesLehmannPairs, IntervalIsNotBoundBy32Bits) {
    const auto run = [](std::int64_t n, bool hasZero) {
        return PairTest("RHodgesLehmannEstimatePairs", Irregular(n, hasZero));
    };
    EXPECT_EQ(EstimateOf(run(46340, false).Extended()), Texts({"46.59375", "44.90625", "48.28125"}));
    EXPECT_EQ(EstimateOf(run(46340, false).Defined()), Texts({"46.59375", "44.90625", "48.28125"}));
    EXPECT_EQ(EstimateOf(run(46340, true).Extended()), Texts({"46.125", "44.4375", "47.71875"}));
    EXPECT_EQ(MarkOf(run(46340, true)), "");
    // As defined both positions are below 0 and in front of all averages.
    EXPECT_EQ(EstimateOf(run(46341, false).Extended()), Texts({"46.59375", "44.90625", "48.28125"}));
    EXPECT_EQ(EstimateOf(run(46341, false).Defined())[1], "-249.8125");  // the smallest difference
    EXPECT_EQ(EstimateOf(run(46341, true).Extended()), Texts({"46.125", "44.4375", "47.71875"}));
    EXPECT_EQ(MarkOf(run(46341, true)), "extended");

    EXPECT_EQ(EstimateOf(run(1'000'000, false).Extended()), Texts({"46.59375", "46.28125", "46.9375"}));
    EXPECT_EQ(EstimateOf(run(1'000'000, true).Extended()), Texts({"46.125", "45.75", "46.46875"}));
    EXPECT_EQ(EstimateOf(run(1'000'000'000'000, false).Extended()), Texts({"46.59375", "46.59375", "46.59375"}));
    EXPECT_EQ(EstimateOf(run(1'000'000'000'000, true).Extended()), Texts({"46.125", "46.125", "46.125"}));
}

TEST(ExtendedHodgesLehmannPairs, ZerosCostNoDigits) {
    // With the smallest one moved to 1, a difference has seven digits behind the point. The averages and their weights:
    // four near -1e9 and -5e8 with 7 in all, 0 1, 0.0625 1, 0.125 1, 0.15 4, 0.2125 4, 0.3 10. Of these 28 the
    // fourteenth is 0.15 and the fifteenth 0.2125.
    const Sample sample{{-1e9, 1}, {0, 1}, {0.125, 1}, {0.3, 4}};
    const BothArithmetics both = PairTest("RHodgesLehmannEstimatePairs", sample);
    EXPECT_EQ(MarkOf(both), "");
    EXPECT_TRUE(harness::IsNear(Number(Statistics(both.Extended()), "Estimate"), (0.15 + 0.2125) / 2, kTwelveDigits));
    EXPECT_FALSE(harness::IsNear(Number(Statistics(both.Defined()), "Estimate"), (0.15 + 0.2125) / 2, kTwelveDigits));
    EXPECT_TRUE(harness::IsNear(Number(Statistics(both.Defined()), "Estimate"), (0.15 + 0.2125) / 2, 1e-5));
}

// ---- McNemar test ----

BothArithmetics McNemarTest(double toSuccess, double toFailure, double bothSucceed, double bothFail) {
    Fields fields;
    fields.Text("before", {"no", "yes"}).Text("after", {"yes", "no"}).Weight("w");
    QKSettings entry = pairs::Entry({"before", "after"});
    entry.AddSetting("classFormation", "givenCategoryList");
    AddVecSetting(entry, "categoriesList", Texts({"yes"}), false);
    Rows rows;
    constexpr double kMost = 2147483647;
    const auto add = [&](double before, double after, double weight) {
        for (; weight > kMost; weight -= kMost) rows.push_back({before, after, kMost});
        rows.push_back({before, after, weight});
    };
    add(0, 0, toSuccess);
    add(1, 1, toFailure);
    add(1, 0, bothSucceed);
    add(0, 1, bothFail);
    return harness::RunBoth("RMcNemar", entry, fields, rows);
}

TEST(ExtendedMcNemar, CountsBeyond32Bits) {
    const BothArithmetics below = McNemarTest(1000, 900, 2147480000, 1747);
    EXPECT_EQ(Statistics(below.Defined()).Row("TotalN"), "2147483647");
    EXPECT_EQ(MarkOf(below), "textbook");  // of the list of failures alone
    const BothArithmetics above = McNemarTest(1000, 900, 2147480000, 1748);
    EXPECT_EQ(MarkOf(above), "extended textbook");
    EXPECT_EQ(Statistics(above.Defined()).Row("TotalN"), "-2147483648");
    EXPECT_EQ(Statistics(above.Extended()).Row("TotalN"), "2147483648");
    EXPECT_EQ(Statistics(above.Extended()).Row("TestStatistic"), Statistics(above.Defined()).Row("TestStatistic"));

    const BothArithmetics many = McNemarTest(500'000'750'000, 500'000'000'000, 10, 3);
    ExpectStatistics(many.Extended(), {{"TotalN", 1'000'000'750'013},
                                       {"TestStatistic", 0.562498078127441404},
                                       {"AsymptoticSig2Tailed", 0.453255476418455921}});
    EXPECT_EQ(many.Extended().Sub("CategoryFieldsComparison").SimpleRows("Content"),
              Texts({"10;500000000000", "500000750000;3"}));
}

TEST(ExtendedMcNemar, KeepsTheDigitsOfTails) {
    ExpectStatistics(McNemarTest(1500, 30, 10, 10).Extended(),
                     {{"TestStatistic", 1410.43202614379085}, {"AsymptoticSig2Tailed", 1.13640616767658393e-308}});
}

TEST(ExtendedMcNemar, TheSecondFieldHasFailuresOfItsOwn) {
    // "no" is category 0 of the first field and 1 of the second.
    const BothArithmetics both = McNemarTest(7, 5, 3, 2);
    EXPECT_EQ(both.Defined().Sub("CategoryFieldsComparison").Row("ColumnFailList"), "0");
    EXPECT_EQ(both.Extended().Sub("CategoryFieldsComparison").Row("ColumnFailList"), "1");
    EXPECT_EQ(both.Extended().Sub("CategoryFieldsComparison").Row("RowFailList"), "0");
    EXPECT_EQ(MarkOf(both), "textbook");

    Fields fields;
    fields.Text("before", {"no", "yes"}).Text("after", {"no", "yes"});
    QKSettings entry = pairs::Entry({"before", "after"});
    entry.AddSetting("classFormation", "givenCategoryList");
    AddVecSetting(entry, "categoriesList", Texts({"yes"}), false);
    EXPECT_EQ(MarkOf(harness::RunBoth("RMcNemar", entry, fields, {{0, 1}, {1, 1}, {1, 0}})), "");
}

// ---- Marginal homogeneity ----

TEST(ExtendedMarginalHomogeneity, IsRightForManyCases) {
    const auto run = [](double scale) {
        Fields fields;
        fields.Numeric("before", {1, 2, 3, 10}).Numeric("after", {1, 2, 3, 10}).Weight("w");
        Rows rows;
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                for (int copy = 0; copy < 20; ++copy) {
                    rows.push_back({double(i), double(j), scale * (2000000 + i * 3 + j * 7)});
                }
            }
        }
        return harness::RunBoth("RMarginalHomogeneity", pairs::Entry({"before", "after"}), fields, rows);
    };
    ExpectSame(run(1));
    const BothArithmetics both = run(1000);
    EXPECT_EQ(MarkOf(both), "extended");
    EXPECT_EQ(Statistics(both.Defined()).Row("TotalN"), "54672896");  // 640,004,800,000 - 149 * 2^32
    ExpectStatistics(both.Extended(), {{"TotalN", 640004800000},
                                       {"TestStatistic", 1920014960000},
                                       {"StandardError", 2000009.44997767448},
                                       {"StandardTestStatistic", -1.11999470803750675},
                                       {"AsymptoticSig2Tailed", 0.262716017200010856}});
}

// ---- Friedman test and Kendall's W ----

/// All orders of 1, 2, 3 with so many cases, one order with `more` and another with as many less; `n` in all.
Rows AlmostBalanced(double n, double more) {
    const double each = std::floor(n / 6);
    Rows rows{{1, 2, 3, each + more}, {1, 3, 2, 0}, {2, 1, 3, each}, {2, 3, 1, each}, {3, 1, 2, each}, {3, 2, 1, each}};
    rows[1][3] = n - 5 * each - more;
    return rows;
}

TEST(ExtendedFriedman, ProductsAreNotBoundBy32Bits) {
    // 12 * 178,956,970 = 2^31 - 8.
    const BothArithmetics below = RankedTest("RFriedmansTwoWayByRanks", AlmostBalanced(178956970, 9000));
    EXPECT_EQ(MarkOf(below), "");
    ExpectStatistics(below.Extended(),
                     {{"TestStatistic", 0.904843393358749872}, {"AsymptoticSig2Tailed", 0.636085877857678187}});
    EXPECT_TRUE(harness::IsNear(Number(Statistics(below.Defined()), "TestStatistic"), 0.904843393358749872, 1e-6));
    const BothArithmetics above = RankedTest("RFriedmansTwoWayByRanks", AlmostBalanced(178956971, 9000));
    EXPECT_EQ(MarkOf(above), "extended");
    ExpectStatistics(above.Extended(),
                     {{"TestStatistic", 0.904742906047510158}, {"AsymptoticSig2Tailed", 0.636117837940358893}});
    EXPECT_LT(Number(Statistics(above.Defined()), "TestStatistic"), -1e9);  // of a negative product
    const BothArithmetics w = RankedTest("RKendallsCoefficient", AlmostBalanced(178956971, 9000));
    EXPECT_EQ(MarkOf(w), "extended");
    ExpectStatistics(w.Extended(), {{"KendallsW", 2.52782247316733518e-9}});
}

TEST(ExtendedFriedman, ProductBesideTiesIsNotBoundBy32Bits) {
    const auto run = [](double n) {
        Rows rows(2);
        for (int i = 1; i <= 40; ++i) {
            rows[0].push_back(i);
            rows[1].push_back(i == 2 ? 1 : i);
        }
        rows[0].push_back(n - 20000);
        rows[1].push_back(20000);
        return RankedTest("RFriedmansTwoWayByRanks", rows);
    };
    const BothArithmetics below = run(33575);
    EXPECT_EQ(MarkOf(below), "");
    ExpectStatistics(below.Defined(), {{"TestStatistic", 1309395.41405238209}});
    ExpectStatistics(below.Extended(), {{"TestStatistic", 1309395.41405238209}});
    const BothArithmetics above = run(33576);
    EXPECT_EQ(MarkOf(above), "extended");
    ExpectStatistics(above.Extended(), {{"TestStatistic", 1309434.41275421615}});
    EXPECT_FALSE(harness::IsNear(Number(Statistics(above.Defined()), "TestStatistic"), 1309434.41275421615, 1e-6));
}

TEST(ExtendedFriedman, IsRightForAMillionMillionCases) {
    Rows rows;
    std::vector<double> order{1, 2, 3, 4};
    double weight = 2e9;
    do {
        for (int copy = 0; copy < 20; ++copy) {
            rows.push_back(order);
            rows.back().push_back(weight);
        }
        weight += 1000;
    } while (std::next_permutation(order.begin(), order.end()));
    const BothArithmetics both = RankedTest("RFriedmansTwoWayByRanks", rows);
    EXPECT_EQ(MarkOf(both), "extended");
    ExpectStatistics(both.Extended(), {{"TotalN", 960005520000},
                                       {"TestStatistic", 11.4499341628785634},
                                       {"AsymptoticSig2Tailed", 9.52585866243291667e-3}});
    rows.insert(rows.end(), {{1, 1, 2, 3, 2e9}, {2, 3, 1, 1, 2000000500}, {3, 2, 3, 1, 2e9}, {1, 3, 2, 3, 2000000700}});
    ExpectStatistics(
        RankedTest("RKendallsCoefficient", rows).Extended(),
        {{"TotalN", 968005521200}, {"TestStatistic", 4952842.27027264417}, {"KendallsW", 1.70551446997698666e-6}});
}

TEST(ExtendedFriedman, IsRightWhereTheCubesOfTiesAreRounded) {
    // 14 fields: 14^3 times the weight is beyond 2^51, and the rows are taken one by one.
    Rows rows;
    for (int copy = 0; copy < 12; ++copy) {
        for (int i = 0; i < 35; ++i) {
            std::vector<double> row;
            for (int j = 0; j < 14; ++j) row.push_back((j * (i % 13 + 1) + i * 5) % 29 / 2);
            std::vector<double> turned;
            for (const double value : row) turned.push_back(20 - value);
            row.push_back(2e9 + i * i % 17 * 1000);
            turned.push_back(2e9);
            rows.push_back(row);
            rows.push_back(turned);
        }
    }
    ExpectStatistics(RankedTest("RFriedmansTwoWayByRanks", rows).Extended(),
                     {{"TotalN", 1680003264000},
                      {"TestStatistic", 1.86753190757406965},
                      {"AsymptoticSig2Tailed", 0.999846659135879362}});
}

TEST(ExtendedFriedman, SumsOfRanksKeepAllTheirDigits) {
    // 2^53 rows, the sums 15,000,000.5, -5,000,000.5 and -10,000,000 beside what is expected: the first two are beyond
    // the digits of a double.
    constexpr std::int64_t n = std::int64_t{1} << 53;
    Arithmetic extended;
    extended.Extend(true);
    const RankSums ranks{{2.0 * n, 2.0 * n, 2.0 * n}, {4 * n + 30'000'001, 4 * n - 10'000'001, 4 * n - 20'000'000}};
    EXPECT_TRUE(harness::IsNear(FriedmanChiSquare(ranks, n, 0, extended), 0.0388578080823265837, kTwelveDigits));
}

TEST(ExtendedFriedman, KeepsTheDigitsOfTails) {
    const Rows rows{{1, 2, 3, 640}, {2, 1, 3, 30}, {1, 1, 2, 20}};
    ExpectStatistics(RankedTest("RFriedmansTwoWayByRanks", rows).Extended(),
                     {{"TestStatistic", 1314.16058394160584}, {"AsymptoticSig2Tailed", 4.30184768887464032e-286}});
}

TEST(ExtendedFriedman, SubsetsAreCorrectedForTheirTies) {
    Rows rows = ranked::FirstBase();
    for (auto& row : rows) row.push_back(1);
    const BothArithmetics both = RankedTest("RFriedmansTwoWayByRanks", rows, "stepWise");
    EXPECT_EQ(MarkOf(both), "textbook");
    // R: friedman.test(x[, 1:2]).
    ranked::ExpectNumbers(ranked::RowsOf(both.Extended(), "StepwiseResult", "Content")[1],
                          {1, 2, 2, 0, 0, 0.157299207050284, 0.157299207050284});
    EXPECT_TRUE(MarkOf(RankedTest("RFriedmansTwoWayByRanks", rows)).empty());
    EXPECT_TRUE(MarkOf(RankedTest("RFriedmansTwoWayByRanks", Rows(9, {3, 1, 2, 1}), "stepWise")).empty());
}

// ---- Cochran's Q ----

TEST(ExtendedCochransQ, StandardErrorOfPairsIsNotBoundBy32Bits) {
    const auto run = [](double n) {
        return CochranTest({{1, 0, 0, 21000}, {0, 1, 0, 20000}, {0, 1, 1, 500}, {1, 1, 1, 4000}, {0, 0, 0, n - 45500}},
                           "pairWise");
    };
    const auto firstPair = [](const Table& test) {
        return ranked::NumbersOf(ranked::RowsOf(test, "PairwiseResult", "Content")[0]);
    };
    const BothArithmetics below = run(65535);
    EXPECT_EQ(MarkOf(below), "");
    EXPECT_EQ(ranked::RowsOf(below.Defined(), "PairwiseResult", "Content")[0].substr(0, 40),
              ranked::RowsOf(below.Extended(), "PairwiseResult", "Content")[0].substr(0, 40));
    EXPECT_TRUE(harness::IsNear(firstPair(below.Defined())[3], 2.53807887894502153e-3, kTwelveDigits));

    const BothArithmetics above = run(65536);
    EXPECT_EQ(MarkOf(above), "extended");
    EXPECT_EQ(firstPair(above.Defined())[4], 0);  // over an infinite standard error
    const std::vector<double> pair = firstPair(above.Extended());
    EXPECT_TRUE(harness::IsNear(pair[3], 2.53804015093478372e-3, kTwelveDigits));
    EXPECT_TRUE(harness::IsNear(pair[4], 3.00601806021075878, kTwelveDigits));
    EXPECT_TRUE(harness::IsNear(pair[6], 7.9407982809901003e-3, kTwelveDigits));
    ExpectStatistics(above.Defined(), {{"TestStatistic", 19771.0843373493976}});
    ExpectStatistics(above.Extended(), {{"TestStatistic", 19771.0843373493976}});
}

TEST(ExtendedCochransQ, SumsOfSquaresAreNotBoundBy32Bits) {
    // The sum of (Ti - Tj)^2 is 2^32 - 175,946 and 2^32 + 9,416.
    const BothArithmetics below = CochranTest({{1, 0, 0, 46335}, {1, 1, 0, 10}});
    ExpectStatistics(below.Defined(), {{"TestStatistic", 92670.0043154601359}});
    ExpectSame(below);
    const BothArithmetics above = CochranTest({{1, 0, 0, 46336}, {1, 1, 0, 10}});
    EXPECT_EQ(MarkOf(above), "extended");
    ExpectStatistics(above.Defined(), {{"TestStatistic", 9416.0 * 2 / (3 * 46356 - 46376)}});
    ExpectStatistics(above.Extended(), {{"TestStatistic", 92672.004315367022}});
}

TEST(ExtendedCochransQ, IsRightForAMillionMillionCases) {
    Rows rows;
    for (int pattern = 0; pattern < 16; ++pattern) {
        for (int copy = 0; copy < 30; ++copy) {
            rows.push_back({double(pattern >> 3 & 1), double(pattern >> 2 & 1), double(pattern >> 1 & 1),
                            double(pattern & 1), 2e9 + 1000 * pattern});
        }
    }
    const BothArithmetics both = CochranTest(rows);
    EXPECT_EQ(MarkOf(both), "extended");
    ExpectStatistics(both.Extended(), {{"TotalN", 960003600000},
                                       {"TestStatistic", 1.72499353127425772},
                                       {"AsymptoticSig2Tailed", 0.631391532014869324}});
}

TEST(ExtendedCochransQ, KeepsTheDigitsOfTails) {
    const Rows rows{{1, 0, 0, 700}, {0, 1, 0, 30}, {1, 1, 1, 50}, {0, 0, 1, 3}};
    ExpectStatistics(CochranTest(rows).Extended(),
                     {{"TestStatistic", 1276.17735334242838}, {"AsymptoticSig2Tailed", 7.61392784375985736e-278}});
}

TEST(ExtendedCochransQ, SubsetsHaveTheSuccessesOfTheirFields) {
    // Siegel's interviews: 13, 13 and 3 successes of 18. The last two in order are the first two of the list.
    Rows rows{{1, 1, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0},
              {1, 1, 1}, {1, 1, 1}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {1, 1, 1}, {1, 1, 0}, {1, 1, 0}, {0, 0, 0}};
    for (auto& row : rows) row.push_back(1);
    const BothArithmetics both = CochranTest(rows, "stepWise");
    EXPECT_EQ(MarkOf(both), "textbook");
    const auto subsets = ranked::RowsOf(both.Extended(), "StepwiseResult", "Content");
    ASSERT_EQ(subsets.size(), 2U);
    EXPECT_EQ(subsets[0], "1;2;0;;;1;1");  // R: friedman.test(x[, 1:2])
    EXPECT_EQ(subsets[1], "0;0;__MISSING__;;;__MISSING__;__MISSING__");

    // Named in ascending order of their successes the two are the same.
    for (auto& row : rows) std::swap(row[0], row[2]);
    const BothArithmetics ascending = CochranTest(rows, "stepWise");
    EXPECT_EQ(MarkOf(ascending), "");
    EXPECT_EQ(ranked::RowsOf(ascending.Defined(), "StepwiseResult", "Content"), subsets);
    EXPECT_EQ(ranked::RowsOf(ascending.Extended(), "StepwiseResult", "Content"), subsets);
}

}  // namespace
