// What a user could misread or be misled by, as one types it: a word that is no category, words without an order, a
// level in percent, weights that are rounded, the direction of a difference, many tests at once.

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/harness/Command.h"
#include "tests/harness/WithinUlp.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;
using nlohmann::json;

// Breaks of looms by tension, 9 of R's data set warpbreaks, and answers with the numbers that stand for them.
constexpr const char* kLooms =
    "breaks,tension,level,answer,score,after,again,Survived,id,n\n"
    "26,H,3,poor,1,fair,2,Yes,a,1\n"
    "30,L,1,fair,2,good,3,No,b,1.5\n"
    "54,L,1,good,3,very good,4,Yes,c,0.2\n"
    "25,M,2,fair,2,fair,2,No,a,1\n"
    "70,L,1,good,3,good,3,Yes,d,NA\n"
    "52,H,3,poor,1,fair,2,No,e,-2\n"
    "51,M,2,good,3,very good,4,Yes,f,1\n"
    "26,H,3,fair,2,poor,1,No,a,1\n"
    "67,L,1,very good,4,good,3,No,g,1\n";

constexpr const char* kAnswerOrder = "answer,after=poor,fair,good,very good";

class Misreadings : public testing::Test {
 protected:
    CommandResult Run(std::vector<std::string> more) {
        std::vector<std::string> arguments{"analyze", folder.Write("looms.csv", kLooms)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTarn(arguments);
    }

    json Json(std::vector<std::string> more) {
        more.insert(more.end(), {"--format", "json"});
        const CommandResult result = Run(more);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        return json::parse(result.out);
    }

    std::string Text(const std::vector<std::string>& more) {
        const CommandResult result = Run(more);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        return result.out;
    }

    /// The one line in which a command is refused.
    std::string Refusal(const std::vector<std::string>& more) {
        const CommandResult result = Run(more);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        return result.err;
    }

    ScratchFolder folder;
};

/// The text with a blank for each break of a line, and for its indent.
std::string InOneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\n';
        if (!isBlank || !line.ends_with(' ')) line += isBlank ? ' ' : c;
    }
    return line;
}

/// Whether a part stands in a text, in however many lines.
testing::AssertionResult Holds(const std::string& text, const std::string& part) {
    if (InOneLine(text).find(InOneLine(part)) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << part << "\" in\n" << text;
}

// ---- Categories ----

TEST_F(Misreadings, AWordThatIsNoCategoryIsRefusedWithTheNearOne) {
    EXPECT_EQ(Refusal({"--one-sample", "Survived", "--tests", "binomial", "--success", "yes"}),
              "tarn: --success: no category \"yes\" in Survived; did you mean Yes?\n");
    EXPECT_TRUE(Holds(Refusal({"--related", "Survived,answer", "--tests", "cochran", "--success", "perhaps"}),
                      "no category \"perhaps\" in Survived, answer"));
    EXPECT_TRUE(Holds(Refusal({"--one-sample", "Survived", "--tests", "binomial", "--success", "Yes,No"}),
                      "names all categories of Survived"));
    EXPECT_TRUE(Holds(Refusal({"--one-sample", "breaks", "--tests", "binomial", "--success", "30"}),
                      "no field of the request has categories"));
    // A word of one field is none of the other, which would have no first class.
    EXPECT_TRUE(Holds(Refusal({"--one-sample", "Survived,tension", "--tests", "binomial", "--success", "Yes"}),
                      "no category \"Yes\" in tension"));
}

// The first class would be that of the first record.
TEST_F(Misreadings, AShareIsOfACategoryThatIsNamed) {
    const std::string text = Text({"--one-sample", "Survived", "--tests", "binomial", "--probability", "0.7"});
    EXPECT_TRUE(Holds(text, "The categories Yes and No of Survived occur with the probabilities 0.7 and 0.3."));
    EXPECT_TRUE(Holds(text, "Note: --probability is taken for the share of the category of the first record"));
    EXPECT_TRUE(Holds(Refusal({"--one-sample", "breaks", "--tests", "binomial", "--probability", "70"}),
                      "--probability: 70; expected a share between 0 and 1"));
}

TEST_F(Misreadings, AFieldStandsOnce) {
    EXPECT_TRUE(Holds(Refusal({"--related", "score,score"}), "--related: \"score\" stands twice"));
    EXPECT_TRUE(Holds(Refusal({"--independent", "breaks,level", "--group", "level"}),
                      "--group: \"level\" is among the fields of --independent"));
}

TEST_F(Misreadings, ACategoryCanBeNamedByItsLabel) {
    const std::string fields = folder.Write("fields.json", R"({"fields": [{"name": "level", "level": "nominal",
        "categories": [{"value": 1, "label": "low"}, {"value": 2, "label": "medium"}, {"value": 3, "label": "high"}]}]})");
    const auto share = [&](const std::string& success) {
        return Json({"--fields", fields, "--one-sample", "level", "--tests", "binomial", "--success",
                     success})["tests"][1]["intervals"][0]["estimate"];
    };
    EXPECT_TRUE(harness::WithinUlp(share("low").get<double>(), 4.0 / 9, 8));  // 4 of 9 looms, written with 15 digits
    EXPECT_EQ(share("low"), share("1"));
}

// ---- Orders ----

TEST_F(Misreadings, AnOrderOfWordsIsNotTakenFromTheAlphabet) {
    EXPECT_EQ(
        Refusal({"--independent", "breaks", "--group", "tension", "--tests", "jonckheere"}),
        "tarn: jonckheere needs the order of tension, and \"H\", \"L\" and \"M\" are words: tell their order from the "
        "lowest to the highest, --order tension=L,M,H\n");
    EXPECT_TRUE(Holds(Refusal({"--related", "answer,after", "--tests", "marginal-homogeneity"}),
                      "marginal-homogeneity scores the categories of answer"));
    EXPECT_TRUE(Holds(Refusal({"--independent", "answer,breaks", "--group", "Survived", "--ordinal", "answer"}),
                      "mann-whitney ranks answer"));
    EXPECT_TRUE(Holds(Refusal({"--independent", "answer", "--group", "Survived"}), "mann-whitney ranks answer"));
    EXPECT_TRUE(Holds(Refusal({"--related", "score,answer", "--tests", "sign"}), "sign ranks answer"));
    EXPECT_TRUE(
        Holds(Refusal({"--one-sample", "answer", "--tests", "kolmogorov-smirnov"}), "kolmogorov-smirnov ranks answer"));
    EXPECT_TRUE(Holds(Refusal({"--related", "answer,after", "--ordinal", "answer,after", "--tests", "wilcoxon"}),
                      "wilcoxon ranks answer"));
}

// The same looms with numbers in place of the words, which have an order of their own.
TEST_F(Misreadings, ATrendFollowsTheToldOrderAndShowsIt) {
    const std::vector<std::string> words{"--independent", "breaks",     "--group", "tension",
                                         "--tests",       "jonckheere", "--order", "tension=L,M,H"};
    const json byWords = Json(words)["tests"][0];
    const json byNumbers = Json({"--independent", "breaks", "--group", "level", "--tests", "jonckheere"})["tests"][0];
    EXPECT_EQ(byWords["statistics"], byNumbers["statistics"]);
    EXPECT_EQ(byWords["scales"][0]["categories"], (json{"L", "M", "H"}));
    EXPECT_TRUE(Holds(Text(words), "   Order of tension: L < M < H\n"));
}

TEST_F(Misreadings, RankTestsTakeWordsByTheirPositionsAndShowThem) {
    struct Case {
        const char* words;
        const char* numbers;
    };
    for (const auto& [words, numbers] :
         {Case{"--independent answer --group Survived --tests mann-whitney,moses,kolmogorov-smirnov,median",
               "--independent score --group Survived --tests mann-whitney,moses,kolmogorov-smirnov,median"},
          Case{"--independent answer --group tension", "--independent score --group tension"},
          Case{"--related answer,after --tests wilcoxon,sign,hodges-lehmann,friedman",
               "--related score,again --tests wilcoxon,sign,hodges-lehmann,friedman"},
          Case{"--one-sample answer --tests wilcoxon --test-value 2",
               "--one-sample score --tests wilcoxon --test-value 2"}}) {
        const auto run = [&](const std::string& line) {
            std::vector<std::string> arguments;
            for (std::size_t start = 0; start < line.size();) {
                const std::size_t end = std::min(line.find(' ', start), line.size());
                arguments.push_back(line.substr(start, end - start));
                start = end + 1;
            }
            arguments.insert(arguments.end(), {"--order", kAnswerOrder});
            return Json(arguments)["tests"];
        };
        const json byWords = run(words);
        const json byNumbers = run(numbers);
        ASSERT_EQ(byWords.size(), byNumbers.size());
        ASSERT_FALSE(byWords.empty());
        for (std::size_t i = 0; i < byWords.size(); ++i) {
            EXPECT_EQ(byWords[i]["statistics"], byNumbers[i]["statistics"]) << words;
            EXPECT_EQ(byWords[i]["intervals"], byNumbers[i]["intervals"]) << words;
            EXPECT_EQ(byWords[i]["scales"][0]["categories"], (json{"poor", "fair", "good", "very good"})) << words;
            EXPECT_EQ(byWords[i]["scales"][0]["scores"], (json{1, 2, 3, 4})) << words;
        }
    }
}

// SciPy 1.17.1, mannwhitneyu([2, 2, 1, 2, 4], [1, 3, 3, 3], method="asymptotic", use_continuity=False): the answers of
// those who said No and Yes.
TEST_F(Misreadings, MannWhitneyOfWordsIsThatOfTheirRanks) {
    const std::vector<std::string> arguments{"--independent", "answer", "--group", "Survived", "--order", kAnswerOrder};
    const json set = Json(arguments)["tests"][0]["statistics"][0];
    EXPECT_EQ(set["statistic"], 7.5);
    EXPECT_NEAR(set["p_values"][0]["value"].get<double>(), 0.5243108008991832, 1e-12);
    EXPECT_TRUE(Holds(Text(arguments), "   Scores of answer: poor 1, fair 2, good 3, very good 4\n"));
}

TEST_F(Misreadings, MarginalHomogeneityScoresWordsInTheirOrder) {
    const json byWords = Json({"--related", "answer,after", "--tests", "marginal-homogeneity", "--order",
                               kAnswerOrder})["tests"][0]["statistics"][0];
    const json byNumbers = Json({"--related", "score,again", "--tests", "marginal-homogeneity", "--ordinal",
                                 "score,again"})["tests"][0]["statistics"][0];
    EXPECT_EQ(byWords, byNumbers);
}

// ---- Levels ----

TEST_F(Misreadings, ALevelIsAShareUpToOneAndPercentAbove) {
    const std::vector<std::string> pair{"--related", "score,again", "--tests", "hodges-lehmann"};
    const auto with = [&](const std::vector<std::string>& more) {
        std::vector<std::string> arguments = pair;
        arguments.insert(arguments.end(), more.begin(), more.end());
        json result = Json(arguments);
        result.erase("record");  // which has the words as they were typed
        return result;
    };
    EXPECT_EQ(with({"--confidence", "0.9"}), with({"--confidence", "90"}));
    EXPECT_EQ(with({"--confidence", "0.9"})["confidence_level"], 0.9);
    EXPECT_EQ(with({"--alpha", "5"}), with({"--alpha", "0.05"}));
    EXPECT_EQ(with({"--alpha", "1.5"})["significance_level"], 0.015);
    EXPECT_TRUE(Holds(Refusal({"--related", "score,again", "--alpha", "95"}), "did you mean --confidence?"));
    EXPECT_TRUE(Holds(Refusal({"--related", "score,again", "--confidence", "0.05"}), "did you mean --alpha?"));
    for (const char* wrong : {"0", "1", "100", "-5", "1000"}) {
        EXPECT_TRUE(Holds(Refusal({"--related", "score,again", "--alpha", wrong}), "--alpha: ")) << wrong;
        EXPECT_TRUE(Holds(Refusal({"--related", "score,again", "--confidence", wrong}), "--confidence: ")) << wrong;
    }
    EXPECT_TRUE(Holds(Text({"--related", "score,again", "--alpha", "5"}), "At the 5 % level"));
    EXPECT_TRUE(Holds(Text({"--related", "score,again", "--tests", "hodges-lehmann", "--confidence", "0.9"}),
                      "Interval: 90 %\n"));
}

// ---- Notes ----

// Weights 1, 1.5, .2, 1, missing, -2, 1, 1, 1: 1.5 counts as 2, .2 as 0.
TEST_F(Misreadings, WeightsThatChangeAreCounted) {
    const std::string note =
        "weights of n: 1 record rounded to whole numbers, 1 record rounded to 0, 1 record with a negative weight left "
        "out, 1 record without a weight left out, of 9 in all; the weights add up to 4.7 and count as 7";
    const std::vector<std::string> request{"--related", "score,again", "--weight", "n"};
    EXPECT_TRUE(Holds(Text(request), "\nNote: " + note + "\n"));
    EXPECT_EQ(Json(request)["notes"][0], note);
    const CommandResult csv = Run({"--related", "score,again", "--weight", "n", "--format", "csv"});
    EXPECT_EQ(csv.err, "tarn: note: " + note + "\n");
}

TEST_F(Misreadings, TheWeightsOfAPlanAreCountedAsTheEngineCutsThem) {
    const std::string plan =
        folder.Write("plan.json", R"({"tests": [{"RSign": {"variableName": ["score", "again"]}}]})");
    const CommandResult result = RunTarn(
        {"run", "--data", folder.Write("looms.csv", kLooms), "--plan", plan, "--weight", "n", "--format", "csv"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(
        Holds(result.err,
              "tarn: note: weights of n: 1 record cut to whole numbers, 1 record cut to 0, 1 record with a "
              "negative weight, which is subtracted, 1 record without a weight, which the engine takes for "
              "-2147483648, so that no count with it is right, of 9 in all; the weights add up to 4.7 and count "
              "as 4\n"));
}

TEST_F(Misreadings, WordsAmongNumbersAreNamed) {
    const std::string data = folder.Write("mixed.csv", "x,g\n1,a\n2,b\nrefused,a\n4,b\n5,a\n6,b\n7,A\n");
    const CommandResult ranked = RunTarn({"analyze", data, "--independent", "x", "--group", "g"});
    EXPECT_EQ(ranked.exitStatus, 2);
    EXPECT_TRUE(Holds(ranked.err, "x, which is read as words and not as numbers, since it has \"refused\""));
    const CommandResult counted = RunTarn({"analyze", data, "--one-sample", "x"});
    EXPECT_TRUE(Holds(counted.out, "Note: x is read as words and not as numbers, since it has \"refused\""));
    const CommandResult cases = RunTarn({"analyze", data, "--one-sample", "g"});
    EXPECT_TRUE(Holds(cases.out, "Note: \"A\", \"a\" of g differ in nothing but case or blanks"));
}

TEST_F(Misreadings, ValuesThatADescriptionDoesNotListAreNamed) {
    const std::string fields = folder.Write(
        "fields.json", R"({"fields": [{"name": "score", "categories": [1, 2, 3], "categoriesOrdered": true}]})");
    EXPECT_TRUE(Holds(Text({"--fields", fields, "--one-sample", "score"}),
                      "Note: score has 4, which its description doesn't list"));
}

TEST_F(Misreadings, TiesAreNamedWhereTheSignificanceTakesNoAccountOfThem) {
    const std::string text = Text({"--independent", "score", "--group", "Survived", "--tests", "mann-whitney,moses"});
    EXPECT_TRUE(
        Holds(text, "Note: there are equal values, of which the exact significance that decides takes no account"));
    EXPECT_TRUE(Holds(text, "Note: 8 records of score share their value with another one"));
    // 26 occurs twice in breaks; without it no value does.
    const std::string data = folder.Write("apart.csv", "x,g\n1,a\n2,b\n3,a\n4,b\n");
    const CommandResult apart =
        RunTarn({"analyze", data, "--independent", "x", "--group", "g", "--tests", "mann-whitney"});
    EXPECT_FALSE(Holds(apart.out, "equal values"));
}

TEST_F(Misreadings, BooleansAreShownByTheirWords) {
    const std::string data = folder.Write("b.csv", "x,g\n1,true\n2,false\n3,true\n4,false\n");
    const std::string fields = folder.Write("b.json", R"({"fields": [{"name": "g", "type": "boolean"}]})");
    const CommandResult result = RunTarn({"analyze", data, "--fields", fields, "--independent", "x", "--group", "g"});
    EXPECT_TRUE(Holds(result.out, "false minus true"));
}

// By hand: relief_a, relief_b and relief_c have 59, 53 and 35 successes among the complete records, so that their order
// is the opposite one of the fields.
TEST_F(Misreadings, SubsetsThatMixFieldsAreNotShown) {
    const auto run = [](const char* related) {
        return RunTarn({"analyze", harness::SourcePath("examples/headache.csv"), "--fields",
                        harness::SourcePath("examples/headache.fields.json"), "--related", related, "--tests",
                        "cochran", "--success", "yes", "--compare", "stepwise", "--as-defined"})
            .out;
    };
    const std::string descending = run("relief_a,relief_b,relief_c");
    EXPECT_TRUE(Holds(descending, "Note: homogeneous subsets are not shown"));
    EXPECT_FALSE(Holds(descending, "Homogeneous subsets, from"));
    const std::string ascending = run("relief_c,relief_b,relief_a");
    EXPECT_TRUE(Holds(ascending, "Homogeneous subsets, from"));
    EXPECT_FALSE(Holds(ascending, "are not shown"));
}

TEST_F(Misreadings, WithoutASignificanceNothingIsDecided) {
    const std::string data = folder.Write("same.csv", "x,y\n1,1\n2,2\n3,3\n");
    const CommandResult result = RunTarn({"analyze", data, "--related", "x,y", "--tests", "wilcoxon"});
    EXPECT_TRUE(Holds(result.out, "   Nothing is decided, as p is undefined.\n"));
}

TEST_F(Misreadings, CasesThatOccurTwiceAreNotIndependent) {
    const std::string note =
        "1 of 7 values of id occur more than once (3 records in all), while breaks is tested as if";
    EXPECT_TRUE(Holds(Text({"--independent", "breaks", "--group", "Survived", "--case-id", "id"}), note));
    EXPECT_FALSE(Holds(Text({"--related", "score,again", "--case-id", "id"}), "occur more than once"));
}

// ---- What the numbers say ----

TEST_F(Misreadings, TestsOfOneRunHaveOneDirectionWithItsNames) {
    const json result =
        Json({"--independent", "breaks", "--group", "Survived", "--tests", "mann-whitney,hodges-lehmann"});
    EXPECT_EQ(result["tests"][0]["direction"], "No minus Yes");
    EXPECT_EQ(result["tests"][1]["direction"], "No minus Yes");
    // By hand: in the pairs of 30, 25, 52, 26, 67 (No) with 26, 54, 70, 51 (Yes) the first is larger 6 times, and one
    // pair is a tie.
    EXPECT_EQ(result["tests"][0]["statistics"][0]["statistic"], 6.5);
    EXPECT_LT(result["tests"][0]["statistics"][0]["standardized"], 0);
    EXPECT_LT(result["tests"][1]["intervals"][0]["estimate"], 0);
    const std::string pair = Text({"--related", "score,again", "--tests", "wilcoxon"});
    EXPECT_TRUE(Holds(pair, "again minus score"));
    EXPECT_TRUE(Holds(pair, "again above score"));
}

TEST_F(Misreadings, CasesAreToldWithWhatIsMissing) {
    const std::string data = folder.Write("few.csv", "x,g\n1,a\n2,b\nNA,a\n4,\n5,b\n6,a\n");
    const CommandResult result = RunTarn({"analyze", data, "--independent", "x", "--group", "g"});
    EXPECT_TRUE(Holds(result.out, " 4 of 6 cases (2 missing)\n"));
    const CommandResult all = RunTarn({"analyze", folder.Write("looms.csv", kLooms), "--related", "score,again"});
    EXPECT_TRUE(Holds(all.out, " 9 of 9 cases\n"));
}

// SciPy 1.17.1, median_test(a, b, ties="below"): 2.5 and .11385 with the continuity correction, 3.6 and .05778 without.
TEST_F(Misreadings, TheMedianTestShowsWhichStatisticBelongsToItsSignificance) {
    std::string data = "x,g\n";
    for (int i = 0; i < 40; ++i) data += std::to_string(i) + (i % 3 == 0 || i > 30 ? ",a\n" : ",b\n");
    const std::string path = folder.Write("halves.csv", data);
    const auto run = [&](const char* format) {
        return RunTarn({"analyze", path, "--independent", "x", "--group", "g", "--tests", "median", "--format", format})
            .out;
    };
    EXPECT_TRUE(Holds(run("text"),
                      "   chi2(1) = 2.50 with continuity correction, p = .114\n"
                      "   chi2(1) = 3.60 without continuity correction, p = .058 asymptotic\n"));
    const json values = json::parse(run("json"))["tests"][0]["statistics"][0]["p_values"];
    EXPECT_EQ(values[0]["statistic"], 3.6);
    EXPECT_EQ(values[1]["statistic"], 2.5);
    EXPECT_TRUE(Holds(run("csv"), "\ntest,1,IMedian,median,independent,x,g,,,,40,2.5,,,1,0.1138"));
}

TEST_F(Misreadings, ManyTestsBeginWithASummaryThatAdjusts) {
    const CommandResult four = Run({"--related", "score,again", "--tests", "sign,wilcoxon,friedman,kendall"});
    EXPECT_TRUE(four.out.starts_with("Sign test: score, again ")) << four.out;
    const CommandResult five = Run({"--independent", "breaks", "--group", "Survived", "--tests",
                                    "mann-whitney,kolmogorov-smirnov,wald-wolfowitz,moses,kruskal-wallis"});
    EXPECT_TRUE(five.out.starts_with("5 tests of breaks by Survived; ")) << five.out;
    EXPECT_TRUE(Holds(five.out, " p  p Holm  p BH\n"));
    EXPECT_TRUE(Holds(five.out, "of 5 tests with p < .05 before adjustment (0.25 expected by chance"));
}

TEST_F(Misreadings, ResultsStandAsTyped) {
    const json tests = Json({"--independent", "score,breaks", "--group", "Survived", "--one-sample", "again,breaks",
                             "--tests", "kruskal-wallis,mann-whitney,kolmogorov-smirnov"})["tests"];
    std::string names;
    for (const json& test : tests) {
        names += test["name"].get<std::string>() + ":" + test["fields"][0].get<std::string>() + " ";
    }
    EXPECT_EQ(names,
              "kruskal-wallis:score mann-whitney:score kolmogorov-smirnov:score kruskal-wallis:breaks "
              "mann-whitney:breaks kolmogorov-smirnov:breaks kolmogorov-smirnov:again kolmogorov-smirnov:breaks ");
}

TEST_F(Misreadings, AnAnalysisInWhichNoTestCouldBeDoneFails) {
    const std::string data = folder.Write("one.csv", "x,g\n1,a\n2,a\n3,a\n");
    const CommandResult result =
        RunTarn({"analyze", data, "--independent", "x", "--group", "g", "--tests", "mann-whitney"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(Holds(result.out, "Not done: "));
    EXPECT_TRUE(Holds(result.err, "no test could be done"));
}

}  // namespace
