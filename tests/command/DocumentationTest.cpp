// The commands that README.md and the pages of docs/ show with their outputs, and those that show each test and layout
// in tests/command/readable/: what a reader sees there is what the command says. What the numbers should be is the
// matter of other tests.

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

constexpr const char* kIndent = "    ";
constexpr const char* kPrompt = "    $ build/tarn ";

struct Example {
    std::vector<std::string> arguments;
    std::string output;
};

bool IsIndented(const std::string& line) {
    return line.starts_with(kIndent);
}

/// The words of a command as a shell has them: what stands in single quotes is one.
std::vector<std::string> WordsOf(const std::string& command) {
    std::vector<std::string> words;
    bool isWord = false;
    bool isQuoted = false;
    for (const char c : command) {
        if (c == '\'') {
            isQuoted = !isQuoted;
        } else if (c == ' ' && !isQuoted) {
            isWord = false;
            continue;
        }
        if (!isWord) words.emplace_back();
        isWord = true;
        if (c != '\'') words.back() += c;
    }
    return words;
}

/// The commands of a page: a line with the prompt, lines that a backslash continues, then the indented output; empty
/// lines within it belong to it.
std::vector<Example> ExamplesOf(const std::string& page) {
    std::vector<Example> examples;
    std::istringstream lines(harness::ReadFile(harness::SourcePath(page)));
    std::string line;
    bool isOutput = false;
    std::string emptyLines;
    while (std::getline(lines, line)) {
        if (line.starts_with(kPrompt)) {
            std::string command = line.substr(std::string(kPrompt).size());
            while (command.ends_with('\\') && std::getline(lines, line)) {
                command.pop_back();
                command += line;
            }
            examples.emplace_back().arguments = WordsOf(command);
            isOutput = true;
            emptyLines.clear();
        } else if (isOutput && line.empty()) {
            emptyLines += "\n";
        } else if (isOutput && IsIndented(line)) {
            examples.back().output += emptyLines + line.substr(std::string(kIndent).size()) + "\n";
            emptyLines.clear();
        } else {
            isOutput = false;
        }
    }
    return examples;
}

/// Takes `> FILE` away from the end of a command, as a shell does; "" where it isn't there.
std::string FileOfOutput(std::vector<std::string>& arguments) {
    if (arguments.size() < 2 || arguments[arguments.size() - 2] != ">") return "";
    std::string file = arguments.back();
    arguments.resize(arguments.size() - 2);
    return file;
}

class Documentation : public testing::TestWithParam<std::string> {};

TEST_P(Documentation, ShowsWhatTheCommandSays) {
    const std::vector<Example> examples = ExamplesOf(GetParam());
    EXPECT_FALSE(examples.empty());
    std::filesystem::current_path(harness::SourcePath("."));
    const harness::ScratchFolder scratch;
    for (Example example : examples) {
        for (std::string& argument : example.arguments) {
            if (argument == "result.xml" || argument == "result.json") argument = scratch.Path(argument);
        }
        const std::string kept = FileOfOutput(example.arguments);
        const harness::CommandResult result = harness::RunTarn(example.arguments);
        if (!kept.empty()) std::ofstream(kept) << result.out;
        EXPECT_EQ((kept.empty() ? result.out : "") + result.err, example.output);
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, Documentation,
                         testing::Values("README.md", "docs/one-sample.md", "docs/related.md", "docs/independent.md",
                                         "docs/published.md", "docs/reading.md", "docs/choosing.md", "docs/missing.md",
                                         "docs/coming-from.md", "docs/report.md", "docs/verify.md", "docs/record.md",
                                         "docs/explain.md", "tests/command/readable/explained.md",
                                         "tests/command/readable/one-sample.md", "tests/command/readable/related.md",
                                         "tests/command/readable/independent.md", "tests/command/readable/layouts.md",
                                         "tests/command/readable/formats.md"),
                         [](const auto& test) {
                             std::string name = test.param;
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             }
                             return name;
                         });

}  // namespace
