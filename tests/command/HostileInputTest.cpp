// Inputs that are made to break a reader: each is refused in one line.

#include <gtest/gtest.h>

#include <algorithm>
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

}  // namespace
