// `tarn analyze` on the example table: what an analyst reads of a comparison of groups, and all families in one run.
// Reference values: scipy 1.17 on the same columns, values repeated by their weights (kruskal; friedmanchisquare;
// chisquare; median_test with ties="below", correction=False; kstest(x, "norm", args=(mean, standard deviation with
// n - 1))); pairs of values in ascending order counted for the trend.

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using Lines = std::vector<std::string>;

/// The table that one test of hours of sleep by a field of words shows; with the order of the words, where it counts.
Lines TableOf(const std::string& test, const std::string& group, const std::string& comparison,
              const std::string& order = "") {
    std::vector<std::string> arguments{"analyze",       harness::SourcePath("examples/sleep_clinic.csv"),
                                       "--independent", "hours_after",
                                       "--group",       group,
                                       "--tests",       test,
                                       "--compare",     comparison,
                                       "--details"};
    if (!order.empty()) arguments.insert(arguments.end(), {"--order", group + "=" + order});
    const harness::CommandResult result = harness::RunTarn(arguments);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_TRUE(result.out.starts_with("1. ")) << result.out;
    EXPECT_EQ(result.out.find("\n2. "), std::string::npos) << result.out;
    Lines lines;
    std::istringstream text(result.out);
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

/// The words of the first line that begins with these; empty if there is none. Names of samples hold single blanks.
Lines RowOf(const Lines& table, const std::string& name) {
    for (const std::string& line : table) {
        if (!line.starts_with("   " + name + " ")) continue;
        Lines cells;
        std::istringstream rest(line.substr(3 + name.size()));
        for (std::string cell; rest >> cell;) cells.push_back(cell);
        return cells;
    }
    return {};
}

/// What stands below a heading, and the heading itself not.
Lines Below(const Lines& table, const std::string& heading) {
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i] == "   " + heading) return Lines(table.begin() + static_cast<std::ptrdiff_t>(i) + 1, table.end());
    }
    ADD_FAILURE() << "no heading " << heading;
    return {};
}

/// The names of the samples in the table of homogeneous subsets, from above.
Lines NamesInSubsets(const Lines& table) {
    Lines names;
    const Lines rows = Below(table, "Homogeneous subsets");
    for (std::size_t i = 1; i < rows.size() && !rows[i].starts_with("   statistic"); ++i) {
        const std::size_t end = rows[i].find("  ", 3);
        names.push_back(rows[i].substr(3, end - 3));
    }
    return names;
}

TEST(GroupTests, KruskalWallisComparesPairsByName) {
    const Lines table = TableOf("kruskal-wallis", "arm", "pairwise");
    EXPECT_EQ(RowOf(table, "N:"), (Lines{"303", "of", "320", "cases", "(17", "missing)"}));
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"12.8788"});
    EXPECT_EQ(RowOf(table, "p").front(), ".002");
    // Cases, those missing, median, its interval, quartiles (numpy.quantile, binom.ppf), mean rank (rankdata), letters.
    EXPECT_EQ(RowOf(table, "high"), (Lines{"99", "8", "6.4", "6.1", "to", "6.9", "5.55", "to", "7.4", "175.8", "b"}));
    EXPECT_EQ(RowOf(table, "placebo"),
              (Lines{"102", "4", "5.75", "5.4", "to", "6.1", "4.9", "to", "6.575", "131.8", "a"}));
    const Lines pairs = Below(table, "Pairs");
    for (const char* pair : {"high - low", "high - placebo", "low - placebo"}) {
        EXPECT_EQ(RowOf(pairs, pair).size(), pair == std::string("high - placebo") ? 6u : 5u) << pair;  // "< .001"
    }
    EXPECT_EQ(RowOf(pairs, "high - low").front(), "26.7846");  // 175.84343 - 149.05882
}

TEST(GroupTests, KruskalWallisFindsSubsetsByName) {
    const Lines table = TableOf("kruskal-wallis", "arm", "stepwise");
    EXPECT_EQ(NamesInSubsets(table), (Lines{"placebo", "low", "high"}));  // by their mean ranks
    const Lines subsets = Below(table, "Homogeneous subsets");
    EXPECT_EQ(RowOf(subsets, "statistic"), Lines{"2.32842"});  // kruskal of placebo and low
    EXPECT_EQ(RowOf(subsets, "p"), Lines{".127"});
}

TEST(GroupTests, JonckheereComparesPairsByName) {
    const Lines table = TableOf("jonckheere", "arm", "pairwise", "high,low,placebo");
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"12296.5"});
    const Lines pairs = Below(table, "Pairs");
    EXPECT_EQ(RowOf(pairs, "high < low").front(), "4106");
    EXPECT_EQ(RowOf(pairs, "high < placebo").front(), "3631.5");
    EXPECT_EQ(RowOf(pairs, "low < placebo").front(), "4559");
}

TEST(GroupTests, JonckheereFindsSubsetsByName) {
    const Lines table = TableOf("jonckheere", "quality", "stepwise", "fair,good,poor,very good");
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"21538"});
    EXPECT_EQ(NamesInSubsets(table), (Lines{"fair", "good", "poor", "very good"}));  // in the order of the groups
}

TEST(GroupTests, MedianComparesPairsByName) {
    const Lines table = TableOf("median", "arm", "pairwise");
    EXPECT_EQ(RowOf(table, "N:"), (Lines{"303", "of", "320", "cases", "(17", "missing)"}));
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"9.21352"});
    EXPECT_EQ(RowOf(table, "p").front(), ".010");
    EXPECT_EQ(RowOf(table, "Median of all"), Lines{"6.1"});
    EXPECT_EQ(RowOf(table, "high"),
              (Lines{"99", "8", "6.4", "6.1", "to", "6.9", "5.55", "to", "7.4", "59", "40", "b"}));
    EXPECT_EQ(RowOf(table, "placebo"),
              (Lines{"102", "4", "5.75", "5.4", "to", "6.1", "4.9", "to", "6.575", "39", "63", "a"}));
    const Lines pairs = Below(table, "Pairs");
    EXPECT_EQ(RowOf(pairs, "high - low"), (Lines{"1.77467", ".183", ".548"}));
    EXPECT_EQ(RowOf(pairs, "high - placebo"), (Lines{"9.17482", ".002", ".007"}));
    EXPECT_EQ(RowOf(pairs, "low - placebo"), (Lines{"5.01961", ".025", ".075"}));
}

TEST(GroupTests, MedianFindsSubsetsByName) {
    const Lines table = TableOf("median", "arm", "stepwise");
    EXPECT_EQ(NamesInSubsets(table), (Lines{"placebo", "low", "high"}));  // by their medians
    const Lines subsets = Below(table, "Homogeneous subsets");
    EXPECT_EQ(RowOf(subsets, "statistic"), Lines{"1.77467"});  // low and high
    EXPECT_EQ(RowOf(subsets, "p"), Lines{".183"});
    EXPECT_EQ(RowOf(subsets, "adjusted p"), Lines{".183"});
    const Lines apart = TableOf("median", "quality", "stepwise");
    EXPECT_EQ(NamesInSubsets(apart), (Lines{"poor", "fair", "good", "very good"}));
}

// ---- All families at once ----

// Twelve fields of all levels with a user-missing code, missing cells, a weight and a case-ID. Numbers of cases and
// statistics: pandas and SciPy 1.17 on the rows repeated by their weight (chisquare, friedmanchisquare, kruskal; the
// count of the first class for the binomial test).
TEST(RealTable, GoesThroughAllFamiliesInOneRun) {
    const harness::CommandResult result =
        harness::RunTarn({"analyze", harness::SourcePath("examples/sleep_clinic.csv"), "--fields",
                          harness::SourcePath("examples/sleep_clinic.fields.json"), "--one-sample",
                          "age,sex,quality,latency,relapse,wakings", "--related",
                          "hours_before,hours_after,hours_followup", "--independent", "latency,hours_after,wakings",
                          "--group", "arm", "--weight", "visits", "--case-id", "patient", "--format", "json"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const nlohmann::json told = nlohmann::json::parse(result.out);
    EXPECT_EQ(told.at("counts").at("totalFreq"), 521);
    EXPECT_EQ(told.at("fields").size(), 12u);

    struct Expected {
        int n;
        double statistic;
    };
    const std::map<std::string, Expected> expected{
        {"OBinomial sex", {510, 264}},
        {"OBinomial relapse", {521, 379}},
        {"OChiSquare quality", {516, 32.01550387596899}},
        {"OKolmogorovSmirnov age", {521, 0.04714873133777048}},
        {"OKolmogorovSmirnov latency", {501, 0.15414097381106212}},
        {"OKolmogorovSmirnov wakings", {521, 0.23404675759051197}},
        {"RFriedmansTwoWayByRanks hours_before", {456, 101.631430186546}},
        {"IKruskalWallis latency", {501, 1.024959333095728}},
        {"IKruskalWallis hours_after", {496, 18.389279876465316}},
        {"IKruskalWallis wakings", {521, 9.846269262616243}},
    };
    ASSERT_EQ(told.at("tests").size(), expected.size());
    for (const nlohmann::json& test : told.at("tests")) {
        const std::string name = test.at("test").get<std::string>() + " " + test.at("fields").at(0).get<std::string>();
        ASSERT_TRUE(expected.contains(name)) << name;
        EXPECT_EQ(test.at("n"), expected.at(name).n) << name;
        const double statistic = test.at("statistics").at(0).at("statistic");
        EXPECT_NEAR(statistic, expected.at(name).statistic, 1e-12 * statistic) << name;
    }
}

}  // namespace
