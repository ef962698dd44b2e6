// The words of `tarn analyze`: formulas, conditions and parts, from what is typed to what is shown. Numbers are those
// of R 4.2 on the same records.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;
using nlohmann::json;
using Arguments = std::vector<std::string>;

const std::string kSleep = harness::SourcePath("examples/sleep_clinic.csv");

CommandResult Analyze(const Arguments& words, const std::string& table = kSleep) {
    Arguments arguments{"analyze", table};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return RunTarn(arguments);
}

json JsonOf(Arguments words, const std::string& table = kSleep) {
    words.insert(words.end(), {"--format", "json"});
    const CommandResult result = Analyze(words, table);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return json::parse(result.out);
}

double PValueOf(const json& test) {
    for (const json& p : test.at("statistics").at(0).at("p_values")) {
        if (p.at("decides")) return p.at("value");
    }
    return -1;
}

// A formula is another way to type the options: the results are the same to the letter.
TEST(AFormulaOfTheCommand, IsTheSameAsItsOptions) {
    EXPECT_EQ(Analyze({"hours_after ~ arm"}).out, Analyze({"--independent", "hours_after", "--group", "arm"}).out);
    EXPECT_EQ(Analyze({"hours_before + hours_after ~ sex"}).out,
              Analyze({"--independent", "hours_before,hours_after", "--group", "sex"}).out);
    EXPECT_EQ(Analyze({"age ~ 1"}).out, Analyze({"--one-sample", "age"}).out);
    EXPECT_EQ(Analyze({"hours_* ~ sex"}).out,
              Analyze({"--independent", "hours_before,hours_after,hours_followup", "--group", "sex"}).out);
}

TEST(AFormulaOfTheCommand, IsRefusedBesideTheOptionsOfItsFields) {
    const CommandResult result = Analyze({"age ~ sex", "--group", "arm"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err,
              "tarn: formula \"age ~ sex\": says which fields, and so does --group; expected one of them\n");
}

TEST(AFormulaOfTheCommand, DoesNotTakeAMeasurementForGroups) {
    const CommandResult result = Analyze({"hours_after ~ hours_before"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(
        result.err,
        "tarn: formula \"hours_after ~ hours_before\": at column 15: hours_before has 50 different numbers, which "
        "look like a measurement and not like groups; for a pair of fields type --related "
        "hours_before,hours_after, for groups --nominal hours_before beside the formula\n");
    EXPECT_EQ(Analyze({"hours_after ~ hours_before", "--nominal", "hours_before", "--quiet"}).exitStatus, 0);
}

// friedman.test(matrix(c(1,3,2, 2,5,4, 3,6,9, 4,8,7), 4, byrow=TRUE)): chi-squared = 6.5, p-value = 0.03877421. By
// hand: rank sums 4, 11, 9; 12 / (4 3 4) (16 + 121 + 81) - 3 4 4 = 6.5, and exp(-3.25).
TEST(RepeatedMeasuresOfTheCommand, AreAFieldForEachCondition) {
    const ScratchFolder folder;
    const std::string table = folder.Write("long.csv",
                                           "who,cond,score\n1,a,1\n1,b,3\n1,c,2\n2,a,2\n2,b,5\n2,c,4\n3,b,6\n3,a,3\n"
                                           "3,c,9\n4,c,7\n4,a,4\n4,b,8\n5,a,1\n");
    const json result = JsonOf({"score ~ cond | who"}, table);
    const json& test = result.at("tests").at(0);
    EXPECT_EQ(test.at("name"), "friedman");
    EXPECT_EQ(test.at("fields"), (json{"cond=a", "cond=b", "cond=c"}));
    EXPECT_EQ(test.at("statistics").at(0).at("statistic"), 6.5);
    EXPECT_NEAR(PValueOf(test), 0.0387742078317220, 1e-15);
    EXPECT_EQ(result.at("notes"),
              json{"score of 5 subjects (who) at 3 conditions (cond): 4 complete; incomplete: 5 (no "
                   "cond=b, cond=c)"});
    EXPECT_EQ(Analyze({"--related", "score", "--within", "cond", "--id", "who"}, table).out,
              Analyze({"score ~ cond | who"}, table).out);
}

TEST(RepeatedMeasuresOfTheCommand, NeedAllTheirFields) {
    EXPECT_EQ(Analyze({"--related", "age", "--within", "arm"}).err,
              "tarn: --within: no subjects; expected --id with the field that names them\n");
    EXPECT_EQ(Analyze({"--related", "age", "--id", "patient"}).err,
              "tarn: --id: no conditions; expected --within with the field that has them (--case-id names the cases of "
              "other analyses)\n");
    EXPECT_EQ(Analyze({"--related", "age,visits", "--within", "arm", "--id", "patient"}).err,
              "tarn: --within: expected --related with the one field that was measured, and no other fields\n");
}

// s <- subset(sleep, age > 40 & arm != "low"); nrow(s)
TEST(AConditionOfTheCommand, KeepsTheRecordsForWhichItIsTrue) {
    const json result = JsonOf({"hours_after ~ arm", "--where", "age > 40 & arm != \"low\""});
    EXPECT_EQ(result.at("notes").at(0), "--where \"age > 40 & arm != \"low\"\" keeps 140 of 320 records");
    EXPECT_EQ(result.at("tests").at(0).at("name"), "mann-whitney") << "two arms are left";
    EXPECT_EQ(result.at("counts").at("totalCount"), 140);
}

TEST(AConditionOfTheCommand, HasToBeTrueOfSomething) {
    const CommandResult result = Analyze({"age ~ sex", "--where", "age > 400"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err, "tarn: --where \"age > 400\": is true of none of 320 records\n");
}

// for (r in unique(s$relapse)) wilcox.test(hours_after ~ sex, data = s[s$relapse == r,], exact = FALSE, correct =
// FALSE)
TEST(PartsOfTheCommand, AreTestedByThemselves) {
    const json result = JsonOf(
        {"hours_after ~ sex", "--tests", "mann-whitney", "--split", "relapse", "--where", "age > 40 & arm != \"low\""});
    EXPECT_EQ(result.at("format"), "tarn-parts-1");
    EXPECT_EQ(result.at("split"), "relapse");
    ASSERT_EQ(result.at("parts").size(), 2U);
    const json& first = result.at("parts").at(0);
    EXPECT_EQ(first.at("category"), "false");
    EXPECT_EQ(first.at("notes").at(0), "104 of 140 records");
    const json& test = first.at("result").at("tests").at(0);
    EXPECT_EQ(test.at("n"), 99);
    EXPECT_NEAR(PValueOf(test), 0.7229887602678891, 1e-12);
    EXPECT_EQ(result.at("parts").at(1).at("result").at("tests").at(0).at("n"), 29);
    ASSERT_EQ(result.at("summary").size(), 2U);
    // Holm's method takes the smaller of two significances twice, 2 * 0.66 > 1.
    EXPECT_EQ(result.at("summary").at(0).at("p_holm"), 1);
}

// Of six arrangements of two and two values the first part has the lowest one, the second part the highest one: 1/6 and
// 1 that the first group is as low by chance. Holm takes the smaller one twice.
TEST(PartsOfTheCommand, AreAdjustedOnTheSignificanceThatWasChosen) {
    const ScratchFolder folder;
    const std::string table = folder.Write("low.csv",
                                           "x,group,part\n1,a,up\n2,a,up\n3,b,up\n4,b,up\n"
                                           "1,b,down\n2,b,down\n3,a,down\n4,a,down\n");
    const json result =
        JsonOf({"x ~ group", "--tests", "mann-whitney", "--split", "part", "--alternative", "less", "--exact"}, table);
    std::map<std::string, std::pair<double, double>> pValues;
    for (const json& row : result.at("summary")) {
        pValues[row.at("category")] = {row.at("p").get<double>(), row.at("p_holm").get<double>()};
    }
    EXPECT_NEAR(pValues.at("up").first, 1.0 / 6, 1e-15);
    EXPECT_NEAR(pValues.at("up").second, 2.0 / 6, 1e-15);
    EXPECT_EQ(pValues.at("down"), (std::pair{1.0, 1.0}));
}

// Each document is the one of the records that --where takes by themselves, but for the categories of the whole table.
TEST(PartsOfTheCommand, HaveADocumentEach) {
    const ScratchFolder folder;
    const std::string table =
        folder.Write("parts.csv", "x,y,part\n1,2,a/b\n2,4,a/b\n3,3,a_b\n4,2,a_b\n5,7,..\n6,1,..\n7,7,é\n8,9,é\n");
    const std::string pattern = folder.Path("of {}.xml");
    ASSERT_EQ(Analyze({"--related", "x,y", "--split", "part", "--out", pattern, "--quiet"}, table).exitStatus, 0);
    EXPECT_EQ(folder.Files(),
              (std::vector<std::string>{"of _..xml", "of a_b-2.xml", "of a_b.xml", "of é.xml", "parts.csv"}));
    EXPECT_EQ(harness::ReadFile(folder.Path("of é.xml")),
              Analyze({"--related", "x,y", "--where", "part = \"é\"", "--format", "xml"}, table).out);
    const CommandResult one = Analyze({"--related", "x,y", "--split", "part", "--out", folder.Path("all.xml")}, table);
    EXPECT_EQ(one.exitStatus, 2);
    EXPECT_EQ(one.err, "tarn: --out: \"" + folder.Path("all.xml") +
                           "\"; expected a name with {} for the category, since --split makes a document for each "
                           "part\n");
    EXPECT_EQ(folder.Files().size(), 5U);
}

TEST(PartsOfTheCommand, StandInTextAndInCsv) {
    const Arguments words{"hours_after ~ sex", "--tests", "mann-whitney", "--split", "arm"};
    const CommandResult text = Analyze(words);
    EXPECT_TRUE(text.out.starts_with("3 outcomes by sex, Mann-Whitney U test, by parts of arm\n")) << text.out;
    for (const char* name : {"== arm = high\n", "== arm = low\n", "== arm = placebo\n"}) {
        EXPECT_NE(text.out.find(name), std::string::npos) << text.out;
    }
    Arguments more = words;
    more.insert(more.end(), {"--format", "csv"});
    const CommandResult csv = Analyze(more);
    EXPECT_TRUE(csv.out.starts_with("split_field,split_category,row,number,")) << csv.out;
    EXPECT_NE(csv.out.find("\narm,placebo,test,1,IMannWhitneyU,"), std::string::npos) << csv.out;
}

TEST(PartsOfTheCommand, AreTheSameAsTheirRecordsAlone) {
    const json parts = JsonOf({"hours_after ~ sex", "--split", "arm"});
    const json alone = JsonOf({"hours_after ~ sex", "--where", "arm = 'low'"});
    EXPECT_EQ(parts.at("parts").at(1).at("result").at("tests"), alone.at("tests"));
}

TEST(PartsOfTheCommand, SayWhichOnesCouldNotBeTested) {
    const ScratchFolder folder;
    const std::string table = folder.Write("t.csv", "site,arm,score\nx,a,1\nx,b,2\nx,a,3\nx,b,4\ny,a,1\ny,a,2\n,a,1\n");
    const CommandResult result = Analyze({"score ~ arm", "--split", "site", "--tests", "binomial"}, table);
    EXPECT_EQ(result.exitStatus, 2) << "what holds for no part is a mistake of the request";
    const json parts = JsonOf({"score ~ arm", "--split", "site", "--tests", "mann-whitney"}, table);
    EXPECT_EQ(parts.at("notes").at(0), "--split leaves out 1 of 7 records, which misses site");
    EXPECT_EQ(parts.at("parts").at(0).at("result").at("tests").at(0).at("n"), 4);
    EXPECT_FALSE(parts.at("parts").at(1).at("result").at("tests").at(0).at("messages").empty()) << "one group only";
}

TEST(PartsOfTheCommand, RefuseWhatTheyCannotDo) {
    EXPECT_EQ(Analyze({"age ~ sex", "--split", "sex"}).err,
              "tarn: --split: sex has the groups already, and within one of its categories there is one group only; "
              "expected another field\n");
    EXPECT_EQ(Analyze({"age ~ sex", "--split", "armm"}).err,
              "tarn: --split: the table has no field \"armm\"; did you mean arm?\n");
    EXPECT_EQ(
        Analyze({"age ~ sex", "--split", "arm", "--format", "xml"}).err,
        "tarn: --format: xml is one document, and --split makes one for each part; expected text, json, csv or html\n");
    EXPECT_EQ(Analyze({"age ~ sex", "--split", "patient"}).err,
              "tarn: --split: patient has 320 different values; expected a field with at most 200\n");
}

TEST(TheHelp, FitsAScreen) {
    const CommandResult result = RunTarn({"--help"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_LE(std::count(result.out.begin(), result.out.end(), '\n'), 24) << result.out;
}

TEST(NamesOfFields, MayDifferInCaseAndSaySo) {
    const CommandResult result = Analyze({"Hours_After ~ SEX", "--tests", "mann-whitney"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.out.find("Mann-Whitney U test: hours_after by sex "), std::string::npos);
    EXPECT_NE(result.out.find("Note: \"Hours_After\" is taken for the field \"hours_after\"\n"), std::string::npos);
    const ScratchFolder folder;
    const std::string table = folder.Write("t.csv", "Score,score,g\n1,2,1\n2,3,2\n");
    EXPECT_EQ(
        Analyze({"SCORE ~ g"}, table).err,
        "tarn: formula \"SCORE ~ g\": at column 1: the table has no field \"SCORE\"; did you mean Score, score?\n")
        << "two fields are meant alike";
    EXPECT_EQ(Analyze({"score ~ G", "--tests", "mann-whitney", "--quiet"}, table).exitStatus, 0)
        << "numbers name groups, however the field is typed";
}

TEST(NamesOfFields, MayBePatterns) {
    EXPECT_EQ(Analyze({"--related", "hours_*"}).out,
              Analyze({"--related", "hours_before,hours_after,hours_followup"}).out);
    EXPECT_EQ(Analyze({"--related", "minutes_*"}).exitStatus, 2);
    const ScratchFolder folder;
    const std::string table = folder.Write("t.csv", "a,b,g,w\n1,2,x,1\n2,3,y,1\n3,5,x,1\n");
    EXPECT_EQ(Analyze({"--independent", "all", "--group", "g", "--weight", "w"}, table).out,
              Analyze({"--independent", "a,b", "--group", "g", "--weight", "w"}, table).out);
}

TEST(NamesOfFields, MayDifferInCaseInEveryOption) {
    const ScratchFolder folder;
    const std::string table =
        folder.Write("cases.csv", "Score,Arm,Size,W\n1,1,a,1\n2,2,b,2\n3,1,a,1\n4,2,b,1\n5,1,c,1\n");
    const auto document = [&](const std::string& arm, const std::string& size, const std::string& weight) {
        return Analyze({"--independent", "Score", "--group", size, "--order", size + "=c,a,b", "--weight", weight,
                        "--nominal", arm, "--format", "xml"},
                       table);
    };
    const CommandResult like = document("ARM", "size", "w");
    EXPECT_EQ(like.exitStatus, 0) << like.err;
    EXPECT_EQ(like.out, document("Arm", "Size", "W").out);
    for (const char* const note : {"\"ARM\" is taken for the field \"Arm\"", "\"size\" is taken for the field \"Size\"",
                                   "\"w\" is taken for the field \"W\""}) {
        const std::size_t found = like.err.find(note);
        ASSERT_NE(found, std::string::npos) << note;
        EXPECT_EQ(like.err.find(note, found + 1), std::string::npos) << note << " twice";
    }
    const std::string twice = folder.Write("twice.csv", "w,W,x\n1,2,3\n1,2,4\n");
    const CommandResult exact = Analyze({"--one-sample", "x", "--weight", "W"}, twice);
    EXPECT_EQ(exact.exitStatus, 0) << exact.err;
    EXPECT_EQ(Analyze({"--one-sample", "x", "--nominal", "X,w", "--weight", "V"}, twice).err,
              "tarn: --weight: \"V\"; expected a field of " + twice + ": \"w\", \"W\" or \"x\"\n");
}

TEST(Words, ANameWithACommaStandsInQuotes) {
    const ScratchFolder folder;
    const std::string table = folder.Write("quoted.csv", "\"a, b\",g,\"say \"\"x\"\"\"\n1,x,1\n2,y,4\n3,x,2\n4,y,3\n");
    const json result =
        JsonOf({"--independent", R"("a, b","say ""x""")", "--group", "g", "--tests", "mann-whitney"}, table);
    ASSERT_EQ(result["tests"].size(), 2U);
    EXPECT_EQ(result["tests"][0]["fields"], json{"a, b"});
    EXPECT_EQ(result["tests"][1]["fields"], json{R"(say "x")"});
    const CommandResult open = Analyze({"--independent", R"("a, b)", "--group", "g"}, table);
    EXPECT_EQ(open.exitStatus, 2);
    EXPECT_EQ(open.err, "tarn: --independent: \"a, b: a double quote opens and none closes; expected \"a, b\"\n");
}

}  // namespace
