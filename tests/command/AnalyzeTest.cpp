// `tarn analyze`, `tarn run --settings` and `tarn tests` as a user meets them: the whole way of a host.

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/report/MessageCatalogue.h"
#include "tests/harness/Command.h"
#include "tests/harness/Document.h"

namespace {

using harness::CommandResult;
using harness::Document;
using harness::RunTarn;
using harness::ScratchFolder;

constexpr const char* kData =
    "before,after,arm,grade,n\n"
    "1,2,a,1,1\n2,1,b,2,2.5\n3,5,a,1,0.3\n4,7,b,3,NA\n5,8,b,2,-1\n6,NA,a,3,1\n";

class Analyze : public testing::Test {
 protected:
    CommandResult Run(std::vector<std::string> more) {
        std::vector<std::string> arguments{"analyze", folder.Write("data.csv", kData)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTarn(arguments);
    }

    /// The document that goes beside the table.
    Document Result(std::vector<std::string> more) {
        more.insert(more.end(), {"--quiet", "--out", folder.Path("result.xml")});
        const CommandResult result = Run(more);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        return Document(harness::ReadFile(folder.Path("result.xml")));
    }

    ScratchFolder folder;
};

TEST_F(Analyze, ShowsTheTableOnStandardOutput) {
    const CommandResult result = Run({"--related", "before,after", "--tests", "sign", "--details"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_TRUE(result.out.starts_with("1. Sign test: before, after\n   H0: ")) << result.out;
    EXPECT_NE(result.out.find("   N: 5 of 6 cases (1 missing)\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("   p                     .375      exact, decides\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("   Decision: retain the null hypothesis at the level 0.05\n"), std::string::npos);
    EXPECT_NE(result.out.find("(220916)\n"), std::string::npos) << result.out;
}

TEST_F(Analyze, RoundsWeightsAndDropsRecordsWithoutAUsableOne) {
    const Document document = Result({"--related", "before,after", "--tests", "sign", "--weight", "n"});
    // Weights as used: 1, 3 (2.5 away from zero), 0, missing, negative, 1; the two of them are dropped.
    const pugi::xml_node counts = document.Root().select_node("//Counts").node();
    EXPECT_STREQ(counts.attribute("totalCount").value(), "6");
    EXPECT_STREQ(counts.attribute("totalFreq").value(), "5");
    EXPECT_STREQ(counts.attribute("droppedCount").value(), "2");
    EXPECT_STREQ(counts.attribute("droppedFreq").value(), "0");
    EXPECT_STREQ(counts.attribute("badWeightCount").value(), "3");
    EXPECT_EQ(document.Test(0).Sub("StatisticsResult").Row("TotalN"), "4");
    EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("NegativeDifferences"), "3");
}

TEST_F(Analyze, OrdinalFieldTakesPartByItsNumbersAndIsTold) {
    const Document document = Result({"--related", "before,grade", "--ordinal", "grade", "--tests", "sign"});
    const harness::Table condition = document.Test(0).Sub("Condition");
    // The required fields alone are in the document; the copy of the ordinal one stands in front in the pair.
    EXPECT_EQ(condition.Row("%0"), "1");
    EXPECT_EQ(condition.Row("%1"), "0");
    EXPECT_EQ(condition.Row("OrdinalTreatedAsCont"), "1");
    // grades 1 2 1 3 2 3 against 1 .. 6: one smaller before than its grade, none; equal 1-1 and 2-2.
    EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("Ties"), "2");
    EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("PositiveDifferences"), "4");
    EXPECT_STREQ(document.Output().child("DataDictionary").attribute("numberOfFields").value(), "2");
}

TEST_F(Analyze, OrdinalFieldOfUserMissingValuesAloneLeavesNoCase) {
    const std::string data = folder.Write("nines.csv", "before,grade\n1,9\n2,9\n3,9\n");
    const std::string fields =
        folder.Write("fields.json", R"({"fields": [{"name": "grade", "type": "integer", "missingValues": [9]}]})");
    const CommandResult result = RunTarn({"analyze", data, "--fields", fields, "--related", "before,grade", "--ordinal",
                                          "grade", "--tests", "sign", "--quiet", "--out", folder.Path("result.xml")});
    ASSERT_EQ(result.exitStatus, 1) << result.err;  // no test could be done
    const Document document(harness::ReadFile(folder.Path("result.xml")));
    EXPECT_EQ(harness::MessagesOf(document.Test(0)), std::vector<std::string>{"220003 error"});
}

TEST_F(Analyze, FirstColumnWithTheNameOfACopyIsToldInOneLine) {
    const std::string data = folder.Write("data.csv", "$_o,o\n1,2\n3,1\n2,3\n");
    const std::string settings = folder.Write("settings.json",
                                              R"({"relatedVariables": ["$_o", "o"], "isAutomaticallyRelated": false,
                                                  "RSign": {"isSelected": true}, "done": true})");
    const std::string out = folder.Path("result.xml");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"analyze", data, "--related", "$_o,o", "--ordinal", "o", "--tests", "sign", "--out",
                                   out},
          {"run", "--data", data, "--ordinal", "o", "--settings", settings, "--out", out}}) {
        const CommandResult result = RunTarn(arguments);
        EXPECT_EQ(result.exitStatus, 2) << arguments.front();
        EXPECT_EQ(result.err,
                  "tarn: the first column of the table, \"$_o\": the engine gives that name to the numbers of the "
                  "ordinal field \"o\"; expected another name, or another column in front\n");
    }
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "settings.json"}));
}

TEST_F(Analyze, LaterColumnWithTheNameOfACopyIsAFieldLikeAnyOther) {
    // By hand: $_o - o is -1, 2 and -1.
    for (const char* table : {"o,$_o\n2,1\n1,3\n3,2\n", "x,$_o,o\n0,1,2\n0,3,1\n0,2,3\n"}) {
        const CommandResult result =
            RunTarn({"analyze", folder.Write("data.csv", table), "--related", "$_o,o", "--ordinal", "o", "--tests",
                     "sign", "--quiet", "--out", folder.Path("result.xml")});
        ASSERT_EQ(result.exitStatus, 0) << result.err;
        const Document document(harness::ReadFile(folder.Path("result.xml")));
        // The copy stands first in the pair, so that a difference is $_o - o.
        EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("PositiveDifferences"), "1");
        EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("NegativeDifferences"), "2");
    }
}

TEST_F(Analyze, ListwiseTreatmentDropsRecordsThatMissAnyRequiredField) {
    const Document document =
        Result({"--related", "before,after", "--tests", "sign", "--missing", "listwise", "--alpha", "0.1"});
    EXPECT_STREQ(document.Root().select_node("//Counts").node().attribute("droppedCount").value(), "1");
    const pugi::xml_node tests = document.Output().child("NonParametricTests");
    EXPECT_STREQ(tests.attribute("missingTreatment").value(), "listwise");
    EXPECT_STREQ(tests.attribute("sigLevel").value(), "0.1");
    EXPECT_STREQ(tests.attribute("confidenceLevel").value(), "0.95");
}

TEST_F(Analyze, TestThatDoesNotFitTheFieldsIsLeftOutWithAWarning) {
    const CommandResult result = Run({"--related", "before,after,n", "--tests", "sign"});
    EXPECT_EQ(result.exitStatus, 1);  // nothing is left to run
    EXPECT_NE(result.err.find("warning 220017"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("220001"), std::string::npos) << result.err;
}

/// Four fields of which the third and fourth are far above the others, and their halves.
std::string FourFields() {
    std::string data = "a,b,c,d,p,q,r,g\n";
    for (int i = 0; i < 20; ++i) {
        const std::string base = std::to_string(i);
        data += base + "," + base + (i % 2 == 0 ? ".5," : ".0,") + std::to_string(i + 30) + "," +
                std::to_string(i + 40) +
                (i < 2    ? ",y,n,n"
                 : i < 15 ? ",n,y,y"
                          : ",n,n,y") +
                ",g" + std::to_string(i % 3) + "\n";
    }
    return data;
}

TEST_F(Analyze, ComparesAllPairsOrSearchesSubsetsAsAsked) {
    const std::string data = folder.Write("four.csv", FourFields());
    struct Comparison {
        const char* compare;
        const char* table;
        const char* other;
    };
    for (const auto& [compare, table, other] : {Comparison{"pairwise", "PairwiseResult", "StepwiseResult"},
                                                Comparison{"stepwise", "StepwiseResult", "PairwiseResult"}}) {
        for (const std::vector<std::string>& tests :
             {std::vector<std::string>{}, {"--tests", "friedman"}, {"--tests", "kendall"}}) {
            std::vector<std::string> arguments{"analyze", data,        "--related",
                                               "a,b,c,d", "--compare", compare,
                                               "--quiet", "--out",     folder.Path("result.xml")};
            arguments.insert(arguments.end(), tests.begin(), tests.end());
            const CommandResult result = RunTarn(arguments);
            ASSERT_EQ(result.exitStatus, 0) << result.err;
            const Document document(harness::ReadFile(folder.Path("result.xml")));
            ASSERT_EQ(document.TestCount(), 1);
            EXPECT_TRUE(document.Test(0).Sub(table).Exists()) << compare;
            EXPECT_FALSE(document.Test(0).Sub(other).Exists()) << compare;
        }
    }
}

TEST_F(Analyze, StepsNameTheTestThatTheAutomaticChoiceWouldTake) {
    const std::string data = folder.Write("four.csv", FourFields());
    const auto names = [&](const std::vector<std::string>& fields) {
        std::vector<std::string> arguments{
            "analyze", data, "--compare", "stepwise", "--quiet", "--out", folder.Path("result.xml")};
        arguments.insert(arguments.end(), fields.begin(), fields.end());
        const CommandResult result = RunTarn(arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        const Document document(harness::ReadFile(folder.Path("result.xml")));
        std::vector<std::string> found;
        for (int i = 0; i < document.TestCount(); ++i) found.push_back(document.Test(i).Attribute("name"));
        return found;
    };
    using Names = std::vector<std::string>;
    EXPECT_EQ(names({"--related", "a,b,c"}), Names{"RFriedmansTwoWayByRanks"});
    EXPECT_EQ(names({"--related", "p,q,r"}), Names{"RCochransQ"});
    EXPECT_EQ(names({"--related", "a,b"}), Names{"RWilcoxonSignedRanks"});
    EXPECT_EQ(names({"--related", "p,q"}), Names{"RMcNemar"});
    EXPECT_EQ(names({"--independent", "a", "--group", "g"}), Names{"IKruskalWallis"});
}

struct Mistake {
    const char* name;
    std::vector<std::string> arguments;
    const char* told;
};

class Mistakes : public Analyze, public testing::WithParamInterface<Mistake> {};

TEST_P(Mistakes, AreToldInOneLineWithWhatToDoNext) {
    const CommandResult result = Run(GetParam().arguments);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(GetParam().told), std::string::npos) << result.err;
}

INSTANTIATE_TEST_SUITE_P(
    , Mistakes,
    testing::Values(
        Mistake{"NoFields",
                {},
                "expected a formula like 'score ~ arm', or --one-sample, --related, or --independent with --group"},
        Mistake{"NoGroup", {"--independent", "before"}, "expected --group"},
        Mistake{"UnknownGroup", {"--independent", "before", "--group", "amr"}, "did you mean arm?"},
        Mistake{"UnknownField", {"--related", "befor,after"}, "did you mean before?"},
        Mistake{"MisspeltTest", {"--related", "before,after", "--tests", "singn"}, "did you mean sign?"},
        Mistake{"TestOfAnotherFamily",
                {"--related", "before,after", "--tests", "moses"},
                "is a test of Independent samples"},
        Mistake{"ParameterOfNoChosenTest",
                {"--related", "before,after", "--success", "1"},
                "--success: no test of the request takes it; expected --tests with one of binomial, runs"},
        Mistake{"ParameterOfATestOfAnotherFamily",
                {"--related", "before,after", "--tests", "friedman", "--test-value", "3"},
                "--test-value: no test of the request takes it; expected --tests with one of wilcoxon"},
        Mistake{"NoTestValue", {"--one-sample", "before", "--tests", "wilcoxon"}, "expected --test-value"},
        Mistake{"RunsOfTwoFields",
                {"--one-sample", "before,after", "--tests", "runs"},
                "expected one of them, or --cut-point"}),
    [](const testing::TestParamInfo<Mistake>& test) { return std::string(test.param.name); });

// ---- Brief runs ----

namespace {

/// Sixty cases with ties and missing values: continuous x and y, of two categories a and b, ordered p and q, groups g.
std::string ManyKinds() {
    std::string rows = "x,y,z,a,b,c,p,q,g\n";
    for (int i = 0; i < 60; ++i) {
        const auto cell = [&](int value) {
            return (i * 7 + value) % 23 == 0 ? std::string("NA") : std::to_string(value);
        };
        rows += cell(i * 37 % 11 + i * 11 % 4 * 3) + "," + cell(i * 53 % 13 + 4) + "," + cell(i * 17 % 7 + 9) + "," +
                cell(i * 31 % 5 % 2) + "," + cell(i * 29 % 3 % 2) + "," + cell(i * 41 % 7 == 0 ? 0 : 1) + "," +
                cell(1 + i * 13 % 3) + "," + cell(1 + i * 19 % 17 % 3) + "," + cell(1 + i * 11 % 4) + "\n";
    }
    return rows;
}

using Arguments = std::vector<std::string>;

const std::vector<Arguments> kEveryTest{
    {"--one-sample", "x", "--tests", "kolmogorov-smirnov,binomial,runs,wilcoxon", "--test-value", "4"},
    {"--one-sample", "a", "--nominal", "a", "--tests", "binomial,chi-square,runs"},
    {"--related", "x,y", "--tests", "sign,wilcoxon,hodges-lehmann"},
    {"--related", "x,y,z", "--tests", "friedman,kendall", "--compare", "pairwise", "--alpha", "0.4"},
    {"--related", "x,y,z", "--tests", "friedman,kendall", "--compare", "stepwise", "--alpha", "0.4"},
    {"--related", "a,b", "--nominal", "a,b", "--tests", "mcnemar"},
    {"--related", "a,b,c", "--nominal", "a,b,c", "--tests", "cochran", "--compare", "pairwise", "--alpha", "0.4"},
    {"--related", "p,q", "--ordinal", "p,q", "--tests", "marginal-homogeneity"},
    {"--independent", "x,y", "--group", "a", "--nominal", "a", "--tests",
     "mann-whitney,kolmogorov-smirnov,wald-wolfowitz,moses,hodges-lehmann"},
    {"--independent", "x,y", "--group", "g", "--nominal", "g", "--tests", "kruskal-wallis,jonckheere,median",
     "--compare", "pairwise", "--alpha", "0.4"},
    {"--independent", "x,y", "--group", "g", "--nominal", "g", "--tests", "kruskal-wallis,jonckheere,median",
     "--compare", "stepwise", "--alpha", "0.4"},
};

}  // namespace

TEST_F(Analyze, BriefRunsHaveTheStatisticsOfWholeOnes) {
    const std::string data = folder.Write("data.csv", ManyKinds());
    for (const Arguments& request : kEveryTest) {
        SCOPED_TRACE(testing::PrintToString(request));
        Arguments arguments{"analyze", data};
        arguments.insert(arguments.end(), request.begin(), request.end());
        const auto with = [&](Arguments more) {
            more.insert(more.begin(), arguments.begin(), arguments.end());
            return RunTarn(more);
        };
        // CSV without a document is brief by itself, beside a document it is not.
        const CommandResult whole = with({"--format", "csv", "--out", folder.Path("whole.xml")});
        ASSERT_EQ(whole.exitStatus, 0) << whole.err;
        const CommandResult csv = with({"--format", "csv"});
        EXPECT_EQ(csv.out, whole.out);
        EXPECT_EQ(csv.err, whole.err);
        const CommandResult brief = with({"--brief", "--quiet", "--out", folder.Path("brief.xml")});
        ASSERT_EQ(brief.exitStatus, 0) << brief.err;
        const std::string briefText = harness::ReadFile(folder.Path("brief.xml"));
        EXPECT_LE(briefText.size(), harness::ReadFile(folder.Path("whole.xml")).size());
        EXPECT_EQ(briefText.find("\"Box\""), std::string::npos);
        for (const char* const format : {"text", "json", "csv"}) {
            EXPECT_EQ(RunTarn({"show", folder.Path("brief.xml"), "--format", format}).exitStatus, 0) << format;
        }
    }
}

TEST_F(Analyze, InterruptEndsWithStatus1AndNoFile) {
    std::string rows = "x,y,g\n";
    for (int i = 0; i < 400000; ++i) {
        rows += std::to_string(i % 977) + "," + std::to_string(i % 1009) + "," + std::to_string(i % 2) + "\n";
    }
    const CommandResult result = harness::RunTarnInterrupted(
        {"analyze", folder.Write("data.csv", rows), "--independent", "x,y", "--group", "g", "--tests",
         "mann-whitney,moses,hodges-lehmann,kruskal-wallis,jonckheere,median", "--out", folder.Path("result.xml")},
        0);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("the run was cancelled"), std::string::npos) << result.err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv"}));
}

TEST_F(Analyze, InterruptEndsAReadThatWaitsForInput) {
    const std::string pipe = folder.Path("data.csv.pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);  // nobody ever writes to it
    const CommandResult result =
        harness::RunTarnInterrupted({"analyze", pipe, "--one-sample", "x", "--out", folder.Path("result.xml")}, 0);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "tarn: the run failed with code 1: the run was cancelled\n");
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv.pipe"}));
}

TEST_F(Analyze, FullDiskAndMissingFolderAreToldAndNothingIsLeft) {
    const CommandResult full = Run({"--related", "before,after", "--out", "/dev/full"});
    EXPECT_EQ(full.exitStatus, 2);
    EXPECT_EQ(full.err, "tarn: /dev/full: can't be written: No space left on device\n");
    const std::string nowhere = folder.Path("no/such/result.xml");
    const CommandResult missing = Run({"--related", "before,after", "--out", nowhere});
    EXPECT_EQ(missing.exitStatus, 2);
    EXPECT_EQ(missing.err, "tarn: " + nowhere + ": can't be written: No such file or directory\n");
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv"}));
}

TEST_F(Analyze, RequestWithoutAGroupFailsWithItsCodeAndWritesNothing) {
    const std::string settings =
        folder.Write("settings.json", R"({"independentVariables": ["before"], "isAutomaticallyIndependent": true})");
    const CommandResult result = RunTarn(
        {"run", "--data", folder.Write("data.csv", kData), "--settings", settings, "--out", folder.Path("result.xml")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("220009"), std::string::npos) << result.err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "settings.json"}));
}

TEST(Tests, AreListedWithAQuestionEach) {
    const CommandResult result = RunTarn({"tests"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '?'), 21);
    EXPECT_NE(result.out.find("  sign "), std::string::npos);
}

TEST(Tests, AreExplainedWithTheMethodOfTheirNumbers) {
    const tarn::TestTexts& about = *tarn::MessageCatalogue::English().Test("RCochransQ");
    const CommandResult cochran = RunTarn({"explain", "cochran"});
    for (const std::string& text :
         {"Method    " + about.method, "Pairs     " + about.pairs, "Subsets   " + about.steps}) {
        EXPECT_NE(cochran.out.find("\n" + text + "\n"), std::string::npos) << cochran.out;
    }
    const CommandResult sign = RunTarn({"explain", "sign"});
    EXPECT_NE(sign.out.find("\nMethod"), std::string::npos) << sign.out;
    EXPECT_EQ(sign.out.find("\nPairs"), std::string::npos) << sign.out;
}

}  // namespace
