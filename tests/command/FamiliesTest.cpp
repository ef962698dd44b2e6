// `tarn analyze` on the example table, by test name: what an analyst reads of a comparison of groups. Reference values:
// scipy 1.17 on the same columns (kruskal; median_test with ties="below", correction=False); pairs of values in
// ascending order counted for the trend.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using Lines = std::vector<std::string>;

/// The table that one test of hours of sleep by a nominal field shows.
Lines TableOf(const std::string& test, const std::string& group, const std::string& comparison) {
    const harness::CommandResult result =
        harness::RunTarn({"analyze", harness::SourcePath("examples/sleep_clinic.csv"), "--independent", "hours_after",
                          "--group", group, "--tests", test, "--compare", comparison});
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
    EXPECT_EQ(RowOf(table, "N"), Lines{"303"});
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"12.8788"});
    EXPECT_EQ(RowOf(table, "p").front(), ".002");
    EXPECT_EQ(RowOf(table, "high").front(), "175.843");  // rankdata
    EXPECT_EQ(RowOf(table, "placebo").front(), "131.799");
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
    const Lines table = TableOf("jonckheere", "arm", "pairwise");
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"12296.5"});
    const Lines pairs = Below(table, "Pairs");
    EXPECT_EQ(RowOf(pairs, "high - low").front(), "4106");
    EXPECT_EQ(RowOf(pairs, "high - placebo").front(), "3631.5");
    EXPECT_EQ(RowOf(pairs, "low - placebo").front(), "4559");
}

TEST(GroupTests, JonckheereFindsSubsetsByName) {
    const Lines table = TableOf("jonckheere", "quality", "stepwise");
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"21538"});
    EXPECT_EQ(NamesInSubsets(table), (Lines{"fair", "good", "poor", "very good"}));  // in the order of the groups
}

TEST(GroupTests, MedianComparesPairsByName) {
    const Lines table = TableOf("median", "arm", "pairwise");
    EXPECT_EQ(RowOf(table, "N"), Lines{"303"});
    EXPECT_EQ(RowOf(table, "Statistic"), Lines{"9.21352"});
    EXPECT_EQ(RowOf(table, "p").front(), ".010");
    EXPECT_EQ(RowOf(table, "Median of all"), Lines{"6.1"});
    EXPECT_EQ(RowOf(table, "high"), (Lines{"59", "40", "3.1", "5.55", "6.4", "7.4", "9.1"}));
    EXPECT_EQ(RowOf(table, "placebo"), (Lines{"39", "63", "2.5", "4.9", "5.75", "6.6", "9.1"}));
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

}  // namespace
