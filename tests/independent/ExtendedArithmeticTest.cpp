// The tests of independent groups with the extended arithmetic: right beyond every limit of the widths, in the
// textbook's form where they have another one, and as defined everywhere else. Expected numbers by mpmath from exact
// fractions of the definitions, and by hand. Large numbers of cases come from weights.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "independent/TARNKSmirnowTwoSample.h"
#include "tests/harness/BothArithmetics.h"
#include "tests/harness/DrivenTest.h"
#include "tests/independent/SeveralGroupsRun.h"

namespace {

using groups::Common;
using groups::Number;
using groups::Rows;
using harness::Fields;
using harness::IsNear;
using harness::Table;

struct Ways {
    Table defined;
    Table extended;

    /// What the extended element says of itself.
    std::string Said() const { return harness::WayOf(extended); }
};

std::string TextOf(const Table& table) {
    std::ostringstream text;
    table.Node().print(text, "", pugi::format_raw);
    return text.str();
}

Ways RunBoth(const std::string& test, const QKSettings& entry, Fields fields, const Rows& rows,
             const Common& common = {}) {
    const harness::BothArithmetics both = harness::RunBoth(test, entry, fields, rows, common);
    return {both.Defined(), both.Extended()};
}

void ExpectNumbers(const Table& table, const std::vector<std::pair<std::string, double>>& expected) {
    for (const auto& [row, value] : expected) EXPECT_TRUE(IsNear(Number(table, row), value)) << row;
}

/// The numbers of a row of pairs or subsets behind its two positions.
void ExpectCells(const std::string& row, const std::vector<double>& expected) {
    const std::vector<std::string> cells = harness::SplitValues(row);
    ASSERT_EQ(cells.size(), 2 + expected.size()) << row;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(IsNear(std::strtod(cells[2 + i].c_str(), nullptr), expected[i])) << row;
    }
}

/// Eight values, each of which every group has nearly as often as the others. The slope sets the groups apart.
Rows Balanced(int groupCount, double weight, int step, int slope) {
    Rows rows;
    for (int value = 0; value < 8; ++value) {
        for (int group = 0; group < groupCount; ++group) {
            const int more = step * ((value * (2 * group + 1) * 3 + group) % 7 - 3) + slope * (value - 4) * group;
            rows.push_back({static_cast<double>(value), static_cast<double>(group), weight + more});
        }
    }
    return rows;
}

Fields WeightedCategories(std::size_t count) {
    Fields fields = several::Categories(count);
    fields.Weight("w");
    return fields;
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}

// ---- Mann-Whitney ----

TEST(ExtendedMannWhitney, IsAsDefinedUpToTheLimitButForDigits) {
    const Ways ways =
        RunBoth("IMannWhitneyU", groups::Entry(), groups::WeightedFields(), Balanced(2, 134'000'000, 30'000, 9'000));
    EXPECT_EQ(ways.Said(), "");
    EXPECT_EQ(Statistics(ways.defined).Row("TotalN"), "2143814000");
    ExpectNumbers(Statistics(ways.extended), {{"TotalN", 2143814000},
                                              {"TestStatistic", 574585172210000000},
                                              {"WilcoxonW", 1149074265353952000},
                                              {"StandardError", 14214785853799.302652},
                                              {"StandardTestStatistic", 6.5329081250407655514},
                                              {"AsymptoticSig2Tailed", 6.4504717272930357218e-11}});
    EXPECT_TRUE(IsNear(Number(Statistics(ways.defined), "StandardTestStatistic"), 6.5329081250407655514, 1e-9));
}

TEST(ExtendedMannWhitney, IsRightBeyondTheLimit) {
    const Ways ways =
        RunBoth("IMannWhitneyU", groups::Entry(), groups::WeightedFields(), Balanced(2, 2'000'000'000, 30'000, 9'000));
    EXPECT_EQ(ways.Said(), "extended");
    EXPECT_EQ(Statistics(ways.extended).Row("TotalN"), "31999814000");
    EXPECT_EQ(ways.defined.Attribute("decision"), "unknown");  // two groups cut to the smallest number, 0 in all
    ExpectNumbers(Statistics(ways.extended), {{"TestStatistic", 1.2799989800621e20},
                                              {"WilcoxonW", 255998362018817952000.0},
                                              {"StandardError", 819748914036451.84205},
                                              {"StandardTestStatistic", 1.6907639232790353419},
                                              {"AsymptoticSig2Tailed", 0.090881900051276675371}});
}

TEST(ExtendedMannWhitney, KeepsTheDigitsOfTheFarthestTail) {
    const Ways ways = RunBoth("IMannWhitneyU", groups::Entry(), groups::WeightedFields(),
                              Balanced(2, 2'000'000'000, 30'000, 350'000));
    ExpectNumbers(Statistics(ways.extended), {{"StandardTestStatistic", 36.635600491455319981},
                                              {"AsymptoticSig2Tailed", 7.7589744212740837666e-294}});
}

TEST(ExtendedMannWhitney, OfThreeMillionCases) {
    const Ways ways =
        RunBoth("IMannWhitneyU", groups::Entry(), groups::WeightedFields(), Balanced(2, 187'500, 900, 60));
    EXPECT_EQ(ways.Said(), "");
    ExpectNumbers(Statistics(ways.extended), {{"TestStatistic", 1123692507000},
                                              {"StandardError", 742353439.56863038404},
                                              {"StandardTestStatistic", 3.023833231384217442},
                                              {"AsymptoticSig2Tailed", 0.0024959398347177886956}});
}

// All but two of 10^10 cases are tied. By hand: N^3 - N - (t^3 - t) with t = N - 2 is 6 N^2 - 12 N + 6 = 6 (N - 1)^2,
// so that the variance is 6 (N - 1)^2 / 12 n1 n2 / (N (N - 1)), with n1 = n2 = N / 2 it is N (N - 1) / 8.
TEST(ExtendedMannWhitney, OfCasesThatAreNearlyAllTied) {
    constexpr double kMost = 1'999'999'999;  // one half of the cases less the one apart, in two records of one value
    const Ways ways = RunBoth("IMannWhitneyU", groups::Entry(), groups::WeightedFields(),
                              {{1, 0, 1}, {2, 0, kMost}, {2, 0, 1}, {2, 1, kMost}, {2, 1, 1}, {3, 1, 1}});
    const double n = 2 * (kMost + 2);
    ExpectNumbers(Statistics(ways.extended), {{"TotalN", n}, {"StandardError", std::sqrt(n * (n - 1) / 8)}});
}

// The frequencies of U for two and two values are 1, 1, 2, 1, 1; R: 2 * pwilcox(1, 2, 2).
TEST(ExtendedMannWhitney, ExactSignificanceAboveTheMiddleIsTwiceTheUpperTail) {
    const Ways ways = RunBoth("IMannWhitneyU", groups::Entry(), groups::TwoFields(), groups::RowsOf({{1, 3}, {2, 4}}));
    EXPECT_EQ(Statistics(ways.defined).Row("TestStatistic"), "3");
    EXPECT_EQ(ways.Said(), "textbook");
    EXPECT_EQ(Statistics(ways.defined).Row("ExactSig2Tailed"), "1");
    EXPECT_EQ(Statistics(ways.extended).Row("ExactSig2Tailed"), "0.666666666666667");
    const Ways below = RunBoth("IMannWhitneyU", groups::Entry(), groups::TwoFields(), groups::RowsOf({{2, 4}, {1, 3}}));
    EXPECT_EQ(below.Said(), "");
    EXPECT_EQ(Statistics(below.defined).Row("ExactSig2Tailed"), "0.666666666666667");
}

// ---- Moses ----

/// An other case, a control case, then blocks of others, controls and others, a control case and an other one: the
/// span leaves out the first and the last case.
Rows WideSpan(double weight) {
    return {{0, 1, 1}, {1, 0, 1}, {2, 1, weight}, {3, 0, weight}, {4, 1, weight}, {5, 0, 1}, {6, 1, 1}};
}

// The chance that at most one of the three places outside s - 1 holds a control case.
TEST(ExtendedMoses, SpanIsRightBeyondTheLimit) {
    const Ways below = RunBoth("IMoses", groups::Entry(), groups::WeightedFields(), WideSpan(500'000'000));
    EXPECT_EQ(below.Said(), "");
    for (const Table& test : {below.defined, below.extended}) {
        EXPECT_EQ(Statistics(test).Sub("ObservedControlGroup").Row("TestStatistic"), "1500000002");
        EXPECT_TRUE(IsNear(Number(Statistics(test).Sub("ObservedControlGroup"), "ExactSig1Tailed"),
                           0.74074074029629629722, 1e-9));
    }
    const Ways beyond = RunBoth("IMoses", groups::Entry(), groups::WeightedFields(), WideSpan(2'000'000'000));
    EXPECT_EQ(beyond.Said(), "extended");
    EXPECT_EQ(Statistics(beyond.extended).Row("TotalN"), "6000000004");
    const Table observed = Statistics(beyond.extended).Sub("ObservedControlGroup");
    EXPECT_EQ(observed.Row("TestStatistic"), "6000000002");
    ExpectNumbers(observed, {{"ExactSig1Tailed", 0.74074074062962962969}});
    EXPECT_EQ(Statistics(beyond.defined).Row("TotalN"), "1705032708");  // less 2^32
}

// 1 / C(7, 3) for each of the five places of three control cases side by side among seven; of one case, which is what
// is left of three, every span is as narrow.
TEST(ExtendedMoses, NarrowestSpanHasTheChanceOfItsArrangements) {
    const Ways ways =
        RunBoth("IMoses", groups::Entry(), groups::TwoFields(), groups::RowsOf({{3, 4, 5}, {1, 2, 8, 9}}));
    EXPECT_EQ(ways.Said(), "textbook");
    EXPECT_EQ(Statistics(ways.defined).Sub("ObservedControlGroup").Row("ExactSig1Tailed"), "0");
    EXPECT_EQ(Statistics(ways.defined).Sub("TrimmedControlGroup").Row("ExactSig1Tailed"), "0");
    ExpectNumbers(Statistics(ways.extended).Sub("ObservedControlGroup"), {{"ExactSig1Tailed", 1.0 / 7}});
    EXPECT_EQ(Statistics(ways.extended).Sub("TrimmedControlGroup").Row("ExactSig1Tailed"), "1");
    EXPECT_EQ(ways.defined.Attribute("decision"), "reject");
    EXPECT_EQ(ways.extended.Attribute("decision"), "retain");
}

// By hand: the control cases have the ranks 2, 3, 4 and 5 of 6, and the one without weight has 6.5.
TEST(ExtendedMoses, ControlCaseWithoutWeightEndsNoSpan) {
    const Rows weighty{{1, 1, 1}, {2, 0, 1}, {3, 0, 1}, {4, 0, 1}, {5, 0, 1}, {6, 1, 1}};
    Rows all = weighty;
    all.push_back({7, 0, 0.5});
    const Ways ways = RunBoth("IMoses", groups::Entry(), groups::WeightedFields(), all);
    EXPECT_EQ(Statistics(ways.defined).Sub("ObservedControlGroup").Row("TestStatistic"), "6");
    const Table observed = Statistics(ways.extended).Sub("ObservedControlGroup");
    EXPECT_EQ(observed.Row("TestStatistic"), "4");
    ExpectNumbers(observed, {{"ExactSig1Tailed", 3.0 / 15}});  // 3 places of 4 cases side by side among C(6, 4)
    const Ways without = RunBoth("IMoses", groups::Entry(), groups::WeightedFields(), weighty);
    EXPECT_EQ(TextOf(ways.extended), TextOf(without.extended));
}

// ---- Kolmogorov-Smirnov ----

/// The first group has three quarters of its cases at the lower value, the second one a half of its.
Rows Quarters(double n1, double n2) {
    const double low1 = std::floor(n1 * 3 / 4);
    const double low2 = std::floor(n2 / 2);
    return {{1, 0, low1}, {1, 1, low2}, {2, 0, n1 - low1}, {2, 1, n2 - low2}};
}

// By hand: 65535 * 65537 = 2^32 - 1, the last number of pairs that is as defined.
TEST(ExtendedKolmogorovSmirnov, PairsAreRightBeyondTheLimit) {
    const auto statistic = [](double n1, double n2, double pairs) {
        const double difference = std::floor(n1 * 3 / 4) / n1 - std::floor(n2 / 2) / n2;
        return std::sqrt(pairs / (n1 + n2)) * difference;
    };
    const Ways below =
        RunBoth("IKolmogorovSmirnov", groups::Entry(), groups::WeightedFields(), Quarters(65'535, 65'537));
    EXPECT_EQ(below.Said(), "");
    ExpectNumbers(Statistics(below.extended), {{"TestStatistic", statistic(65'535, 65'537, 4294967295)}});
    EXPECT_EQ(Statistics(below.defined).Row("TestStatistic"), Statistics(below.extended).Row("TestStatistic"));

    const Ways beyond =
        RunBoth("IKolmogorovSmirnov", groups::Entry(), groups::WeightedFields(), Quarters(70'000, 70'000));
    EXPECT_EQ(beyond.Said(), "extended");
    ExpectNumbers(Statistics(beyond.extended), {{"TestStatistic", statistic(70'000, 70'000, 4.9e9)}});
    ExpectNumbers(Statistics(beyond.defined), {{"TestStatistic", statistic(70'000, 70'000, 4.9e9 - 4294967296)}});
}

TEST(ExtendedKolmogorovSmirnov, SizesAreRightBeyondTheLimit) {
    Rows rows = Quarters(2'000'000'000, 2'000'000'000);
    const Rows once = rows;
    for (int i = 0; i < 2; ++i) rows.insert(rows.end(), once.begin(), once.end());
    const Ways ways = RunBoth("IKolmogorovSmirnov", groups::Entry(), groups::WeightedFields(), rows);
    EXPECT_EQ(ways.Said(), "extended");
    EXPECT_EQ(Statistics(ways.extended).Row("TotalN"), "12000000000");
    EXPECT_EQ(ways.extended.Sub("Group1").Row("N"), "6000000000");
    EXPECT_EQ(ways.defined.Sub("Group1").Row("N"), "1705032704");  // less 2^32
    const Table extremes = Statistics(ways.extended).Sub("MostExtremeDifferences");
    EXPECT_EQ(extremes.Row("Positive"), "0.25");
    ExpectNumbers(Statistics(ways.extended), {{"TestStatistic", std::sqrt(3e9) * 0.25}});
}

std::string NegativeOf(const Rows& rows, bool isExtended, const std::string& ways) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("sigLevel", 0.05);
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    AddVecSetting(*settings, "group1List", std::vector<int>{0}, false);
    AddVecSetting(*settings, "group2List", std::vector<int>{1}, false);
    TARNKSmirnowTwoSample test(std::move(settings));
    test.SetExtended(isExtended);
    for (int pass = 0; pass < 2; ++pass) {
        harness::BeginPassOver(test, rows);
        EXPECT_FALSE(test.EndPass().IsError());
        EXPECT_EQ(test.NeedsAnotherPass(), pass == 0);
    }
    EXPECT_EQ(test.GetArithmetic().TookTextbook() ? "textbook" : "", ways);
    EXPECT_FALSE(test.GetArithmetic().WasWider());
    return harness::ElementOf(test).Sub("StatisticsResult").Sub("MostExtremeDifferences").Row("Negative");
}

// Without the record of neither group the differences are 1/2, 0, 1/2 and 0; with it the second group is complete at 3.
TEST(ExtendedKolmogorovSmirnov, RecordOfNeitherGroupDoesNotCount) {
    const Rows with{{1, 0}, {2, 7}, {3, 1}, {4, 0}, {5, 1}};
    EXPECT_EQ(NegativeOf(with, false, ""), "-0.5");
    EXPECT_EQ(NegativeOf(with, true, "textbook"), "0");
    // At a value that is there it changes nothing, nor does it behind the second group.
    const Rows behind{{1, 0}, {3, 1}, {3, 7}, {4, 0}, {5, 1}, {6, 7}, {8, 0}};
    EXPECT_EQ(NegativeOf(behind, false, ""), "-0.333333333333333");
    EXPECT_EQ(NegativeOf(behind, true, ""), "-0.333333333333333");
    // As defined a walk that begins in neither group finds no difference at all.
    const Rows before{{0, 7}, {1, 1}, {2, 0}};
    EXPECT_EQ(NegativeOf(before, false, ""), "0");
    EXPECT_EQ(NegativeOf(before, true, "textbook"), "-1");
}

// ---- Wald-Wolfowitz ----

/// A block of `both` cases of each group, then one of each alone. By hand: at least 3 runs, at most 2 `both` + 2.
Rows Blocks(double both, double alone) {
    return {{1, 0, both}, {1, 1, both}, {2, 0, alone}, {3, 1, alone}};
}

TEST(ExtendedWaldWolfowitz, RunsAreRightBeyondTheLimits) {
    const Ways below = RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(), Blocks(30'000, 30'100));
    EXPECT_EQ(below.Said(), "");
    for (const Table& test : {below.defined, below.extended}) {
        EXPECT_EQ(Statistics(test).Sub("MinimumPossible").Row("TestStatistic"), "3");
        ExpectNumbers(Statistics(test).Sub("MaximumPossible"), {{"TestStatistic", 60'002},
                                                                {"StandardError", 173.34863713891758142},
                                                                {"StandardTestStatistic", -0.57110342275528646799},
                                                                {"AsymptoticSig2Tailed", 0.28396476928942990367}});
    }
    // 50,000^2 and 65,536^2 are -1,794,967,296 and 0 in 32 bits.
    const Ways product = RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(),
                                 {{1, 0, 50'000}, {2, 0, 50'000}, {3, 1, 9}});
    EXPECT_EQ(product.Said(), "extended");
    EXPECT_EQ(Statistics(product.defined).Sub("MinimumPossible").Row("TestStatistic"), "3");
    EXPECT_EQ(Statistics(product.extended).Sub("MinimumPossible").Row("TestStatistic"), "2");
    EXPECT_EQ(Statistics(product.extended).Sub("MaximumPossible").Row("TestStatistic"), "2");
    // 1,000,000 * -1,000,000 wraps around to a negative number: the sign is right, and nothing differs.
    const Ways sign = RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(),
                              {{1, 0, 1'000'000}, {2, 1, 2'000'000}});
    const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(-2'000'000'000'000));
    EXPECT_EQ(sign.Said(), wrapped < 0 ? "" : "extended");

    const Ways beyond =
        RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(), Blocks(1'999'960'000, 2'000'000'000));
    EXPECT_EQ(beyond.Said(), "extended");
    EXPECT_EQ(Statistics(beyond.extended).Row("TotalN"), "7999920000");
    EXPECT_EQ(beyond.defined.Attribute("decision"), "unknown");  // the groups are below 0
    EXPECT_EQ(harness::MessagesOf(beyond.extended), groups::Texts({"221413 warning 1 3999920000"}));
    ExpectNumbers(Statistics(beyond.extended).Sub("MaximumPossible"),
                  {{"TestStatistic", 3'999'920'002},
                   {"StandardError", 44721.135939843925212},
                   {"StandardTestStatistic", -0.89440930243373408243},
                   {"AsymptoticSig2Tailed", 0.18555146854223738572}});
}

// a, a record without weight, a, b: two runs, and as defined up to four.
TEST(ExtendedWaldWolfowitz, ValueWithoutWeightIsNoRun) {
    const Ways ways = RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(),
                              {{1, 0, 1}, {2, 0, 0.5}, {3, 0, 1}, {4, 1, 1}});
    EXPECT_EQ(ways.Said(), "") << "the record isn't there";
    EXPECT_EQ(Statistics(ways.defined).Sub("MaximumPossible").Row("TestStatistic"), "4");
    EXPECT_EQ(Statistics(ways.extended).Sub("MaximumPossible").Row("TestStatistic"), "2");
    EXPECT_EQ(Statistics(ways.extended).Sub("MinimumPossible").Row("TestStatistic"), "2");
}

// The same with a value whose records cancel, which are there in both ways; beside others of its value it changes
// nothing. By hand.
TEST(ExtendedWaldWolfowitz, ValueWhoseWeightsCancelIsNoRun) {
    const Ways ways = RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(),
                              {{1, 0, 1}, {2, 0, 2}, {2, 0, -2}, {3, 0, 1}, {4, 1, 1}});
    EXPECT_EQ(ways.Said(), "textbook");
    EXPECT_EQ(Statistics(ways.defined).Sub("MaximumPossible").Row("TestStatistic"), "4");
    EXPECT_EQ(Statistics(ways.extended).Sub("MaximumPossible").Row("TestStatistic"), "2");
    EXPECT_EQ(Statistics(ways.extended).Sub("MinimumPossible").Row("TestStatistic"), "2");
    const Ways beside = RunBoth("IWaldWolfowitzRuns", groups::Entry(), groups::WeightedFields(),
                                {{1, 0, 1}, {1, 0, 2}, {1, 0, -2}, {3, 0, 1}, {4, 1, 1}});
    EXPECT_EQ(beside.Said(), "");
    EXPECT_EQ(Statistics(beside.extended).Sub("MaximumPossible").Row("TestStatistic"), "2");
}

// ---- Hodges-Lehmann ----

Rows Quadratic(double weight) {
    Rows rows;
    for (int i = 0; i < 400; ++i) {
        rows.push_back({(i * i % 10007) / 16.0 + 8, 0, weight});
        rows.push_back({3 * i * i % 10009 / 16.0, 1, weight});
    }
    return rows;
}

// The positions by mpmath among all differences, each with the product of its weights: below N = 2,097,152, between
// that and N = 3,329,020, and beyond.
TEST(ExtendedHodgesLehmann, IntervalIsRightBeyondTheLimits) {
    struct Case {
        double weight;
        const char* lower;
        const char* upper;
        const char* said;
    };
    for (const Case& one : {Case{2621, "-4.125", "-3.1875", ""}, Case{4161, "-4.0625", "-3.3125", ""},
                            Case{5000, "-4", "-3.3125", "extended"}, Case{2e9, "-3.625", "-3.625", "extended"}}) {
        const Ways ways =
            RunBoth("IHodgesLehmannEstimateGroups", groups::Entry(), groups::WeightedFields(), Quadratic(one.weight));
        EXPECT_EQ(ways.Said(), one.said) << one.weight;
        const Table interval = Statistics(ways.extended).Sub("Asymptotic");
        EXPECT_EQ(interval.Row("Lower"), one.lower) << one.weight;
        EXPECT_EQ(interval.Row("Upper"), one.upper) << one.weight;
        EXPECT_EQ(Statistics(ways.extended).Row("Estimate"), Statistics(ways.defined).Row("Estimate"));
        if (*one.said == '\0') continue;
        EXPECT_NE(Statistics(ways.defined).Sub("Asymptotic").Row("Lower"), one.lower) << one.weight;
    }
}

// Nine of 16 cases are tied at the largest value; positions by mpmath.
TEST(ExtendedHodgesLehmann, TiesOfTheLargestValueCount) {
    const Ways ways = RunBoth("IHodgesLehmannEstimateGroups", groups::Entry(), groups::TwoFields(),
                              groups::RowsOf({{1, 3, 5, 9, 9, 9, 9, 9}, {0, 0, 2, 7, 9, 9, 9, 9}}));
    EXPECT_EQ(ways.Said(), "textbook");
    EXPECT_EQ(Statistics(ways.defined).Sub("Asymptotic").Row("Lower"), "-4");
    EXPECT_EQ(Statistics(ways.defined).Sub("Asymptotic").Row("Upper"), "7");
    EXPECT_EQ(Statistics(ways.extended).Sub("Asymptotic").Row("Lower"), "-1");
    EXPECT_EQ(Statistics(ways.extended).Sub("Asymptotic").Row("Upper"), "5");
}

// By hand: the differences of 1, 9 and 0 are 1 and 9; as defined the value 7 without weight lies between them.
TEST(ExtendedHodgesLehmann, ValueWithoutWeightIsNone) {
    const Ways ways = RunBoth("IHodgesLehmannEstimateGroups", groups::Entry(), groups::WeightedFields(),
                              {{0, 1, 1}, {1, 0, 1}, {7, 0, 0.5}, {9, 0, 1}});
    EXPECT_EQ(ways.Said(), "") << "the record isn't there";
    EXPECT_EQ(Statistics(ways.defined).Row("Estimate"), "4");
    EXPECT_EQ(Statistics(ways.extended).Row("Estimate"), "5");
    const Ways group = RunBoth("IHodgesLehmannEstimateGroups", groups::Entry(), groups::WeightedFields(),
                               {{0, 1, 0.5}, {1, 0, 1}, {9, 0, 1}});
    EXPECT_EQ(group.defined.Sub("WarningMessages").Exists(), false);
    EXPECT_EQ(harness::MessagesOf(group.extended).size(), 1U);  // a group without a case
}

// ---- Kruskal-Wallis ----

QKSettings Comparing(const char* comparison) {
    return several::Comparing(comparison);
}

/// Three groups at three values, and one record that makes up the total.
Rows OfTotal(double total) {
    Rows rows;
    for (int value = 0; value < 3; ++value) {
        for (int group = 0; group < 3; ++group) {
            const double weight = 79'500'000 + (7 * value + 5 * group) % 11 * 300;
            rows.push_back({static_cast<double>(value), static_cast<double>(group), weight});
            total -= weight;
        }
    }
    rows.push_back({3, 0, total});
    return rows;
}

TEST(ExtendedKruskalWallis, IsAsDefinedUpToTheLimitAndRightBeyond) {
    const Ways below = RunBoth("IKruskalWallis", Comparing("none"), WeightedCategories(3), OfTotal(715'827'881));
    EXPECT_EQ(below.Said(), "");
    ExpectNumbers(Statistics(below.extended),
                  {{"TestStatistic", 942.5178164852118199}, {"AsymptoticSig2Tailed", 2.1620045444345966516e-205}});
    EXPECT_TRUE(IsNear(Number(Statistics(below.defined), "TestStatistic"), 942.5178164852118199, 1e-6));

    const Ways beyond = RunBoth("IKruskalWallis", Comparing("none"), WeightedCategories(3), OfTotal(715'827'882));
    EXPECT_EQ(beyond.Said(), "extended");
    ExpectNumbers(Statistics(beyond.extended),
                  {{"TestStatistic", 942.52376864115572595}, {"AsymptoticSig2Tailed", 2.1555798153240396024e-205}});
    EXPECT_TRUE(IsNear(Number(Statistics(beyond.defined), "TestStatistic"), 4831041576.549207664, 1e-9));
}

TEST(ExtendedKruskalWallis, IsRightForAnyWeights) {
    const Ways ways = RunBoth("IKruskalWallis", Comparing("pairWise"), WeightedCategories(3),
                              Balanced(3, 2'000'000'000, 30'000, 9'000), {{"sigLevel", 0.9}});
    EXPECT_EQ(ways.Said(), "extended");
    ExpectNumbers(Statistics(ways.extended), {{"TotalN", 47999712000},
                                              {"TestStatistic", 3.1745709494556567631},
                                              {"AsymptoticSig2Tailed", 0.2044799249691733245}});
    const std::vector<std::string> pairs = several::Pairs(ways.extended);
    ASSERT_EQ(pairs.size(), 3U);
    ExpectCells(pairs[0], {-259877.09180896627113, 153703.78596581981865, -1.690765716511088087,
                           0.090881557424857737736, 0.27264467227457321321});
    ExpectCells(pairs[2],
                {55125.430174292515416, 153703.8147854553069, 0.35864711784309550967, 0.71985909363921937552, 1});
}

TEST(ExtendedKruskalWallis, KeepsTheDigitsOfTheFarthestTail) {
    const Ways ways = RunBoth("IKruskalWallis", Comparing("pairWise"), WeightedCategories(3),
                              Balanced(3, 2'000'000'000, 30'000, 175'000));
    ExpectNumbers(Statistics(ways.extended),
                  {{"TestStatistic", 1251.3431384756516556}, {"AsymptoticSig2Tailed", 1.8805721328997548876e-272}});
    ExpectCells(several::Pairs(ways.extended)[1], {-5434012.9153663251829, 153700.61096025765243, -35.35453035233150255,
                                                   8.5411095805722626624e-274, 2.5623328741716787987e-273});
}

TEST(ExtendedKruskalWallis, OfAHundredThousandAndThreeMillionCases) {
    const Ways few = RunBoth("IKruskalWallis", Comparing("none"), WeightedCategories(3), Balanced(3, 4166, 20, 6));
    EXPECT_EQ(few.Said(), "");
    ExpectNumbers(Statistics(few.extended), {{"TotalN", 99792},
                                             {"TestStatistic", 0.68219559148781349086},
                                             {"AsymptoticSig2Tailed", 0.71098937307169571971}});
    const Ways many =
        RunBoth("IKruskalWallis", Comparing("none"), WeightedCategories(3), Balanced(3, 125'000, 900, 60));
    EXPECT_EQ(many.Said(), "");
    ExpectNumbers(Statistics(many.extended), {{"TotalN", 2993880},
                                              {"TestStatistic", 20.443537747858445651},
                                              {"AsymptoticSig2Tailed", 0.000036369906348685481287}});
}

/// Five categories of which the second one and the last one have no cases; the first one lies below the others.
Rows WithGaps(int cases) {
    Rows rows;
    for (int i = 0; i < cases; ++i) {
        for (const int group : {0, 2, 3}) {
            rows.push_back({i * 7 % 11 + 0.3 * i + group + (group > 0 ? 5 : 0), static_cast<double>(group)});
        }
    }
    return rows;
}

std::vector<std::string> AdjustedOf(const std::vector<std::string>& rows) {
    std::vector<std::string> adjusted;
    for (const std::string& row : rows) adjusted.push_back(harness::SplitValues(row)[6]);
    return adjusted;
}

// Bonferroni's factor of three groups is 3, of five categories 10; 1 - (1 - p)^(k / m) of two out of three is p.
TEST(ExtendedKruskalWallis, SignificancesAreAdjustedForTheGroupsWithCases) {
    const Ways pairs =
        RunBoth("IKruskalWallis", Comparing("pairWise"), several::Categories(5), WithGaps(20), {{"sigLevel", 0.99}});
    EXPECT_EQ(pairs.Said(), "textbook");
    for (std::size_t i = 0; i < 3; ++i) {
        const auto cells = harness::SplitValues(several::Pairs(pairs.extended)[i]);
        const double sig = std::strtod(cells[5].c_str(), nullptr);
        EXPECT_TRUE(IsNear(std::strtod(cells[6].c_str(), nullptr), std::min(3 * sig, 1.0))) << i;
        const auto defined = harness::SplitValues(several::Pairs(pairs.defined)[i]);
        EXPECT_TRUE(IsNear(std::strtod(defined[6].c_str(), nullptr), std::min(10 * sig, 1.0), 1e-9)) << i;
    }
    const Ways steps =
        RunBoth("IKruskalWallis", Comparing("stepWise"), several::Categories(5), WithGaps(20), {{"sigLevel", 0.01}});
    EXPECT_EQ(steps.Said(), "textbook");
    const std::vector<std::string> subsets = several::Subsets(steps.extended);
    ASSERT_FALSE(subsets.empty());
    for (std::size_t i = 0; i < subsets.size(); ++i) {
        const auto cells = harness::SplitValues(subsets[i]);
        if (cells[2].empty()) continue;
        EXPECT_EQ(cells[5], cells[6]);
        const double sig = std::strtod(cells[5].c_str(), nullptr);
        const auto defined = harness::SplitValues(several::Subsets(steps.defined)[i]);
        EXPECT_TRUE(IsNear(std::strtod(defined[6].c_str(), nullptr), 1 - std::pow(1 - sig, 5.0 / 2), 1e-9));
    }
    // Without empty categories nothing differs.
    Rows all = WithGaps(20);
    for (std::vector<double>& row : all) row[1] = row[1] == 0 ? 0 : row[1] - 1;
    EXPECT_EQ(
        RunBoth("IKruskalWallis", Comparing("pairWise"), several::Categories(3), all, {{"sigLevel", 0.99}}).Said(), "");
}

// ---- Jonckheere-Terpstra ----

TEST(ExtendedJonckheere, IsRightForAnyWeights) {
    const Ways ways = RunBoth("IJonckheereTerpstra", Comparing("pairWise"), WeightedCategories(3),
                              Balanced(3, 2'000'000'000, 30'000, 9'000), {{"sigLevel", 0.9}});
    EXPECT_EQ(ways.Said(), "extended");
    ExpectNumbers(Statistics(ways.extended), {{"TotalN", 47999712000},
                                              {"TestStatistic", 3.83997576017586e20},
                                              {"StandardError", 1639497366964920.5581},
                                              {"StandardTestStatistic", 1.3321178941830712634},
                                              {"AsymptoticSig2Tailed", 0.18282145111406688672}});
    const std::vector<std::string> pairs = several::Pairs(ways.extended);
    ASSERT_EQ(pairs.size(), 3U);
    ExpectCells(pairs[0], {1.2799989800621e20, 819748914036451.84205, 1.6907639232790353419, 0.045440950025638337685,
                           0.136322850076915013055});
    ExpectCells(pairs[2],
                {1.27998122003006e20, 819748452931660.07484, -0.3586489110757858786, 0.35992887598507600878, 1});
}

TEST(ExtendedJonckheere, IsAsDefinedUpToTheLimitButForDigits) {
    const Ways ways = RunBoth("IJonckheereTerpstra", Comparing("none"), WeightedCategories(3),
                              Balanced(3, 89'000'000, 30'000, 9'000));
    EXPECT_EQ(ways.Said(), "");
    ExpectNumbers(Statistics(ways.extended), {{"TestStatistic", 760308149586000000},
                                              {"StandardError", 15387455334875.700219},
                                              {"StandardTestStatistic", 6.316299731490665911},
                                              {"AsymptoticSig2Tailed", 2.6790022496945649085e-10}});
}

TEST(ExtendedJonckheere, KeepsTheDigitsOfTheUpperTailOfPairs) {
    const Ways ways = RunBoth("IJonckheereTerpstra", Comparing("pairWise"), WeightedCategories(3),
                              Balanced(3, 2'000'000'000, 30'000, 175'000));
    ExpectNumbers(Statistics(ways.extended), {{"StandardTestStatistic", 35.354543995235751329},
                                              {"AsymptoticSig2Tailed", 8.5369875783424630053e-274}});
    const auto cells = harness::SplitValues(several::Pairs(ways.extended)[1]);
    EXPECT_TRUE(IsNear(std::strtod(cells[5].c_str(), nullptr), 4.2617245611560006402e-274));
}

TEST(ExtendedJonckheere, OfThreeMillionCases) {
    const Ways ways =
        RunBoth("IJonckheereTerpstra", Comparing("none"), WeightedCategories(3), Balanced(3, 125'000, 900, 60));
    EXPECT_EQ(ways.Said(), "");
    ExpectNumbers(Statistics(ways.extended), {{"TestStatistic", 1493571780600},
                                              {"StandardError", 807613090.37661256833},
                                              {"StandardTestStatistic", -0.38910216258810172976},
                                              {"AsymptoticSig2Tailed", 0.6972005737827542942}});
}

// With an empty category in front of others a subset has the records of other groups than it names; in the extended
// arithmetic it is the same as without the empty categories.
TEST(ExtendedJonckheere, SubsetsAndFactorsAreThoseOfTheGroupsWithCases) {
    Rows closed = WithGaps(20);
    for (std::vector<double>& row : closed) row[1] = row[1] == 0 ? 0 : row[1] - 1;
    for (const char* const comparison : {"pairWise", "stepWise"}) {
        const bool isPairs = std::string(comparison) == "pairWise";
        const auto rowsOf = [&](const Table& test) { return isPairs ? several::Pairs(test) : several::Subsets(test); };
        const Common common{{"sigLevel", isPairs ? 0.99 : 0.01}};
        const Ways gaps =
            RunBoth("IJonckheereTerpstra", Comparing(comparison), several::Categories(5), WithGaps(20), common);
        const Ways none = RunBoth("IJonckheereTerpstra", Comparing(comparison), several::Categories(3), closed, common);
        EXPECT_EQ(gaps.Said(), "textbook") << comparison;
        EXPECT_EQ(none.Said(), "") << comparison;
        ASSERT_EQ(rowsOf(gaps.extended).size(), rowsOf(none.extended).size()) << comparison;
        ASSERT_FALSE(rowsOf(none.extended).empty());
        EXPECT_EQ(AdjustedOf(rowsOf(gaps.extended)), AdjustedOf(rowsOf(none.extended))) << comparison;
        EXPECT_NE(AdjustedOf(rowsOf(gaps.defined)), AdjustedOf(rowsOf(none.defined))) << comparison;
    }
}

// ---- Median ----

QKSettings GivenMedian(const char* comparison, double median) {
    QKSettings entry = Comparing(comparison);
    entry.AddSetting("userSpecifyMedian", true);
    entry.AddSetting("median", median);
    return entry;
}

// By hand, of a table with margins 2 W for the groups and for the rows, and W + d in the cells of one diagonal: 4 d^2 /
// W by Pearson, and 4 (d - 1/2)^2 / W by Yates.
TEST(ExtendedMedian, IsRightForAnyWeights) {
    constexpr double kWeight = 2e9;
    constexpr double kMore = 70'000;
    const Rows rows{{1, 0, kWeight + kMore}, {2, 0, kWeight - kMore}, {1, 1, kWeight - kMore}, {2, 1, kWeight + kMore}};
    const Ways ways = RunBoth("IMedian", GivenMedian("none", 1.5), WeightedCategories(2), rows);
    EXPECT_EQ(ways.Said(), "extended");
    EXPECT_EQ(Statistics(ways.extended).Row("TotalN"), "8000000000");
    ExpectNumbers(Statistics(ways.extended), {{"TestStatistic", 4 * kMore * kMore / kWeight}});
    const Table yates = Statistics(ways.extended).Sub("YatesContinuityCorrection");
    ExpectNumbers(yates, {{"ChiSquare", 4 * (kMore - 0.5) * (kMore - 0.5) / kWeight}});

    constexpr double kBelow = 5e8;
    const Rows fewer{{1, 0, kBelow + kMore}, {2, 0, kBelow - kMore}, {1, 1, kBelow - kMore}, {2, 1, kBelow + kMore}};
    const Ways below = RunBoth("IMedian", GivenMedian("none", 1.5), WeightedCategories(2), fewer);
    EXPECT_EQ(below.Said(), "");
    ExpectNumbers(Statistics(below.extended), {{"TestStatistic", 4 * kMore * kMore / kBelow}});
}

// R: chisq.test(matrix(8, 2, 2))$p.value is 1, with a statistic of 0. By hand, as defined: 32 * 16^2 / 16^4.
TEST(ExtendedMedian, YatesCorrectionTakesNoMoreThanThereIs) {
    Rows rows;
    for (int i = 0; i < 8; ++i) rows.insert(rows.end(), {{1, 0}, {1, 1}, {2, 0}, {2, 1}});
    const Ways ways = RunBoth("IMedian", GivenMedian("none", 1.5), several::Categories(2), rows);
    EXPECT_EQ(ways.Said(), "textbook");
    EXPECT_EQ(Statistics(ways.defined).Sub("YatesContinuityCorrection").Row("ChiSquare"), "0.125");
    EXPECT_EQ(Statistics(ways.extended).Sub("YatesContinuityCorrection").Row("ChiSquare"), "0");
    EXPECT_EQ(Statistics(ways.extended).Sub("YatesContinuityCorrection").Row("AsymptoticSig2Tailed"), "1");
}

// ---- All ----

// A record of weight w is w records: the whole document but for the case counts of the plots' values.
TEST(ExtendedIndependent, WeightedAndExpandedDataAgree) {
    std::mt19937 random(7);
    Rows weighted;
    Rows expanded;
    for (int i = 0; i < 2000; ++i) {
        const double value = static_cast<double>(random() % 900) / 8;
        const double group = static_cast<double>(random() % 3);
        const auto weight = 1 + random() % 99;
        weighted.push_back({value, group, static_cast<double>(weight)});
        for (unsigned copy = 0; copy < weight; ++copy) expanded.push_back({value, group});
    }
    for (const char* const test : {"IKruskalWallis", "IJonckheereTerpstra", "IMedian"}) {
        for (const char* const comparison : {"pairWise", "stepWise"}) {
            const auto result = [&](const Fields& fields, const Rows& rows) {
                const Ways ways = RunBoth(test, Comparing(comparison), fields, rows, {{"sigLevel", 0.99}});
                EXPECT_EQ(ways.Said(), "") << test;
                const Table table = ways.extended;
                return TextOf(Statistics(table)) + TextOf(table.Sub("PairwiseResult")) +
                       TextOf(table.Sub("StepwiseResult"));
            };
            EXPECT_EQ(result(WeightedCategories(3), weighted), result(several::Categories(3), expanded))
                << test << " " << comparison;
        }
    }
    std::erase_if(weighted, [](const auto& row) { return row[1] == 2; });
    std::erase_if(expanded, [](const auto& row) { return row[1] == 2; });
    for (const char* const test :
         {"IMannWhitneyU", "IMoses", "IKolmogorovSmirnov", "IWaldWolfowitzRuns", "IHodgesLehmannEstimateGroups"}) {
        const Ways a = RunBoth(test, groups::Entry(), groups::WeightedFields(), weighted);
        const Ways b = RunBoth(test, groups::Entry(), groups::TwoFields(), expanded);
        EXPECT_EQ(TextOf(Statistics(a.extended)), TextOf(Statistics(b.extended))) << test;
        EXPECT_EQ(a.Said(), b.Said()) << test;
    }
}

}  // namespace
