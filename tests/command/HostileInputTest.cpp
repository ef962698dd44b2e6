// Inputs that are made to break a reader: each is refused in one line.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;

const std::string kSleep = harness::SourcePath("examples/sleep_clinic.csv");

void ExpectOneLine(const CommandResult& result, const std::string& line) {
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.out.substr(0, 200), "");
    EXPECT_EQ(result.err, "tarn: " + line + "\n");
}

// ---- Deep nesting ----

TEST(HostileInput, DeepJsonIsRefusedWhereverJsonIsRead) {
    const ScratchFolder folder;
    const std::string deep = folder.Write("deep.json", std::string(120000, '['));
    const std::string line = deep + ":1:65: arrays and objects nest deeper than 64; expected fewer in one another";
    ExpectOneLine(RunTarn({"run", "--data", kSleep, "--plan", deep}), line);
    ExpectOneLine(RunTarn({"run", "--data", kSleep, "--settings", deep}), line);
    ExpectOneLine(RunTarn({"analyze", kSleep, "--fields", deep}), line);
    ExpectOneLine(RunTarn({"look", kSleep, "--fields", deep}), line);
    ExpectOneLine(RunTarn({"rerun", deep}), line);
}

TEST(HostileInput, ADeepValueWithinAPlanIsRefused) {
    const ScratchFolder folder;
    const std::string lists = std::string(100000, '[') + std::string(100000, ']');
    const std::string plan = folder.Write("plan.json", R"({"sign": {"field1": )" + lists + "}}");
    ExpectOneLine(RunTarn({"run", "--data", kSleep, "--plan", plan}),
                  plan + ":1:83: arrays and objects nest deeper than 64; expected fewer in one another");
}

std::string Elements(const std::string& name, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += "<" + name + ">";
    for (std::size_t i = 0; i < count; ++i) text += "</" + name + ">";
    return text;
}

TEST(HostileInput, ADeepDocumentIsRefused) {
    const ScratchFolder folder;
    // Six elements are around the tables, the first of which begins at byte 81.
    const std::string inside = "<Tabulon><Extension><TARNOutput><NonParametricTests><Algorithm name=\"RSign\">";
    const std::string after = "</Algorithm></NonParametricTests></TARNOutput></Extension></Tabulon>";
    const std::string good = folder.Write("good.xml", inside + Elements("StructuredTable", 59) + after);
    EXPECT_EQ(RunTarn({"show", good}).exitStatus, 0);
    const std::string deep = folder.Write("deep.xml", inside + Elements("StructuredTable", 60000) + after);
    const std::size_t tooDeep = inside.size() + 59 * std::string("<StructuredTable>").size() + 1;
    ExpectOneLine(RunTarn({"show", deep}), deep + ": elements nest deeper than 64 at byte " + std::to_string(tooDeep) +
                                               "; expected a result document");
}

// ---- Words ----

TEST(HostileInput, AnEmptyWordIsRefusedByEachCommand) {
    for (const char* const command : {"analyze", "look", "rerun", "show", "tests", "verify", "explain", "completion"}) {
        EXPECT_EQ(RunTarn({command, "", "--memory", "1G"}).exitStatus, 2) << command;
    }
    ExpectOneLine(RunTarn({"run", "", "--memory", "1G"}),
                  "unknown argument \"\"; tarn run --help shows what can be typed");
}

// ---- Without an end ----

TEST(HostileInput, ADeviceOfZerosIsRefusedWhereverSomethingIsRead) {
    const std::string zeros = "/dev/zero";
    const std::string text = "/dev/zero: byte 1 is zero; expected a text";
    ExpectOneLine(RunTarn({"run", "--data", kSleep, "--plan", zeros}), text);
    ExpectOneLine(RunTarn({"run", "--data", kSleep, "--settings", zeros}), text);
    ExpectOneLine(RunTarn({"analyze", kSleep, "--fields", zeros}), text);
    ExpectOneLine(RunTarn({"rerun", zeros}), text);
    ExpectOneLine(RunTarn({"show", zeros}), text);
}

TEST(HostileInput, ATableOfZeroBytesIsRefused) {
    ExpectOneLine(RunTarn({"look", "/dev/zero"}), "/dev/zero: binary data; expected a table as text: export it as CSV");
    const ScratchFolder folder;
    std::string rows = "a,b\n";
    for (int i = 0; i < 1000; ++i) rows += "1,2\n";
    const std::string table = folder.Write("table.csv", rows + std::string(10'000'000, '\0'));
    ExpectOneLine(RunTarn({"look", table}),
                  table + ":1002: byte 0x00; expected text in UTF-8, or its encoding told: --encoding utf-16le");
}

TEST(HostileInput, ARowWithoutAnEndIsRefused) {
    const ScratchFolder folder;
    const std::string header = folder.Write("header.csv", std::string(70'000'000, 'a'));
    ExpectOneLine(RunTarn({"look", header}),
                  header + ":1: a row of 64 MiB or more; expected its end, or that of a cell in quotes");
    const std::string row = folder.Write("row.csv", "a,b\n1,2\n\"" + std::string(70'000'000, 'x'));
    ExpectOneLine(RunTarn({"look", row}),
                  row + ": a row of 64 MiB or more; expected its end, or that of a cell in quotes");
}

TEST(HostileInput, ATableTakesNoMoreThanItMay) {
    std::string rows = "a,b\n";
    for (int i = 0; i < 2'000'000; ++i) rows += "1,2\n";
    const CommandResult result = RunTarn({"look", "-", "--memory", "16M", "--threads", "1"}, rows);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_TRUE(result.err.starts_with("tarn: standard input: more than 16 MiB of memory after ")) << result.err;
    EXPECT_TRUE(result.err.ends_with(" records; expected a smaller table, or more memory told by --memory\n"));
    EXPECT_EQ(RunTarn({"look", "-", "--memory", "1G"}, rows).exitStatus, 0);
}

// ---- Small inputs that ask for much ----

/// A pair of fields with so many categories each, which are the same.
std::string Square(int categories) {
    std::string rows = "a,b\n";
    for (int i = 0; i < categories; ++i) {
        rows += std::to_string(i) + "," + std::to_string((7 * i + 3) % categories) + "\n";
    }
    return rows;
}

// 5,000 categories: 25,000,000 cells of 80 bytes are 1.86 GiB; 10,000 cells of the table, a test and its fields add 0.2
// MiB.
TEST(HostileInput, ASquareTableThatMayTakeTooMuchIsRefusedBeforeItIsMade) {
    const ScratchFolder folder;
    const std::string table = folder.Write("square.csv", Square(5000));
    const std::string needs =
        ": may take 1.9 GiB of memory (1 results of tests, 2 related fields, 25000000 cells of square tables); "
        "expected "
        "at most 512.0 MiB, or more told by --memory";
    ExpectOneLine(RunTarn({"analyze", table, "--related", "a,b", "--ordinal", "a,b", "--tests", "marginal-homogeneity",
                           "--memory", "512M"}),
                  "request" + needs);
    const std::string plan =
        folder.Write("plan.json", R"({"tests": [{"RMarginalHomogeneity": {"variableName": ["a", "b"]}}]})");
    ExpectOneLine(RunTarn({"run", "--data", table, "--plan", plan, "--ordinal", "a,b", "--memory", "512M"}),
                  "the plan" + needs);
}

// 1,000 groups: 499,500 pairs of 750 bytes are 357.3 MiB.
TEST(HostileInput, PairsThatMayTakeTooMuchAreRefusedBeforeTheyAreMade) {
    const ScratchFolder folder;
    std::string rows = "x,g\n";
    for (int i = 0; i < 2000; ++i) rows += std::to_string(i % 7) + "," + std::to_string(i % 250) + "\n";
    const std::string table = folder.Write("groups.csv", rows);
    const std::vector<std::string> words = {
        "analyze", table,     "--independent",  "x",         "--group",  "g",       "--nominal",
        "g",       "--tests", "kruskal-wallis", "--compare", "pairwise", "--memory"};
    std::vector<std::string> refused = words;
    refused.emplace_back("20M");
    ExpectOneLine(RunTarn(refused),
                  "request: may take 22.3 MiB of memory (1 results of tests, 31125 pairs of samples); "
                  "expected at most 20.0 MiB, or more told by --memory");
    std::vector<std::string> taken = words;
    taken.emplace_back("0.03G");
    EXPECT_EQ(RunTarn(taken).exitStatus, 0);
}

// Described as a page, a field of many related ones takes up to 36,000 bytes: 1,000 of them 34.3 MiB; a brief one
// 20,000, 19.1 MiB. The test adds 52,000 or 38,000, two rows 16 for each field.
TEST(HostileInput, FieldsThatMayTakeTooMuchAreRefusedBeforeTheyAreDescribed) {
    const ScratchFolder folder;
    std::string names;
    std::string cells;
    for (int i = 0; i < 1000; ++i) {
        names += (i == 0 ? "" : ",v") + std::to_string(i);
        cells += (i == 0 ? "" : ",") + std::to_string((7 * i) % 10);
    }
    const std::string table = folder.Write("fields.csv", "v" + names + "\n" + cells + "\n" + cells + "\n");
    std::vector<std::string> words = {"analyze", table, "--related", "v*", "--tests", "friedman", "--memory", "20M"};
    ExpectOneLine(RunTarn(words),
                  "request: may take 34.4 MiB of memory (1 results of tests, 1000 related fields); expected at most "
                  "20.0 MiB, or more told by --memory");
    words.emplace_back("--brief");
    EXPECT_EQ(RunTarn(words).exitStatus, 0);
}

// Each row of CSV names all 12,000 fields, of 5 letters mostly, for each of which it has a row.
TEST(HostileInput, RowsThatAllNameThousandsOfFieldsAreRefused) {
    const ScratchFolder folder;
    std::string names;
    std::string cells;
    for (int i = 0; i < 12'000; ++i) {
        names += (i == 0 ? "v" : ",v") + std::to_string(i);
        cells += (i == 0 ? "" : ",") + std::to_string((7 * i) % 10);
    }
    const std::string table = folder.Write("fields.csv", names + "\n" + cells + "\n" + cells + "\n");
    ExpectOneLine(RunTarn({"analyze", table, "--related", "v*", "--tests", "friedman", "--brief", "--format", "csv"}),
                  "CSV: each row of RFriedmansTwoWayByRanks names its 12000 fields, more than 512 MiB in all; expected "
                  "fewer fields, or another format");
}

// ---- Time with the cube of the number of samples ----

/// One case in each of so many groups.
std::string Groups(int groups) {
    std::string rows = "x,g\n";
    for (int i = 0; i < groups; ++i) rows += std::to_string((7 * i) % groups) + "," + std::to_string(i) + "\n";
    return rows;
}

TEST(HostileInput, MoreSamplesStepByStepThanEndInTimeAreRefusedBeforeTheRun) {
    const ScratchFolder folder;
    const std::string table = folder.Write("groups.csv", Groups(1001));
    const std::string reason =
        ": compares 1001 samples step by step, which takes time with the cube of their number; expected at most 1000 "
        "samples, or all pairs of them";
    ExpectOneLine(RunTarn({"analyze", table, "--independent", "x", "--group", "g", "--ordinal", "g", "--tests",
                           "jonckheere", "--compare", "stepwise"}),
                  "request" + reason);
    const std::string plan = folder.Write("plan.json", R"({"tests": [{"IKruskalWallis": {"variableName": "x",
        "groupVariableName": "g", "typeOfMultipleComparison": "stepWise"}}]})");
    ExpectOneLine(RunTarn({"run", "--data", table, "--plan", plan, "--nominal", "g"}), "the plan" + reason);
    std::string fields = "v0";
    std::string numbers = "0";
    for (int i = 1; i <= 1000; ++i) {
        fields += ",v" + std::to_string(i);
        numbers += "," + std::to_string(i);
    }
    const std::string wide = folder.Write("wide.csv", fields + "\n" + numbers + "\n" + numbers + "\n");
    ExpectOneLine(RunTarn({"analyze", wide, "--related", "v*", "--tests", "friedman", "--compare", "stepwise"}),
                  "request" + reason);
}

TEST(HostileInput, AThousandSamplesAreComparedStepByStep) {
    const ScratchFolder folder;
    const std::string table = folder.Write("groups.csv", Groups(1000));
    for (const char* test : {"jonckheere", "kruskal-wallis"}) {
        const CommandResult result = RunTarn({"analyze", table, "--independent", "x", "--group", "g", "--ordinal", "g",
                                              "--tests", test, "--compare", "stepwise"});
        EXPECT_EQ(result.exitStatus, 0) << result.err;
    }
}

TEST(HostileInput, ASizeOfMemoryHasAUnit) {
    for (const char* size : {"8", "G", "0G", "-1G", "8GB", "1e9G", ""}) {
        const CommandResult result = RunTarn({"look", kSleep, "--memory", size});
        EXPECT_EQ(result.exitStatus, 2) << size;
        EXPECT_EQ(result.err, std::string("tarn: --memory: \"") + size + "\"; expected a size like 8G or 512M\n");
    }
}

// ---- Files that would be lost ----

TEST(HostileInput, AnOutputIsNoFileThatIsRead) {
    const ScratchFolder folder;
    const std::string table = folder.Write("table.csv", harness::ReadFile(kSleep));
    const std::string plan =
        folder.Write("plan.json", R"({"sign": {"field1": "hours_before", "field2": "hours_after"}})");
    const std::string fields = folder.Write("fields.json", "{}");
    std::filesystem::create_symlink(table, folder.Path("link"));
    const std::string link = folder.Path("link");
    ExpectOneLine(RunTarn({"analyze", table, "--one-sample", "age", "--out", table}),
                  "--out: " + table + " is the table as well; expected another file");
    ExpectOneLine(RunTarn({"analyze", table, "--one-sample", "age", "--out", link}),
                  "--out: " + link + " is the table as well; expected another file");
    ExpectOneLine(RunTarn({"analyze", table, "--one-sample", "age", "--save", table}),
                  "--save: " + table + " is the table as well; expected another file");
    ExpectOneLine(RunTarn({"analyze", table, "--fields", fields, "--one-sample", "age", "--save", fields}),
                  "--save: " + fields + " is the descriptor as well; expected another file");
    ExpectOneLine(RunTarn({"run", "--data", table, "--plan", plan, "--out", plan}),
                  "--out: " + plan + " is the plan as well; expected another file");
    const std::string both = folder.Path("both");
    ExpectOneLine(RunTarn({"analyze", table, "--one-sample", "age", "--out", both, "--save", both}),
                  "--save: " + both + " is --out as well; expected another file");
    EXPECT_EQ(harness::ReadFile(table), harness::ReadFile(kSleep));
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"fields.json", "link", "plan.json", "table.csv"}));
}

TEST(HostileInput, AStudyIsNotOverwrittenByWhatItBrings) {
    const ScratchFolder folder;
    const std::string study = folder.Path("study.json");
    ASSERT_EQ(RunTarn({"analyze", kSleep, "--one-sample", "age", "--save", study}).exitStatus, 0);
    ExpectOneLine(RunTarn({"rerun", study, "--out", study}),
                  "--out: " + study + " is the study as well; expected another file");
}

TEST(HostileInput, AnEmptyPathIsRefused) {
    ExpectOneLine(RunTarn({"analyze", kSleep, "--one-sample", "age", "--out", ""}),
                  "--out: \"\"; expected the path of a file");
    ExpectOneLine(RunTarn({"analyze", kSleep, "--one-sample", "age", "--save", ""}),
                  "--save: \"\"; expected the path of a file");
    ExpectOneLine(RunTarn({"analyze", "", "--one-sample", "age"}), "an empty path can't be read; expected a file");
}

TEST(HostileInput, APipeWithoutAReaderCanBeInterrupted) {
    const ScratchFolder folder;
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const CommandResult result =
        harness::RunTarnInterrupted({"analyze", kSleep, "--one-sample", "age", "--quiet", "--out", pipe}, 0.5);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err, "tarn: the run failed with code 1: the run was cancelled\n");
    EXPECT_EQ(folder.Files(), std::vector<std::string>{"pipe"});
}

}  // namespace
