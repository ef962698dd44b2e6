#include "host/NearestNames.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "host/Synonyms.h"
#include "host/TestNames.h"

namespace {

using Names = std::vector<std::string_view>;

const Names kOptions{"--group",      "--related",      "--independent", "--tests",  "--compare", "--test-value",
                     "--cut-point",  "--alpha",        "--confidence",  "--weight", "--case-id", "--continuous",
                     "--one-sample", "--user-missing", "--missing",     "--fields", "--out",     "--quiet"};
const Names kKeys{"variableName", "groupVariableName", "originVariableName", "NumberOfOutliers", "sigLevel"};
const Names kFields{"hours_before", "hours_after", "arm", "x1", "x2"};

Names NamesOfTests() {
    Names names;
    for (const tarn::TestName& test : tarn::TestNames()) names.push_back(test.name);
    return names;
}

struct Case {
    const char* typed;
    Names nearest;
};

void PrintTo(const Case& one, std::ostream* out) {
    *out << one.typed;
}

class ByLetters : public testing::TestWithParam<std::pair<const Names*, Case>> {};

TEST_P(ByLetters, IsWhatIsNear) {
    const auto& [known, one] = GetParam();
    EXPECT_EQ(tarn::NearestNames(one.typed, *known), one.nearest) << one.typed;
}

std::vector<std::pair<const Names*, Case>> Of(const Names& known, const std::vector<Case>& cases) {
    std::vector<std::pair<const Names*, Case>> pairs;
    for (const Case& one : cases) pairs.emplace_back(&known, one);
    return pairs;
}

INSTANTIATE_TEST_SUITE_P(Options, ByLetters,
                         testing::ValuesIn(Of(kOptions, {{"--exact", {}},
                                                         {"--quite", {"--quiet"}},
                                                         {"--Weight", {"--weight"}},
                                                         {"-alpha", {"--alpha"}},
                                                         {"confidence", {"--confidence"}},
                                                         {"--con", {"--confidence", "--continuous"}},
                                                         {"--indpendant", {"--independent"}},
                                                         {"--missing-values", {"--missing"}},
                                                         {"--sample", {"--one-sample"}},
                                                         {"--", {}},
                                                         {"", {}},
                                                         {"--xyz", {}}})));

INSTANTIATE_TEST_SUITE_P(Keys, ByLetters,
                         testing::ValuesIn(Of(kKeys, {{"variableNames", {"variableName"}},
                                                      {"SIGLEVEL", {"sigLevel"}},
                                                      {"outliers", {"NumberOfOutliers"}},
                                                      {"groupVariable", {"groupVariableName"}}})));

INSTANTIATE_TEST_SUITE_P(Fields, ByLetters,
                         testing::ValuesIn(Of(kFields, {{"hours_befor", {"hours_before"}},
                                                        {"hours", {"hours_before", "hours_after"}},
                                                        {"amr", {"arm"}},
                                                        {"ARM", {"arm"}},
                                                        {"rma", {}},
                                                        {"x3", {"x1", "x2"}},
                                                        {"y", {}},
                                                        {"age", {}}})));

TEST(NearestNames, ALetterMayBeWrongInThree) {
    const Names known{"abcdefghi"};
    EXPECT_EQ(tarn::NearestNames("abcdefxyz", known), known);
    EXPECT_EQ(tarn::NearestNames("abcdewxyz", known), Names{});
    EXPECT_EQ(tarn::NearestNames("abdcefhgi", known), known) << "two pairs of letters in each other's place";
}

TEST(NearestNames, AreThreeAtMostAndEachOnce) {
    EXPECT_EQ(tarn::NearestNames("aaaa", Names{"aaab", "aaab", "aaac", "aaad", "aaae"}),
              (Names{"aaab", "aaac", "aaad"}));
    EXPECT_EQ(tarn::NearestNames("aaaa", Names{"aabb", "aaab", "aaaa"}), Names{"aaaa"}) << "the nearest alone";
}

TEST(NearestNames, AreToldInAQuestion) {
    EXPECT_EQ(tarn::DidYouMean(Names{}), "");
    EXPECT_EQ(tarn::DidYouMean(Names{"a"}), "; did you mean a?");
    EXPECT_EQ(tarn::DidYouMean(Names{"a", "b"}), "; did you mean a, b?");
}

// ---- Words of other tools ----

class ByMeaning : public testing::TestWithParam<Case> {};

TEST_P(ByMeaning, IsTheTestOfThatMeaning) {
    EXPECT_EQ(tarn::NearestNames(GetParam().typed, NamesOfTests()), GetParam().nearest);
}

INSTANTIATE_TEST_SUITE_P(
    , ByMeaning,
    testing::Values(Case{"kruskal", {"kruskal-wallis"}}, Case{"kruskal.test", {"kruskal-wallis"}},
                    Case{"kw", {"kruskal-wallis"}}, Case{"anova", {"kruskal-wallis"}},
                    Case{"one-way", {"kruskal-wallis"}}, Case{"ks", {"kolmogorov-smirnov"}},
                    Case{"kstest", {"kolmogorov-smirnov"}}, Case{"ks_2samp", {"kolmogorov-smirnov"}},
                    Case{"wmw", {"mann-whitney"}}, Case{"ranksum", {"mann-whitney"}}, Case{"utest", {"mann-whitney"}},
                    Case{"U-test", {"mann-whitney"}}, Case{"mw", {"mann-whitney"}}, Case{"mwu", {"mann-whitney"}},
                    Case{"mannwhitneyu", {"mann-whitney"}}, Case{"mann", {"mann-whitney"}},
                    Case{"chi2", {"chi-square"}}, Case{"chisq", {"chi-square"}}, Case{"chisq.test", {"chi-square"}},
                    Case{"signed-rank", {"wilcoxon"}}, Case{"wilcox.test", {"mann-whitney", "wilcoxon"}},
                    Case{"jt", {"jonckheere"}}, Case{"hl", {"hodges-lehmann"}}, Case{"q", {"cochran"}},
                    Case{"w", {"kendall", "wilcoxon"}}, Case{"prop", {"binomial"}}, Case{"binom", {"binomial"}},
                    Case{"binomtest", {"binomial"}}, Case{"mood", {"median"}}, Case{"median_test", {"median"}},
                    Case{"stuart-maxwell", {"marginal-homogeneity"}}, Case{"friedmanchisquare", {"friedman"}},
                    Case{"test", {}}));

TEST(Synonyms, OfAnOptionHoldForAnOptionAlone) {
    EXPECT_EQ(tarn::NearestNames("--by", kOptions), Names{"--group"});
    EXPECT_EQ(tarn::NearestNames("by", kOptions), Names{});
    EXPECT_EQ(tarn::NearestNames("-o", kOptions), Names{"--out"});
    EXPECT_EQ(tarn::NearestNames("--post-hoc", kOptions), Names{"--compare"});
    EXPECT_EQ(tarn::NearestNames("--sig", kOptions), Names{"--alpha"});
}

TEST(Synonyms, AreSuggestedWhereTheyExist) {
    EXPECT_EQ(tarn::NamesMeantBy("--levels"), Names{"--order"});
    EXPECT_EQ(tarn::NearestNames("--levels", kOptions), Names{});
    EXPECT_EQ(tarn::NearestNames("--levels", Names{"--alpha", "--order"}), Names{"--order"});
    EXPECT_EQ(tarn::NearestNames("kw", Names{"wilcoxon", "sign"}), Names{});
}

}  // namespace
