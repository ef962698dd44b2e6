// What --save keeps of an analysis, and what tarn rerun makes of it.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;
using nlohmann::json;
using Arguments = std::vector<std::string>;

const std::string kSleep = harness::SourcePath("examples/sleep_clinic.csv");

class Study : public testing::TestWithParam<Arguments> {
 protected:
    CommandResult Save(Arguments words, const std::string& table = kSleep) {
        words.insert(words.begin(), {"analyze", table});
        words.insert(words.end(), {"--save", folder.Path("study.json")});
        return RunTarn(words);
    }
    CommandResult Rerun(Arguments more = {}) {
        more.insert(more.begin(), {"rerun", folder.Path("study.json")});
        return RunTarn(more);
    }
    json Saved() const { return json::parse(harness::ReadFile(folder.Path("study.json"))); }

    ScratchFolder folder;
};

TEST_P(Study, GivesTheSameOnceMore) {
    const CommandResult first = Save(GetParam());
    ASSERT_EQ(first.exitStatus, 0) << first.err;
    const CommandResult again = Rerun();
    EXPECT_EQ(again.exitStatus, 0) << again.err;
    EXPECT_EQ(again.out, first.out);
}

INSTANTIATE_TEST_SUITE_P(
    Requests, Study,
    testing::Values(
        Arguments{"hours_after ~ arm"},
        Arguments{"hours_after ~ arm", "--where", "age > 40 & sex = \"f\"", "--against", "placebo", "--adjust", "holm"},
        Arguments{"hours_after ~ sex", "--split", "arm", "--tests", "mann-whitney", "--alternative", "less"},
        Arguments{"--related", "hours_before,hours_after", "--one-sample", "age", "--tests",
                  "sign,wilcoxon,kolmogorov-smirnov", "--test-value", "1.5", "--monte-carlo", "1000", "--seed", "7"},
        Arguments{"--one-sample", "arm", "--tests", "chi-square", "--expected", "placebo=1,low=1,high=2"},
        Arguments{"--one-sample", "hours_after", "--tests", "runs", "--cut-point", "mean", "--as-defined"},
        Arguments{"--independent", "quality", "--group", "sex", "--order", "quality=poor,fair,good,very good",
                  "--order", "arm=placebo,low,high", "--reference", "sex=m", "--label", "quality=Quality of sleep"},
        Arguments{"hours_after ~ arm", "--tests", "jonckheere", "--order", "arm=placebo,low,high", "--descending",
                  "--exact", "--alpha", "1.5", "--confidence", "0.9", "--missing", "listwise"}));

TEST_F(Study, IsWrittenInTheWordsOfTheCommand) {
    ASSERT_EQ(Save({"age ~ sex", "--exact", "--tests", "mann-whitney,moses", "--alpha", "0.01", "--quiet", "--format",
                    "json", "--threads", "1"})
                  .exitStatus,
              0);
    const json study = Saved();
    EXPECT_EQ(study.at("format"), "tarn-study-1");
    EXPECT_EQ(study.at("formula"), "age ~ sex");
    EXPECT_EQ(study.at("options"),
              (json{{"exact", true}, {"tests", {"mann-whitney", "moses"}}, {"alpha", 0.01}, {"confidence", 95}}))
        << "the levels stand there even where nobody typed them; where results go doesn't";
    EXPECT_EQ(study.at("data").at("file"), kSleep);
    EXPECT_EQ(study.at("data").at("records"), 320);
    EXPECT_EQ(study.at("data").at("fields").at(2),
              (json{{"name", "sex"}, {"type", "string"}, {"level", "nominal"}, {"categories", {"f", "m"}}}));
}

TEST_F(Study, SaysInWhatAnotherTableDiffers) {
    const std::string first = folder.Write("first.csv", "a,g,x\n1,u,1\n2,v,2\n3,u,3\n4,v,4\n");
    ASSERT_EQ(Save({"a ~ g"}, first).exitStatus, 0);
    const std::string second = folder.Write("second.csv", "a,g,y\n1,u,1\n2,w,2\n3,u,3\n");
    const CommandResult result = Rerun({"--data", second, "--format", "json"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(json::parse(result.out).at("notes"),
              (json{"other than in the study: the table has 3 records, the study 4",
                    "other than in the study: categories of g: u, w, in the study u, v",
                    "other than in the study: the table has no field \"x\"",
                    "other than in the study: the table has further fields: y"}));
}

TEST_F(Study, IsNotKeptOfARequestThatCannotBeMet) {
    EXPECT_EQ(Save({"age ~ sex", "--tests", "sing"}).exitStatus, 2);
    EXPECT_TRUE(folder.Files().empty());
}

TEST_F(Study, RefusesWhatIsNone) {
    const std::string other = folder.Write("other.json", "{\"tests\": []}");
    EXPECT_EQ(RunTarn({"rerun", other}).err,
              "tarn: " + other + ": is no study; expected a file that tarn analyze --save or --format json wrote\n");
    const std::string slip = folder.Write(
        "slip.json", R"({"format": "tarn-study-1", "data": {"file": "d.csv"}, "options": {"tets": ["sign"]}})");
    EXPECT_EQ(RunTarn({"rerun", slip}).err,
              "tarn: " + slip + ": options.tets: no option of tarn analyze that a study has; did you mean tests?\n");
    const std::string shape = folder.Write("shape.json", R"({"format": "tarn-study-1", "options": {"tests": [1]}})");
    const CommandResult result = RunTarn({"rerun", shape});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err, "tarn: " + shape + ": options.tests: expected a text, a number, true or a list of texts\n");
}

TEST_F(Study, SaysOfAWrongValueWhatWasExpected) {
    const std::string wrong =
        folder.Write("wrong.json", R"({"format": "tarn-study-1", "data": {"file": ")" +
                                       harness::SourcePath("examples/headache.csv") +
                                       R"("}, "options": {"one-sample": ["patient"], "confidence": "x"}})");
    const CommandResult result = RunTarn({"rerun", wrong});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err, "tarn: --confidence: \"x\"; expected a number\n");
}

}  // namespace
