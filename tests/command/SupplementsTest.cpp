// What stands beside each test's document, on a table of 12 records with ties and missing values
// (tests/command/supplements/small.csv). Unless a test says otherwise, exact significances are shares of all
// arrangements, which were gone through one by one (itertools of Python), medians and quartiles come from
// numpy.quantile, and effects are counted by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

std::string SmallTable() {
    return harness::SourcePath("tests/command/supplements/small.csv");
}

Words WordsOf(const std::string& text) {
    Words words;
    std::istringstream rest(text);
    for (std::string word; rest >> word;) words.push_back(word);
    return words;
}

/// The tests of an analysis of a table; an empty list where there are none.
Json TestsOf(const std::string& table, const std::string& arguments) {
    Words all{"analyze", table, "--format", "json"};
    std::ranges::copy(WordsOf(arguments), std::back_inserter(all));
    const harness::CommandResult result = harness::RunTarn(all);
    EXPECT_EQ(result.exitStatus, 0) << arguments << "\n" << result.err;
    return result.exitStatus == 0 ? Json::parse(result.out)["tests"] : Json::array();
}

/// The supplement of the first test.
Json SupplementOf(const std::string& arguments, const std::string& table = SmallTable()) {
    const Json tests = TestsOf(table, arguments);
    return tests.empty() ? Json() : tests[0]["supplement"];
}

/// The element of a list that has a text under a key; null for none.
Json Find(const Json& list, const std::string& key, const std::string& text) {
    for (const Json& element : list) {
        if (element[key] == text) return element;
    }
    return {};
}

testing::AssertionResult Near(const Json& number, double expected, double relative = 1e-11) {
    const bool isNear =
        number.is_number() && std::abs(number.get<double>() - expected) <= relative * std::abs(expected);
    return testing::AssertionResult(isNear) << number << ", expected " << expected;
}

}  // namespace

// ---- Samples ----

TEST(Supplements, SummarizesGroupsAndFields) {
    struct Row {
        const char* arguments;
        const char* name;
        double n, missing, q1, median, q3;
        Json lower, upper;
    };
    // Thompson's interval: the 1st and the last of 6, the 2nd and the last but one of 11; below 6 cases there is none.
    const std::vector<Row> rows{
        {"--independent x --group s --tests mann-whitney", "f", 5, 0, 3, 4, 7, nullptr, nullptr},
        {"--independent x --group s --tests mann-whitney", "m", 6, 1, 5, 5.5, 6, 4, 9},
        {"--related x,y --tests wilcoxon", "x", 11, 1, 4, 5, 6.5, 3, 8},
        {"--related y,x --tests sign", "y", 11, 0, 5, 7, 8.5, 5, 9},
        {"--one-sample x --tests runs", "x", 11, 1, 4, 5, 6.5, 3, 8},
        {"--related x,y,z --tests friedman", "z", 10, 1, 6, 7, 8, 5, 9},
    };
    for (const Row& row : rows) {
        const Json sample = Find(SupplementOf(row.arguments)["samples"], "name", row.name);
        EXPECT_EQ(sample["n"], row.n) << row.arguments;
        EXPECT_EQ(sample["missing"], row.missing) << row.arguments;
        EXPECT_EQ(sample["first_quartile"], row.q1) << row.arguments;
        EXPECT_EQ(sample["median"], row.median) << row.arguments;
        EXPECT_EQ(sample["third_quartile"], row.q3) << row.arguments;
        EXPECT_EQ(sample["median_lower"], row.lower) << row.arguments;
        EXPECT_EQ(sample["median_upper"], row.upper) << row.arguments;
    }
}

// Listwise the record without z is lost to x and y, too: x 3 4 4 6 2 5 5 8 6 9 without the one that misses x.
TEST(Supplements, TakesTheRecordsThatListwiseDeletionLeaves) {
    const std::string fields = "--related x,y --one-sample z --tests sign,runs --missing listwise";
    const Json tests = TestsOf(SmallTable(), fields);
    const Json supplement = Find(tests, "test", "RSign")["supplement"];
    const Json sample = Find(supplement["samples"], "name", "x");
    EXPECT_EQ(sample["n"], 10);
    EXPECT_EQ(sample["median"], 5);
    EXPECT_TRUE(Near(supplement["samples"][1]["median"], 6.5));
}

// Each record as often as its weight says.
TEST(Supplements, CountsAWeightAsThatManyCases) {
    std::ifstream file(SmallTable());
    std::string expanded;
    for (std::string line; std::getline(file, line);) {
        const std::string weight = line.substr(line.rfind(',') + 1);
        const int copies = weight == "w" ? 1 : std::stoi(weight);
        for (int i = 0; i < copies; ++i) expanded += line + "\n";
    }
    const harness::ScratchFolder folder;
    const std::string table = folder.Write("expanded.csv", expanded);
    const Words runs{
        "--independent x --group s --tests mann-whitney,kolmogorov-smirnov,median",
        "--independent x --group arm --order arm=low,mid,high --tests kruskal-wallis,jonckheere,median",
        "--related x,y --tests wilcoxon,sign",
        "--related x,y,z --tests friedman,kendall",
        "--related b1,b2 --tests mcnemar",
        "--related b1,b2,b3 --tests cochran",
        "--related c1,c2 --ordinal c1,c2 --tests marginal-homogeneity",
        "--one-sample x --tests wilcoxon,binomial --test-value 4",
        "--one-sample b1 --tests binomial,chi-square",
    };
    for (const std::string& run : runs) {
        const Json weighted = TestsOf(SmallTable(), run + " --exact --weight w");
        const Json plain = TestsOf(table, run + " --exact");
        ASSERT_EQ(weighted.size(), plain.size()) << run;
        for (std::size_t i = 0; i < plain.size(); ++i) {
            const Json& one = weighted[i]["supplement"];
            const Json& other = plain[i]["supplement"];
            EXPECT_EQ(one["samples"], other["samples"]) << run;
            ASSERT_EQ(one["p_values"].size(), other["p_values"].size()) << run;
            for (std::size_t p = 0; p < one["p_values"].size(); ++p) {
                EXPECT_TRUE(Near(one["p_values"][p]["value"], other["p_values"][p]["value"])) << run;
            }
            ASSERT_EQ(one["effects"].size(), other["effects"].size()) << run;
            for (std::size_t e = 0; e < one["effects"].size(); ++e) {
                EXPECT_TRUE(Near(one["effects"][e]["value"], other["effects"][e]["value"])) << run;
                EXPECT_EQ(one["effects"][e]["lower"].is_null(), other["effects"][e]["lower"].is_null()) << run;
            }
            EXPECT_EQ(one["conclusion"], other["conclusion"]) << run;
        }
    }
}

// ---- Exact significances ----

TEST(Supplements, ExactSignificancesAreThoseOfAllArrangements) {
    struct Row {
        const char* arguments;
        double twoSided, less, greater;
    };
    const std::vector<Row> rows{
        {"--independent x --group s --tests mann-whitney", 208.0 / 462, 106.0 / 462, 370.0 / 462},
        // The first group has the larger values where its distribution function lies below.
        {"--independent x --group s --tests kolmogorov-smirnov", 192.0 / 462, 137.0 / 462, 288.0 / 462},
        // fisher_exact([[2, 3], [3, 3]]) of SciPy 1.17
        {"--independent x --group s --tests median", 1, 0.6082251082251083, 0.8246753246753247},
        {"--independent x --group arm --order arm=low,mid,high --tests jonckheere", 0.6002597402597403,
         0.7331601731601731, 0.301991341991342},
        {"--related x,y --tests wilcoxon", 20.0 / 512, 506.0 / 512, 10.0 / 512},
        {"--related x,y --tests sign", 92.0 / 512, 502.0 / 512, 46.0 / 512},
        {"--related y,x --tests sign", 92.0 / 512, 46.0 / 512, 502.0 / 512},
        {"--related b1,b2 --tests mcnemar --success yes", 58.0 / 128, 120.0 / 128, 29.0 / 128},
        {"--related b1,b2 --tests mcnemar --success no", 58.0 / 128, 29.0 / 128, 120.0 / 128},
        {"--related c1,c2 --ordinal c1,c2 --tests marginal-homogeneity", 0.4375, 0.21875, 0.90625},
        {"--one-sample x --tests wilcoxon --test-value 4", 42.0 / 512, 501.0 / 512, 21.0 / 512},
        {"--one-sample x --tests runs", 62.0 / 330, 47.0 / 330, 319.0 / 330},
        // binomtest(8, 12) of SciPy 1.17
        {"--one-sample b1 --tests binomial --success yes", 0.3876953125, 0.927001953125, 0.19384765625},
    };
    for (const Row& row : rows) {
        const std::string exact = std::string(row.arguments) + " --exact --alternative ";
        const auto found = [&](const std::string& alternative) {
            return Find(SupplementOf(exact + alternative)["p_values"], "kind", "exact")["value"];
        };
        EXPECT_TRUE(Near(found("two-sided"), row.twoSided)) << row.arguments;
        EXPECT_TRUE(Near(found("less"), row.less)) << row.arguments;
        EXPECT_TRUE(Near(found("greater"), row.greater)) << row.arguments;
    }
}

TEST(Supplements, ExactSignificancesOfSeveralSamples) {
    struct Row {
        const char* arguments;
        double p;
    };
    const std::vector<Row> rows{
        {"--independent x --group arm --tests kruskal-wallis", 4944.0 / 11550},
        {"--independent x --group arm --tests median", 8850.0 / 11550},
        {"--related x,y,z --tests friedman", 0.04970898110044201},
        {"--related x,y,z --tests kendall", 0.04970898110044201},
        {"--related b1,b2,b3 --tests cochran", 0.5898491083676269},
        // The first less 1, and zeros with ranks that count for nothing (Pratt).
        {"--independent x --group s --tests mann-whitney --test-value 1", 137.0 / 462},
        {"--related x,y --tests wilcoxon --test-value 1", 0.50390625},
        {"--related x,y --tests wilcoxon --zeros pratt", 0.0390625},
    };
    for (const Row& row : rows) {
        const Json supplement = SupplementOf(std::string(row.arguments) + " --exact");
        EXPECT_TRUE(Near(Find(supplement["p_values"], "kind", "exact")["value"], row.p)) << row.arguments;
    }
}

TEST(Supplements, ClaimsNameTheSamplesInTheirOrder) {
    const auto claim = [](const std::string& arguments) {
        return SupplementOf(arguments)["p_values"][0]["claim"].get<std::string>();
    };
    EXPECT_EQ(claim("--independent x --group s --tests mann-whitney --alternative less"), "f smaller than m");
    EXPECT_EQ(claim("--independent x --group s --tests kolmogorov-smirnov --alternative greater"), "f larger than m");
    EXPECT_EQ(claim("--related x,y --tests sign --alternative greater"), "y larger than x");
    EXPECT_EQ(claim("--related y,x --tests wilcoxon --alternative greater"), "x larger than y");
    EXPECT_EQ(claim("--related y,x --tests wilcoxon --alternative less --test-value -2"), "x minus y smaller than -2");
    EXPECT_EQ(claim("--related x,y --tests wilcoxon --test-value 1"), "y minus x other than 1");
    EXPECT_EQ(claim("--related b2,b1 --tests mcnemar --alternative greater"), "successes more often in b2 than in b1");
    EXPECT_EQ(claim("--independent x --group arm --order arm=low,mid,high --tests jonckheere --alternative less"),
              "x falling with arm");
}

// ---- Random arrangements ----

TEST(Supplements, RandomArrangementsDependOnTheSeedAloneAndHoldTheExactSignificance) {
    const Words runs{"--independent x --group s --tests mann-whitney", "--independent x --group arm --tests median",
                     "--related x,y --tests wilcoxon", "--related x,y,z --tests friedman"};
    for (const std::string& run : runs) {
        const auto estimated = [&](const std::string& more) {
            const Json supplement = SupplementOf(run + " --exact --monte-carlo 20000 --seed " + more);
            const Json exact = Find(supplement["p_values"], "kind", "exact")["value"];
            const Json estimate = Find(supplement["p_values"], "kind", "monte-carlo");
            EXPECT_LE(estimate["lower"].get<double>(), exact.get<double>()) << run;
            EXPECT_GE(estimate["upper"].get<double>(), exact.get<double>()) << run;
            return estimate;
        };
        const Json alone = estimated("7 --threads 1");
        EXPECT_EQ(estimated("7 --threads 2"), alone) << run;
        EXPECT_EQ(estimated("7 --threads 5"), alone) << run;
        EXPECT_NE(estimated("8")["value"], alone["value"]) << run;
    }
}

// ---- Like R and SciPy ----

// The calls and their significances as tests/command/supplements/check.py recorded them.
TEST(Supplements, ShowsTheCallOfTheOtherSystemAndItsSignificance) {
    std::ifstream file(harness::SourcePath("tests/command/supplements/like.tsv"));
    ASSERT_TRUE(file.is_open());
    for (std::string line; std::getline(file, line);) {
        std::istringstream cells(line);
        std::string system;
        std::string arguments;
        std::string call;
        std::string p;
        std::getline(cells, system, '\t');
        std::getline(cells, arguments, '\t');
        std::getline(cells, call, '\t');
        std::getline(cells, p, '\t');
        const Json tests = TestsOf(SmallTable(), arguments + " --like " + system);
        ASSERT_FALSE(tests.empty()) << line;
        EXPECT_EQ(tests[0]["supplement"]["call"], call) << line;
        // One of its own stands first; else it is that of the document.
        Json shown = tests[0]["supplement"]["p_values"];
        if (shown.empty() || tests[0]["test"] == "RFriedmansTwoWayByRanks" ||
            tests[0]["test"] == "RKendallsCoefficient" || tests[0]["test"] == "RCochransQ" ||
            tests[0]["test"] == "IKruskalWallis") {
            shown = tests[0]["statistics"][0]["p_values"];
        }
        // R works out Kolmogorov's limit to 1e-6 only.
        const bool isOfLimit = call.starts_with("ks.test");
        EXPECT_TRUE(Near(shown[0]["value"], std::stod(p), isOfLimit ? 1e-5 : 1e-9)) << line;
    }
}

// mcnemar.test of R 4.2 takes two factors of the same two levels; the chi-square of 3 changes against none is 4 / 3.
TEST(Supplements, TheCallMakesTwoClassesWhereFieldsHaveOthers) {
    const harness::ScratchFolder folder;
    const std::string table = folder.Write("b.csv", "a,b\nyes,yes\nyes,no\nyes,no\nyes,no\n");
    const Json supplement = SupplementOf("--related a,b --tests mcnemar --success yes --like r --nominal a,b", table);
    EXPECT_EQ(supplement["call"],
              R"(mcnemar.test(factor(a == "yes", c(FALSE, TRUE)), factor(b == "yes", c(FALSE, TRUE))))");
    EXPECT_TRUE(Near(supplement["p_values"][0]["value"], 0.2482130789899236));
}

TEST(Supplements, SaysWhyThereIsNoCall) {
    const auto remarks = [](const std::string& arguments) { return SupplementOf(arguments)["remarks"].dump(); };
    EXPECT_NE(remarks("--one-sample x --tests runs --like r").find("no call"), std::string::npos);
    EXPECT_NE(remarks("--related x,y --tests wilcoxon --like r --zeros pratt").find("zeros"), std::string::npos);
    EXPECT_NE(remarks("--independent x --group s --tests mann-whitney --like scipy --exact").find("no account of ties"),
              std::string::npos);
    EXPECT_NE(remarks("--independent x --group s --tests mann-whitney --like r --weight w").find("weights"),
              std::string::npos);
    // What the other system doesn't have is no reason to leave out what there is.
    const Json runs = SupplementOf("--one-sample x --tests runs --like r");
    EXPECT_TRUE(Near(Find(runs["p_values"], "kind", "exact")["value"], 62.0 / 330));
}

// ---- Families, letters, conclusions ----

// p.adjust of R 4.2 on the significances of the three pairs, 0.0736382701203026, 0.0253473186774683 and
// 0.654720846018577.
TEST(Supplements, AdjustsPairs) {
    const std::vector<std::pair<std::string, std::vector<double>>> methods{
        {"holm", {0.147276540240605, 0.0760419560324049, 0.654720846018577}},
        {"hochberg", {0.147276540240605, 0.0760419560324049, 0.654720846018577}},
        {"hommel", {0.147276540240605, 0.0760419560324049, 0.654720846018577}},
        {"bh", {0.110457405180454, 0.0760419560324049, 0.654720846018577}},
        {"by", {0.202505242830832, 0.139410252726076, 1}},
        {"bonferroni", {0.220914810360908, 0.0760419560324049, 1}},
        {"none", {0.0736382701203026, 0.0253473186774683, 0.654720846018577}},
    };
    for (const auto& [method, expected] : methods) {
        const Json supplement =
            SupplementOf("--related x,y,z --tests friedman --compare pairwise --alpha 0.2 --adjust " + method);
        ASSERT_EQ(supplement["adjusted_pairs"].size(), expected.size()) << method;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_TRUE(Near(supplement["adjusted_pairs"][i], expected[i])) << method;
        }
    }
}

// p.adjust(c(0.0308395772785225, 0.1796875, 0.248213078989924, 0.367879441171442), "hommel") of R 4.2
TEST(Supplements, AdjustsTheTestsOfARun) {
    const Json tests = TestsOf(SmallTable(),
                               "--related x,y --one-sample b1,c2 --nominal c2 --tests wilcoxon,sign,chi-square "
                               "--test-value 0 --adjust hommel");
    const std::vector<double> expected{0.12335830911409, 0.367879441171442, 0.367879441171442, 0.367879441171442};
    ASSERT_EQ(tests.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(Near(tests[i]["supplement"]["adjusted_p"], expected[i]));
    }
}

// The alternative that was asked for is what is adjusted, not the significance to both sides: Holm's steps of the
// one-sided ones that the same call shows, the sign test's 0.1796875 / 2 = 0.08984375 (binom.test of R 4.2) among them.
TEST(Supplements, AdjustsTheSignificancesThatWereChosen) {
    const Json tests =
        TestsOf(SmallTable(), "--related x,y --tests wilcoxon,sign --alternative less --exact --adjust bonferroni");
    ASSERT_EQ(tests.size(), 2U);
    for (const Json& test : tests) {
        const Json& supplement = test["supplement"];
        const Json& exact = supplement["p_values"].back();
        ASSERT_EQ(exact["kind"], "exact");
        ASSERT_EQ(exact["alternative"], "less");
        EXPECT_TRUE(Near(supplement["adjusted_p"], std::min(1.0, 2 * exact["value"].get<double>())));
        EXPECT_FALSE(Near(supplement["adjusted_p"], test["statistics"][0]["p_values"].back()["value"].get<double>()));
    }
}

// By Holm's steps x differs from y and from z at the level of 0.2, and y and z don't: x has a letter of its own. At
// 0.06 and without adjustment x differs from z alone, so that y has a letter with each.
TEST(Supplements, LettersFollowTheAdjustedPairs) {
    const auto letters = [](const std::string& more) {
        return SupplementOf("--related x,y,z --tests friedman --compare pairwise " + more)["letters"].dump();
    };
    EXPECT_EQ(letters("--alpha 0.2 --adjust holm"), R"({"x":"a","y":"b","z":"b"})");
    EXPECT_EQ(letters("--alpha 0.06 --adjust none"), R"({"x":"a","y":"ab","z":"b"})");
}

TEST(Supplements, ConclusionsNameTheirDirection) {
    const harness::ScratchFolder folder;
    std::string rows = "a,b,g,d\n";
    for (int i = 0; i < 12; ++i) {
        rows += std::to_string(i) + "," + std::to_string(3 * i + 5) + "," + (i < 6 ? "p" : "q") + "," +
                std::to_string(i / 4 + 1) + "\n";
    }
    const std::string table = folder.Write("far.csv", rows);
    const auto conclusion = [&](const std::string& arguments) {
        return SupplementOf(arguments, table)["conclusion"].get<std::string>();
    };
    EXPECT_EQ(conclusion("--related a,b --tests sign"),
              "At the 5 % level b is more often larger than a than the other way round.");
    EXPECT_EQ(conclusion("--related b,a --tests sign"),
              "At the 5 % level a is more often smaller than b than the other way round.");
    EXPECT_EQ(conclusion("--related a,b --tests wilcoxon"),
              "At the 5 % level the differences b minus a are not symmetric about 0 and tend to lie above it.");
    EXPECT_EQ(conclusion("--related b,a --tests wilcoxon"),
              "At the 5 % level the differences a minus b are not symmetric about 0 and tend to lie below it.");
    EXPECT_EQ(conclusion("--independent a --group g --tests mann-whitney"),
              "At the 5 % level the distributions differ: values of a tend to be smaller in p than in q.");
    EXPECT_EQ(conclusion("--independent a --group g --order g=q,p --tests mann-whitney"),
              "At the 5 % level the distributions differ: values of a tend to be larger in q than in p.");
    EXPECT_EQ(conclusion("--independent a --group d --order d=1,2,3 --tests jonckheere"),
              "At the 5 % level the values of a tend to rise with the order of the groups.");
    EXPECT_EQ(conclusion("--independent a --group d --order d=3,2,1 --tests jonckheere"),
              "At the 5 % level the values of a tend to fall with the order of the groups.");
    EXPECT_EQ(conclusion("--independent a --group d --order d=1,2,3 --tests jonckheere --descending"),
              "At the 5 % level the values of a tend to rise with the order of the groups.");
    EXPECT_EQ(conclusion("--one-sample a --tests wilcoxon --test-value 20"),
              "At the 5 % level the values of a tend to lie below 20; where they are symmetric, so does their median.");
}

// Five differences of one sign have an exact significance of 2 / 32: their limits hold 0. So have 3 and 3 values apart,
// 2 / 20, and of six differences, 2 / 64, they don't.
TEST(Supplements, LimitsOfSmallSamplesHoldNoEffectUnlessTheExactTestSpeaksAgainstIt) {
    const harness::ScratchFolder folder;
    const std::string pairs = folder.Write("pairs.csv", "a,b,c\n1,2,1\n1,3,1\n1,4,1\n1,5,1\n1,6,1\n,9,1\n");
    const auto effect = [](const Json& supplement, const char* key) { return Find(supplement["effects"], "key", key); };
    const Json five = effect(SupplementOf("--related a,b --tests wilcoxon", pairs), "matched-rank-biserial");
    EXPECT_EQ(five["value"], 1);
    EXPECT_EQ(five["lower"], 0);
    const Json six = effect(SupplementOf("--related c,b --tests wilcoxon", pairs), "matched-rank-biserial");
    EXPECT_GT(six["lower"].get<double>(), 0);
    const std::string groups = folder.Write("groups.csv", "a,g\n1,p\n2,p\n3,p\n4,q\n5,q\n6,q\n");
    const Json three = SupplementOf("--independent a --group g --tests mann-whitney", groups);
    EXPECT_EQ(effect(three, "probability-of-superiority")["upper"], 0.5);
    EXPECT_EQ(effect(three, "rank-biserial")["upper"], 0);
}

// 1e-17 is no zero: 2 of 3 differences are positive, as the document counts them.
TEST(Supplements, SmallDifferencesBesideZerosAreNone) {
    const harness::ScratchFolder folder;
    const std::string table = folder.Write("zeros.csv", "a,b\n0,0\n0,1e-17\n0,1\n0,-2\n");
    const Json supplement = SupplementOf("--related a,b --tests wilcoxon --exact", table);
    // Ranks 1, 2 and 3 of which 1 and 2 are positive: all signs have 3 or what is as far from 3.
    EXPECT_EQ(Find(supplement["p_values"], "kind", "exact")["value"], 1);
    EXPECT_EQ(Find(supplement["effects"], "key", "matched-rank-biserial")["value"], 0);
}

// ---- Odd data ----

TEST(Supplements, OddTablesHaveNoNumbersThatAreNone) {
    const harness::ScratchFolder folder;
    const Words tables{
        folder.Write("equal.csv", "a,b,g\n2,2,p\n2,2,q\n2,2,p\n2,2,q\n"),
        folder.Write("single.csv", "a,b,g\n1,2,p\n3,4,q\n5,5,q\n7,9,q\n"),
        folder.Write("constant.csv", "a,b,g\n1,2,p\n3,4,q\n5,6,q\n7,8,p\n"),
        folder.Write("infinite.csv", "a,b,g\n1,2,p\n1e308,-1e308,q\n5,6,q\n7,8,p\n"),
        folder.Write("lonely.csv", "a,b,g\n1,2,p\n3,5,p\n5,6,p\n"),
        folder.Write("one.csv", "a,b,g\n1,2,p\n"),
    };
    const Words runs{"--related a,b --tests wilcoxon,sign,friedman",
                     "--independent a --group g --tests mann-whitney,kolmogorov-smirnov,kruskal-wallis,median",
                     "--one-sample a --tests wilcoxon,runs,binomial,kolmogorov-smirnov --test-value 2"};
    for (const std::string& table : tables) {
        for (const std::string& run : runs) {
            for (const char* more :
                 {"", " --exact --monte-carlo 100 --alternative less", " --like r", " --like scipy"}) {
                Words all{"analyze", table, "--format", "json"};
                std::ranges::copy(WordsOf(run + more), std::back_inserter(all));
                const harness::CommandResult result = harness::RunTarn(all);
                EXPECT_LT(result.exitStatus, 3) << table << " " << run << more << "\n" << result.err;
                for (const Json& test : result.out.empty() ? Json::array() : Json::parse(result.out)["tests"]) {
                    if (test["supplement"].is_null()) continue;
                    for (const Json& effect : test["supplement"]["effects"]) {
                        EXPECT_TRUE(effect["value"].is_number()) << table << " " << run << more << effect;
                    }
                    for (const Json& p : test["supplement"]["p_values"]) {
                        if (!p["value"].is_number()) {
                            EXPECT_EQ(p["value"], "nan") << table << run;
                            continue;
                        }
                        EXPECT_LE(p["value"].get<double>(), 1) << table << " " << run << more;
                        EXPECT_GE(p["value"].get<double>(), 0) << table << " " << run << more;
                    }
                }
            }
        }
    }
}

TEST(Supplements, RefusesNumbersOfArrangementsThatAreNone) {
    const auto refusal = [](const std::string& more) {
        Words all{"analyze", SmallTable(), "--related", "x,y", "--tests", "wilcoxon"};
        std::ranges::copy(WordsOf(more), std::back_inserter(all));
        const harness::CommandResult result = harness::RunTarn(all);
        EXPECT_EQ(result.exitStatus, 2) << more;
        return result.err;
    };
    const std::string draws = "; expected a whole number from 1 to 1000000000\n";
    EXPECT_EQ(refusal("--monte-carlo -5"), "tarn: --monte-carlo: \"-5\"" + draws);
    EXPECT_EQ(refusal("--monte-carlo 0"), "tarn: --monte-carlo: \"0\"" + draws);
    EXPECT_EQ(refusal("--monte-carlo 1e5"), "tarn: --monte-carlo: \"1e5\"" + draws);
    EXPECT_EQ(refusal("--monte-carlo 99999999999999999999"), "tarn: --monte-carlo: \"99999999999999999999\"" + draws);
    EXPECT_TRUE(refusal("--monte-carlo 10 --seed -1").starts_with("tarn: --seed: \"-1\"; expected a whole number"));
    EXPECT_NE(refusal("--seed 3").find("--monte-carlo"), std::string::npos);
}

// A run that takes a minute ends where it is.
TEST(Supplements, AnInterruptEndsRandomArrangementsAndLeavesNoDocument) {
    const harness::ScratchFolder folder;
    std::string rows = "a,g\n";
    for (int i = 0; i < 20000; ++i) rows += std::to_string(i * 7919 % 10007) + (i % 2 == 0 ? ",p\n" : ",q\n");
    const std::string table = folder.Write("many.csv", rows);
    const harness::CommandResult result =
        harness::RunTarnInterrupted({"analyze", table, "--independent", "a", "--group", "g", "--tests", "mann-whitney",
                                     "--monte-carlo", "10000000", "--out", folder.Path("result.xml")},
                                    0.5);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("cancelled"), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(folder.Files(), Words{"many.csv"});
}
