// How a result was made, as the outputs of the command say it.

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
using Words = std::vector<std::string>;

const std::string kSleep = harness::SourcePath("examples/sleep_clinic.csv");

json ResultOf(Words words, const std::string& input = "") {
    words.insert(words.end(), {"--format", "json"});
    const CommandResult result = RunTarn(words, input);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return json::parse(result.out, nullptr, false);
}

TEST(RecordOfTheCommand, SaysWhatWasAskedAndWhoWasLeftOut) {
    const json record = ResultOf({"analyze", kSleep, "hours_after ~ arm", "--where", "sex is not missing", "--exact",
                                  "--tests", "kruskal-wallis"})
                            .at("record");
    EXPECT_EQ(record.at("request").at("command"), "analyze");
    EXPECT_EQ(record.at("request").at("formula"), "hours_after ~ arm");
    EXPECT_EQ(record.at("request").at("options"), (json{{"where", "sex is not missing"},
                                                        {"exact", true},
                                                        {"tests", {"kruskal-wallis"}},
                                                        {"alpha", 0.05},
                                                        {"confidence", 95}}));
    EXPECT_EQ(record.at("request").at("words"),
              "tarn analyze " + kSleep +
                  " 'hours_after ~ arm' --where 'sex is not missing' --exact --tests kruskal-wallis --alpha 0.05 "
                  "--confidence 95");
    EXPECT_EQ(record.at("arithmetic"), "extended");
    EXPECT_EQ(record.at("data").at("file"), kSleep);
    // Counted in the file: 9 records have no sex, 17 of the others no hours_after, all have an arm.
    EXPECT_EQ(record.at("data").at("records"), 311);
    EXPECT_EQ(record.at("left_out").at("of_records"), 320);
    EXPECT_EQ(record.at("left_out").at("by_condition"), 9);
    EXPECT_TRUE(record.at("left_out").at("by_split").is_null());
    EXPECT_EQ(record.at("left_out").at("tests").at(0), (json{{"test", "IKruskalWallis"},
                                                             {"fields", {"hours_after"}},
                                                             {"group", "arm"},
                                                             {"without_weight", 0},
                                                             {"missing", 17},
                                                             {"complete", 294}}));
}

TEST(RecordOfTheCommand, IsThatOfEachPart) {
    const json parts = ResultOf({"analyze", kSleep, "hours_after ~ arm", "--split", "sex"});
    EXPECT_EQ(parts.at("record").at("request").at("options").at("split"), "sex");
    std::size_t records = 0;
    for (const json& part : parts.at("parts")) {
        const json& record = part.at("result").at("record");
        records += record.at("data").at("records").get<std::size_t>();
        EXPECT_EQ(record.at("left_out").at("by_split"), 320 - record.at("data").at("records").get<int>());
        EXPECT_EQ(record.at("version"), parts.at("record").at("version"));
    }
    EXPECT_EQ(records, 311U) << "9 have no sex";
    EXPECT_NE(parts.at("parts").at(0).at("result").at("record").at("data").at("sha256"),
              parts.at("parts").at(1).at("result").at("record").at("data").at("sha256"));
}

TEST(RecordOfTheCommand, CountsRepeatedMeasuresWithoutAPlace) {
    const ScratchFolder folder;
    const std::string data =
        folder.Write("long.csv", "s,c,y\n1,a,1\n1,b,2\n2,a,3\n2,b,1\n3,a,4\n3,b,6\n,a,5\n4,,7\n4,a,2\n4,b,9\n");
    const json record = ResultOf({"analyze", data, "y ~ c | s", "--tests", "sign"}).at("record");
    EXPECT_EQ(record.at("left_out").at("without_subject_or_condition"), 2);
    EXPECT_EQ(record.at("left_out").at("of_records"), 10);
    EXPECT_EQ(record.at("data").at("records"), 4) << "subjects";
    EXPECT_EQ(record.at("data").at("fields").at(0).at("name"), "c=a");
}

/// The same values in several files.
TEST(RecordOfTheCommand, HashesTheDataAsUsedWhateverTheFile) {
    const ScratchFolder folder;
    const auto hash = [](const std::string& table, Words more = {}) {
        more.insert(more.begin(), {"analyze", table, "y ~ g", "--tests", "mann-whitney"});
        return ResultOf(more).at("record").at("data").at("sha256");
    };
    const json plain = hash(folder.Write("a.csv", "y,g\n1.5,a\n2,b\nNA,a\n4,b\n3,a\n"));
    EXPECT_EQ(hash(folder.Write("b.csv", "g;other;y\na;1;1,5\nb;1;2,0\na;1;\nb;2;4\na;2;3\n")), plain)
        << "semicolons, decimal commas, another field";
    EXPECT_EQ(hash(folder.Write("c.csv", "g\ty\r\na\t1.50\r\nb\t2\r\na\tNULL\r\nb\t4e0\r\na\t3\r\n")), plain)
        << "tabs, other line ends, another text for what is missing";
    EXPECT_EQ(
        hash(folder.Write("d.csv", "y,g,keep\n9,c,0\n1.5,a,1\n2,b,1\nNA,a,1\n4,b,1\n3,a,1\n"), {"--where", "keep = 1"}),
        plain)
        << "a condition leaves the same records";
    EXPECT_NE(hash(folder.Write("e.csv", "y,g\n1.5,a\n2,b\nNA,a\n4,b\n3.5,a\n")), plain);
}

TEST(RecordOfTheCommand, OfARunHasItsPlan) {
    const ScratchFolder folder;
    const std::string plan =
        folder.Write("plan.json", R"({"missingTreatment": "list", "tests": [{"sign": {"variableName": ["a", "b"]}}]})");
    const std::string data =
        folder.Write("d.csv", "a,b,c,w\n1,2,1,1\n2,1,,1\n3,4,1,-1\n4,,1,2.5\n5,7,1,1\n6,8,1,0.5\n");
    const json record = ResultOf({"run", "--data", data, "--plan", plan, "--weight", "w", "--quiet"}).at("record");
    EXPECT_EQ(record.at("request").at("command"), "run");
    EXPECT_EQ(record.at("request").at("words"), "tarn run --data " + data + " --plan " + plan + " --weight w");
    EXPECT_EQ(record.at("request").at("plan").at("missingTreatment"), "list");
    EXPECT_EQ(record.at("arithmetic"), "as-defined");
    // Cut towards zero: 2.5 becomes 2, 0.5 becomes 0; what is below 0 is subtracted and stays.
    EXPECT_EQ(record.at("left_out").at("weights"),
              (json{{"field", "w"}, {"rule", "cut"}, {"missing", 0}, {"negative", 1}, {"zero", 1}, {"changed", 1}}));
    // Listwise by all fields of the table: the second record misses c, the fourth b.
    EXPECT_EQ(record.at("left_out").at("tests").at(0).at("missing"), 2);
    EXPECT_EQ(record.at("left_out").at("tests").at(0).at("without_weight"), 1);
    EXPECT_EQ(record.at("left_out").at("tests").at(0).at("complete"), 3);
    std::vector<std::string> kinds;
    for (const json& field : record.at("data").at("fields")) kinds.push_back(field.at("values"));
    EXPECT_EQ(kinds, (Words{"numbers", "numbers", "missing", "numbers"})) << "of c what it misses counts alone";
}

TEST(RecordOfTheCommand, IsNoneOfAStoredDocument) {
    const ScratchFolder folder;
    const std::string stored = folder.Path("result.xml");
    ASSERT_EQ(RunTarn({"analyze", kSleep, "age ~ sex", "--out", stored, "--quiet"}).exitStatus, 0);
    EXPECT_TRUE(ResultOf({"show", stored}).at("record").is_null());
}

// What goes into a paper says nothing of machines, and the document is the engine's own.
TEST(RecordOfTheCommand, StandsWhereAReaderLooksForIt) {
    const std::string hash = ResultOf({"analyze", kSleep, "age ~ sex"}).at("record").at("data").at("sha256");
    const auto shows = [&](Words more) {
        more.insert(more.begin(), {"analyze", kSleep, "age ~ sex"});
        return RunTarn(more).out.find(hash) != std::string::npos;
    };
    EXPECT_TRUE(shows({"--details"}));
    EXPECT_TRUE(shows({"--format", "html"}));
    for (const char* const format : {"text", "csv", "xml", "md", "latex", "typst", "apa"}) {
        EXPECT_FALSE(shows({"--format", format})) << format;
    }
}

// ---- Once more ----

/// A result in a file, to be run again.
class RerunOfAResult : public testing::Test {
 protected:
    void Keep(Words words, const std::string& table = kSleep) {
        words.insert(words.begin(), {"analyze", table});
        words.insert(words.end(), {"--format", "json"});
        const CommandResult result = RunTarn(words);
        ASSERT_EQ(result.exitStatus, 0) << result.err;
        folder.Write("result.json", result.out);
    }
    CommandResult Rerun(Words more = {}) {
        more.insert(more.begin(), {"rerun", folder.Path("result.json")});
        return RunTarn(more);
    }
    json Kept() const { return json::parse(harness::ReadFile(folder.Path("result.json"))); }

    ScratchFolder folder;
};

TEST_F(RerunOfAResult, SaysThatItIsTheSame) {
    for (const Words& words : {Words{"hours_after ~ arm", "--exact", "--where", "age > 40"},
                               Words{"hours_after ~ arm", "--split", "sex", "--monte-carlo", "500", "--seed", "3"},
                               Words{"--related", "hours_before,hours_after", "--weight", "visits", "--as-defined"},
                               Words{"--one-sample", "all", "--brief"}}) {
        Keep(words);
        const CommandResult again = Rerun();
        EXPECT_EQ(again.exitStatus, 0) << again.err;
        EXPECT_TRUE(again.out.starts_with("same to the last digit: ")) << again.out;
        EXPECT_EQ(again.out.find("another program"), std::string::npos) << again.out;
        EXPECT_EQ(again.err, "");
    }
}

TEST_F(RerunOfAResult, SaysWhichNumberWasAnother) {
    Keep({"hours_after ~ sex", "--tests", "mann-whitney"});
    json changed = Kept();
    const double u = changed["tests"][0]["statistics"][0]["statistic"];
    changed["tests"][0]["statistics"][0]["statistic"] = u + 0.5;
    changed["record"]["version"] = "0.1.0";
    folder.Write("result.json", changed.dump());
    const CommandResult again = Rerun({"--format", "json"});
    EXPECT_EQ(again.exitStatus, 3);
    const json found = json::parse(again.out);
    EXPECT_EQ(found.at("format"), "tarn-comparison-1");
    EXPECT_EQ(found.at("same"), false);
    EXPECT_EQ(found.at("changed"), (json::array({{{"of", "mann-whitney of hours_after by sex"},
                                                  {"place", "statistics[0].statistic"},
                                                  {"before", u + 0.5},
                                                  {"after", u}}})));
    EXPECT_EQ(found.at("program").at(0).at("what"), "version");
    const CommandResult quiet = Rerun({"--quiet"});
    EXPECT_EQ(quiet.exitStatus, 3);
    EXPECT_EQ(quiet.out + quiet.err, "");
}

TEST_F(RerunOfAResult, SaysWhichFieldsOfAnotherTableAreOthers) {
    const std::string first = folder.Write("first.csv", "y,g,z\n1,a,1\n2,b,2\n4,a,3\n3,b,4\n");
    Keep({"y ~ g", "--tests", "mann-whitney"}, first);
    // The same values of y and g, and another z.
    EXPECT_EQ(Rerun({"--data", folder.Write("same.csv", "g;z;y\na;9;1,0\nb;9;2\na;9;4\nb;9;3\n")}).exitStatus, 0);
    // The ranks are the same, so that the statistic is.
    const CommandResult other = Rerun({"--data", folder.Write("other.csv", "y,g,z\n1,a,1\n2,b,2\n5,a,3\n3,b,4\n")});
    EXPECT_EQ(other.exitStatus, 3);
    EXPECT_NE(other.out.find("other data\n   SHA-256: "), std::string::npos) << other.out;
    EXPECT_NE(other.out.find("\n   y, values: "), std::string::npos) << other.out;
    EXPECT_EQ(other.out.find("\n   g, values: "), std::string::npos) << other.out;
    EXPECT_EQ(other.out.find("statistics[0].statistic "), std::string::npos) << other.out;
}

TEST_F(RerunOfAResult, TakesMemoryAndWritesItsDocument) {
    Keep({"age ~ sex", "--tests", "mann-whitney"});
    const CommandResult again = Rerun({"--memory", "1G", "--out", folder.Path("again.xml")});
    EXPECT_EQ(again.exitStatus, 0) << again.err;
    EXPECT_NE(harness::ReadFile(folder.Path("again.xml")).find("IMannWhitneyU"), std::string::npos);
    const CommandResult little = Rerun({"--memory", "1K"});
    EXPECT_EQ(little.exitStatus, 2) << "as with analyze";
    EXPECT_EQ(little.err, RunTarn({"analyze", kSleep, "age ~ sex", "--tests", "mann-whitney", "--memory", "1K"}).err);
    EXPECT_EQ(Rerun({"--memory", "lots"}).err, "tarn: --memory: \"lots\"; expected a size like 8G or 512M\n");
}

TEST_F(RerunOfAResult, RefusesWhatItCannotRunAgain) {
    const std::string path = folder.Path("result.json");
    const auto refusal = [&](const json& result) {
        folder.Write("result.json", result.dump());
        const CommandResult refused = Rerun();
        EXPECT_EQ(refused.exitStatus, 2);
        return refused.err;
    };
    Keep({"age ~ sex", "--tests", "mann-whitney"});
    const json kept = Kept();
    json result = kept;
    result["record"] = nullptr;
    EXPECT_EQ(refusal(result), "tarn: " + path +
                                   ": has no record of how it was made; expected a result that tarn analyze --format "
                                   "json wrote\n");
    result = kept;
    result["record"]["request"]["command"] = "run";
    EXPECT_EQ(refusal(result), "tarn: " + path +
                                   ": record.request.command: \"run\"; expected \"analyze\", a result that tarn "
                                   "analyze made\n");
    result["record"]["request"] = nullptr;
    EXPECT_EQ(
        refusal(result),
        "tarn: " + path + ": record.request.command: none; expected \"analyze\", a result that tarn analyze made\n");
    result = kept;
    result["record"]["request"]["options"]["tets"] = "sign";
    EXPECT_EQ(refusal(result),
              "tarn: " + path + ": options.tets: no option of tarn analyze that a study has; did you mean tests?\n");
    result = kept;
    result["record"]["data"]["file"] = nullptr;
    EXPECT_EQ(refusal(result), "tarn: " + path + ": data.file: no table; expected it, or --data\n");
    folder.Write("result.json", kept.dump());
    EXPECT_EQ(Rerun({"--format", "csv"}).err, "tarn: --format: " + path +
                                                  " is a result, which is compared; expected text or json, or a "
                                                  "study\n");
    EXPECT_EQ(Rerun({"--brief"}).exitStatus, 2);
    EXPECT_EQ(Rerun({"--details"}).exitStatus, 2);
}

}  // namespace
