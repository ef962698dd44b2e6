// `tarn look`, and what the options of reading do to a whole run of `analyze` and `run`.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/Command.h"
#include "tests/harness/Document.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;

/// 12 cases: an identifier, words in a known order and in none, numbers with decimal commas and two marks of what is
/// missing, a pair of measurements.
constexpr const char* kClinic =
    "id;arm;region;score;before;after\n"
    "1;low;north;2,5;5,1;6,0\n2;high;south;3,5;5,5;6,5\n3;placebo;east;NA;4,0;4,5\n4;low;north;4,1;6,1;5,9\n"
    "5;high;south;;5,0;7,0\n6;placebo;east;5,9;5,2;5,4\n7;low;west;9,7;4,8;5,8\n8;high;north;6,2;5,9;6,8\n"
    "9;placebo;south;2,1;6,3;6,1\n10;low;east;7,3;4,4;5,0\n11;high;west;NA;5,7;6,6\n12;placebo;north;3,3;5,3;5,6\n";

/// The words of a line of a shell, of which single quotes may hold blanks.
std::vector<std::string> WordsOf(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool isQuoted = false;
    bool isWord = false;
    for (const char c : line) {
        if (c == '\'') {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (c == ' ' && !isQuoted) {
            if (isWord) words.push_back(word);
            word.clear();
            isWord = false;
        } else {
            word += c;
            isWord = true;
        }
    }
    if (isWord) words.push_back(word);
    return words;
}

/// The commands that stand behind "Try".
std::vector<std::vector<std::string>> CommandsOf(const std::string& shown) {
    std::vector<std::vector<std::string>> commands;
    std::istringstream lines(shown.substr(shown.find("\nTry\n") + 5));
    for (std::string line; std::getline(lines, line);) {
        std::vector<std::string> words = WordsOf(line);
        EXPECT_EQ(words.front(), "tarn");
        commands.emplace_back(words.begin() + 1, words.end());
    }
    return commands;
}

class Look : public testing::Test {
 protected:
    ScratchFolder folder;
    std::string path = folder.Write("our clinic.csv", kClinic);
};

TEST_F(Look, ShowsEachFieldAndWhatIsOddInIt) {
    const CommandResult result = RunTarn({"look", path});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.err, "");
    // Median of 2.1 2.5 3.3 3.5 4.1 5.9 6.2 7.3 9.7: 4.1; of before, 4 4.4 4.8 5 5.1 5.2 5.3 5.5 ...: 5.25.
    EXPECT_EQ(result.out.substr(0, result.out.find("Try\n")),
              path +
                  ": 12 rows, 6 fields; semicolons, decimal commas\n"
                  "  id      number   12 different values               looks like an identifier\n"
                  "  arm     3 words  high 4, low 4, placebo 4          --order arm=placebo,low,high\n"
                  "  region  4 words  north 4, east 3, south 3, west 2  no order known: --order "
                  "region=east,north,south,west\n"
                  "  score   number   2.1 to 9.7, median 4.1            3 missing (\"NA\" 2, empty 1)\n"
                  "  before  number   4 to 6.3, median 5.25\n"
                  "  after   number   4.5 to 7, median 5.95\n");
}

TEST_F(Look, ShowsCommandsThatWork) {
    const CommandResult result = RunTarn({"look", path});
    const std::vector<std::vector<std::string>> commands = CommandsOf(result.out);
    ASSERT_EQ(commands.size(), 3U) << result.out;
    EXPECT_EQ(commands[0], (std::vector<std::string>{"analyze", path, "--independent", "score", "--group", "arm"}));
    EXPECT_EQ(commands[1], (std::vector<std::string>{"analyze", path, "--related", "before,after"}));
    for (const std::vector<std::string>& command : commands) {
        const CommandResult ran = RunTarn(command);
        EXPECT_EQ(ran.exitStatus, 0) << ran.err;
        EXPECT_NE(ran.out.find("At the 5 % level "), std::string::npos) << ran.out;
    }
}

/// By the first field that has a second one; of several second ones it is the first, whatever its letters.
TEST_F(Look, ShowsThePairThatStandsFirst) {
    const auto pairOf = [&](const std::string& names) {
        const std::string table = folder.Write("pairs.csv", names + "\n1,2,4,3,9\n2,7,5,1,3\n5,4,1,2,2\n8,1,7,9,4\n");
        const std::string shown = RunTarn({"look", table}).out;
        for (const std::vector<std::string>& command : CommandsOf(shown)) {
            if (command[2] == "--related") return command[3];
        }
        return std::string();
    };
    EXPECT_EQ(pairOf("x,a_post,a_pre,b_before,b_after"), "a_pre,a_post");
    EXPECT_EQ(pairOf("x,b_after,a_post,A_PRE,b_before"), "A_PRE,a_post");
    EXPECT_EQ(pairOf("x,first_2,second_1,first_1,y"), "first_1,first_2");  // "second_1" stands behind it
    EXPECT_EQ(pairOf("x,a_after,b_before,c_post,d_pre"), "");
}

TEST_F(Look, KeepsWhatWasTypedInItsCommands) {
    const std::string codes = folder.Write("codes.txt", "g|x\na|1,5\nb|-99\na|2,5\nb|3,5\na|4,0\nb|1,0\n");
    const CommandResult result = RunTarn({"look", codes, "--delimiter", "bar", "--decimal=,", "--na", "-99,?"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.out.find("tarn analyze " + codes + " --delimiter bar --decimal , --na '-99,?' --independent x"),
              std::string::npos)
        << result.out;
    for (const std::vector<std::string>& command : CommandsOf(result.out)) {
        const CommandResult ran = RunTarn(command);
        EXPECT_EQ(ran.exitStatus, 0) << ran.err;
    }
}

TEST_F(Look, IsWhatATableAloneGets) {
    const CommandResult alone = RunTarn({path});
    EXPECT_EQ(alone.exitStatus, 0) << alone.err;
    EXPECT_EQ(alone.out, RunTarn({"look", path}).out);
    const CommandResult piped = RunTarn({"-"}, kClinic);
    EXPECT_EQ(piped.exitStatus, 0) << piped.err;
    EXPECT_TRUE(piped.out.starts_with("standard input: 12 rows, 6 fields; semicolons, decimal commas\n")) << piped.out;
    // A misspelt command is none.
    EXPECT_EQ(RunTarn({"analyse"}).err, "tarn: unknown argument \"analyse\"; did you mean analyze?\n");
    EXPECT_EQ(RunTarn({"none.csv"}).exitStatus, 2);
}

TEST_F(Look, GivesADescriptorThatReadsTheTableInTheSameWay) {
    struct Case {
        std::string content;
        std::vector<std::string> wish;
    };
    const std::vector<Case> cases = {
        {kClinic, {"--independent", "score", "--group", "arm"}},
        {kClinic, {"--related", "before,after", "--tests", "sign"}},
        {kClinic,
         {"--independent", "score", "--group", "arm", "--tests", "jonckheere", "--order", "arm=placebo,low,high"}},
        // A hyphen is missing in one field and a category in another.
        {"x,sign\n1,-\n-,+\n3,-\n4,+\n5,-\n2,+\n", {"--independent", "x", "--group", "sign"}},
        // A field of numbers with a word, and groups that are numbers.
        {"x,y,g\n1,4,1\n2,refused,2\n3,5,1\n4,6,2\nnull,7,1\n", {"--independent", "x", "--group", "g"}},
        {"x,y,g\n1,4,1\n2,refused,2\n3,5,1\n4,6,2\nnull,7,1\n", {"--one-sample", "y"}},
    };
    for (const Case& one : cases) {
        const std::string table = folder.Write("table.csv", one.content);
        const CommandResult described = RunTarn({"look", table, "--format", "json"});
        ASSERT_EQ(described.exitStatus, 0) << described.err;
        const std::string fields = folder.Write("fields.json", described.out);
        std::vector<std::string> plain{"analyze", table};
        plain.insert(plain.end(), one.wish.begin(), one.wish.end());
        std::vector<std::string> with = plain;
        with.insert(with.end(), {"--fields", fields});
        const CommandResult expected = RunTarn(plain);
        const CommandResult found = RunTarn(with);
        EXPECT_EQ(found.exitStatus, expected.exitStatus);
        EXPECT_EQ(found.err, expected.err);
        EXPECT_EQ(found.out, expected.out);
    }
}

TEST_F(Look, SaysWhatThePageOfTheCommandLineShows) {
    const std::string page = harness::ReadFile(harness::SourcePath("docs/command-line.md"));
    const std::string prompt = "    $ build/tarn look examples/sleep_clinic.csv\n";
    const std::size_t begin = page.find(prompt);
    ASSERT_NE(begin, std::string::npos);
    std::istringstream lines(page.substr(begin + prompt.size()));
    std::string shown;
    for (std::string line; std::getline(lines, line) && line.starts_with("    ");) shown += line.substr(4) + "\n";
    std::filesystem::current_path(harness::SourcePath("."));
    EXPECT_EQ(RunTarn({"look", "examples/sleep_clinic.csv"}).out, shown);
}

TEST_F(Look, NamesWhatIsOdd) {
    const std::string odd =
        folder.Write("odd.csv",
                     "patient_id,mixed,price,day,dose,flag,size,age\n"
                     "1,1,\"1,234\",01.02.2024,5 mg,0,small,31\n2,2,\"2,345\",13.02.2024,7 mg,1,large,45\n"
                     "2,x,\"3,456\",14.02.2024,9 mg,1,medium,-9\n3,4,\"4,567\",15.02.2024,5 mg,0,Small,28\n");
    const std::string shown = RunTarn({"look", odd}).out;
    for (const char* part : {
             "an identifier that repeats: 3 different in 4",
             "3 of 4 are numbers, but \"x\" is not; --na if it marks what is missing",
             "looks like a decimal comma or a mark of thousands: --decimal , or --decimal .",
             "looks like dates; as numbers they are read from YYYY-MM-DD",
             "looks like numbers with a unit, which is to be taken away",
             "-9 occurs 1 time, far from the rest; if it means missing: --na NA,-9",
             "two values: --nominal flag if they are categories",
             "\"Small\", \"small\" of size differ in nothing but case or blanks",
         }) {
        EXPECT_NE(shown.find(part), std::string::npos) << part << "\n" << shown;
    }
}

class ReadingOptions : public testing::Test {
 protected:
    CommandResult Analyze(const std::string& content, const std::vector<std::string>& more) {
        std::vector<std::string> arguments{"analyze",      folder.Write("data.csv", content),
                                           "--one-sample", "x",
                                           "--tests",      "wilcoxon",
                                           "--test-value", "1",
                                           "--brief"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTarn(arguments);
    }

    ScratchFolder folder;
};

TEST_F(ReadingOptions, SayWhatIsMissingWhereItIsUnusual) {
    const CommandResult usual = Analyze("x\n1\nNA\n3\n4\n\n", {});
    EXPECT_EQ(usual.out.find("missing: "), std::string::npos) << usual.out;
    const CommandResult unusual = Analyze("x,y\n1,1\nNULL,1\n3,1\n-,1\nNULL,1\n,1\n4,1\n", {});
    EXPECT_NE(unusual.out.find("Note: missing: \"NULL\" 2, empty 1, \"-\" 1\n"), std::string::npos) << unusual.out;
    EXPECT_NE(unusual.out.find("3 of 7 cases (4 missing)"), std::string::npos) << unusual.out;
    const CommandResult told = Analyze("x,y\n1,1\n-99,1\n3,1\n4,1\n,1\n", {"--na", "-99"});
    EXPECT_NE(told.out.find("3 of 5 cases (2 missing)"), std::string::npos) << told.out;
}

TEST_F(ReadingOptions, BeatWhatADescriptorSaysOfMissingTexts) {
    const std::string fields = folder.Write("fields.json", R"({"missingValues": ["?"]})");
    const CommandResult described = Analyze("x,y\n1,1\n?,1\n3,1\n4,1\n", {"--fields", fields});
    EXPECT_NE(described.out.find("3 of 4 cases (1 missing)"), std::string::npos) << described.out;
    const CommandResult told = Analyze("x,y\n1,1\n?,1\n!,1\n4,1\n", {"--fields", fields, "--na", "!,?"});
    EXPECT_NE(told.out.find("2 of 4 cases (2 missing)"), std::string::npos) << told.out;
}

TEST_F(ReadingOptions, ThatMeanNothingAreRefused) {
    EXPECT_EQ(Analyze("x\n1\n", {"--delimiter", "x"}).err,
              "tarn: --delimiter: \"x\"; expected comma, semicolon, tab, bar or blank, or the character\n");
    EXPECT_EQ(Analyze("x\n1\n", {"--decimal", "x"}).err, "tarn: --decimal: \"x\"; expected a point or a comma\n");
    const CommandResult encoding = Analyze("x\n1\n", {"--encoding", "latin"});
    EXPECT_EQ(encoding.exitStatus, 2);
    EXPECT_EQ(encoding.err,
              "tarn: --encoding: \"latin\"; expected \"utf-8\", \"utf-16le\", \"utf-16be\", \"windows-1252\" or "
              "\"iso-8859-1\"\n");
}

/// A document of `run` is what it was: of a table of commas nothing is recognised, and the texts that are missing are
/// those that its descriptor names.
TEST(RunReads, PlainTablesAsTheyStand) {
    const ScratchFolder folder;
    const std::string plan = folder.Write("plan.json", R"({"tests": [{"RSign": {"variableName": ["a", "b"]}}]})");
    const std::string data = folder.Write("data.csv", "a,b,c,d\n1,2,NULL,\"2,5\"\n2,1,-,\"3,5\"\n3,5,x,\"4,5\"\n");
    const CommandResult result = RunTarn({"run", "--data", data, "--plan", plan});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    const harness::Document document(result.out);
    const auto count = [&](const char* path) { return document.Root().select_nodes(path).size(); };
    EXPECT_EQ(result.err.find("note"), std::string::npos) << result.err;
    EXPECT_EQ(count("//*[@*='NULL']"), 1U) << result.out;
    EXPECT_EQ(count("//*[@*='-']"), 1U);
    EXPECT_EQ(count("//*[@*='2,5']"), 1U);
}

/// What used to be refused is read, and said.
TEST(RunReads, WhatItCouldNotRead) {
    const ScratchFolder folder;
    const std::string plan = folder.Write("plan.json", R"({"tests": [{"RSign": {"variableName": ["a", "b"]}}]})");
    const std::string data = folder.Write("data.csv", "a;b\n1,5;2\n2;1\n3;5,5\n");
    const std::string plain = folder.Write("plain.csv", "a,b\n1.5,2\n2,1\n3,5.5\n");
    const CommandResult result = RunTarn({"run", "--data", data, "--plan", plan, "--quiet"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.err, "tarn: note: " + data + ": semicolons, decimal commas\n");
    EXPECT_EQ(result.out, RunTarn({"run", "--data", plain, "--plan", plan, "--quiet"}).out);
}

TEST(CompressedTables, ComeFromStandardInputToo) {
    const std::string packed = harness::ReadFile(harness::SourcePath("tests/host/table/messy/german.csv.gz"));
    const std::string text = harness::ReadFile(harness::SourcePath("tests/host/table/messy/german_utf8.csv"));
    const std::vector<std::string> arguments{"analyze", "-", "--independent", "score", "--group", "arm"};
    const CommandResult result = RunTarn(arguments, packed);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, RunTarn(arguments, text).out);
    const CommandResult cut = RunTarn(arguments, packed.substr(0, packed.size() - 12));
    EXPECT_EQ(cut.exitStatus, 2);
    EXPECT_EQ(cut.err, "tarn: standard input: the gzip data ends too early; expected a whole compressed file\n");
}

}  // namespace
