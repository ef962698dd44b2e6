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
    EXPECT_EQ(result.out, "");
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
