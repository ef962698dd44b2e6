// The one description of the commands, and what is made from it: the manual page and the completions of the shells.
// That of bash is tried in a shell, as a user's TAB does it.

#include "apps/tarn/CommandLine.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "apps/tarn/ManPage.h"
#include "apps/tarn/ShellCompletion.h"

namespace {

using tarn::CommandDescription;
using tarn::OptionDescription;
using Words = std::vector<std::string>;

const CommandDescription& Command(const std::vector<CommandDescription>& commands, const std::string& name) {
    return *std::ranges::find(commands, name, &CommandDescription::name);
}

const OptionDescription& Option(const CommandDescription& command, const std::string& name) {
    return *std::ranges::find_if(command.options, [&](const OptionDescription& option) {
        return option.argument == name || std::ranges::find(option.names, name) != option.names.end();
    });
}

TEST(Commands, AreDescribedOneAndAll) {
    const std::vector<CommandDescription> commands = tarn::DescribeCommands();
    Words names;
    for (const CommandDescription& command : commands) {
        names.push_back(command.name);
        EXPECT_FALSE(command.help.empty()) << command.name;
        for (const OptionDescription& option : command.options) {
            EXPECT_FALSE(option.help.empty()) << command.name;
            EXPECT_FALSE(option.help.ends_with('.')) << option.help;
        }
    }
    EXPECT_EQ(names,
              (Words{"analyze", "run", "look", "rerun", "tests", "verify", "show", "explain", "man", "completion"}));
}

TEST(Commands, TellWhatTheirOptionsTake) {
    const std::vector<CommandDescription> commands = tarn::DescribeCommands();
    const CommandDescription& analyze = Command(commands, "analyze");
    EXPECT_TRUE(Option(analyze, "DATA").IsPositional());
    EXPECT_TRUE(Option(analyze, "DATA").TakesFile());
    EXPECT_TRUE(Option(analyze, "--related").IsList());
    EXPECT_TRUE(Option(analyze, "--related").TakesField());
    EXPECT_FALSE(Option(analyze, "--group").IsList());
    EXPECT_EQ(Option(analyze, "--quiet").argument, "");
    EXPECT_EQ(Option(analyze, "--format").choices,
              (Words{"text", "json", "csv", "xml", "md", "latex", "typst", "apa", "xlsx", "html"}));
    const Words& tests = Option(analyze, "--tests").choices;
    EXPECT_EQ(std::ranges::count(tests, "wilcoxon"), 1) << "it stands in two families";
    EXPECT_EQ(Option(Command(commands, "run"), "--plan").argument, "FILE") << "options of a group are there, too";
}

TEST(ManPageText, HoldsEveryCommandAndOption) {
    const std::vector<CommandDescription> commands{{"try",
                                                    "Try it",
                                                    {{{"-a", "--all"}, "", "Take all", {}},
                                                     {{"--to"}, "FILE", ".start's \\ end", {}},
                                                     {{}, "DATA", "The data", {}}}}};
    const std::string page = tarn::ManPage(commands);
    EXPECT_NE(page.find(".TH TARN 1 "), std::string::npos);
    EXPECT_NE(page.find(".SS tarn try DATA\nTry it.\n"
                        ".TP\n\\fB\\-a\\fR, \\fB\\-\\-all\\fR\nTake all.\n"
                        ".TP\n\\fB\\-\\-to\\fR \\fIFILE\\fR\n\\&.start's \\e end.\n"
                        ".TP\n\\fBDATA\\fR\nThe data.\n"),
              std::string::npos)
        << page;
}

/// What bash offers for the last one of the words typed.
Words Completed(const Words& words) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("tarn-completion-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "data.csv") << "score,\"arm\",two words\r\n1,2,3\n";
    std::ofstream(folder / "tarn.bash") << tarn::ShellCompletion("bash", tarn::DescribeCommands());
    std::string typed;
    for (const std::string& word : words) typed += " '" + word + "'";
    const std::string command = "cd '" + folder.string() + "' && bash -c 'source ./tarn.bash; COMP_WORDS=(\"$@\"); " +
                                "COMP_CWORD=$(($# - 1)); _tarn; printf \"%s\\n\" \"${COMPREPLY[@]}\"' bash tarn" +
                                typed;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::array<char, 4096> buffer;
    std::string output;
    while (std::fgets(buffer.data(), buffer.size(), pipe.get()) != nullptr) output += buffer.data();
    std::filesystem::remove_all(folder);
    std::istringstream lines(output);
    Words offered;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty()) offered.push_back(line);
    }
    return offered;
}

TEST(BashCompletion, OffersCommandsAndOptions) {
    EXPECT_EQ(Completed({"ex"}), Words{"explain"});
    EXPECT_EQ(Completed({"--v"}), Words{"--version"});
    EXPECT_EQ(Completed({"analyze", "--conf"}), Words{"--confidence"});
    EXPECT_EQ(Completed({"run", "--conf"}), Words{});
}

TEST(BashCompletion, OffersTheWordsOfAnOption) {
    EXPECT_EQ(Completed({"analyze", "d.csv", "--compare", ""}), (Words{"pairwise", "stepwise"}));
    EXPECT_EQ(Completed({"show", "--format", "=", "j"}), Words{"json"}) << "the shell parts words at =";
    EXPECT_EQ(Completed({"show", "--format", "="}),
              (Words{"text", "json", "csv", "xml", "md", "latex", "typst", "apa", "xlsx", "html"}));
    EXPECT_EQ(Completed({"explain", "mosE"}), Words{});
    EXPECT_EQ(Completed({"explain", "mose"}), Words{"moses"});
    EXPECT_EQ(Completed({"analyze", "--alpha", ""}), Words{}) << "a number can't be known";
}

TEST(BashCompletion, OffersTheNextOneOfAList) {
    EXPECT_EQ(Completed({"analyze", "--tests", "sign,mcn"}), Words{"sign,mcnemar"});
    EXPECT_EQ(Completed({"analyze", "--distribution", "normal,un"}), Words{"normal,uniform"});
}

TEST(BashCompletion, OffersFilesAndTheFieldsOfTheTable) {
    EXPECT_EQ(Completed({"analyze", "da"}), Words{"data.csv"});
    EXPECT_EQ(Completed({"run", "--data", "da"}), Words{"data.csv"});
    EXPECT_EQ(Completed({"analyze", "data.csv", "--group", ""}), (Words{"score", "arm"}));
    EXPECT_EQ(Completed({"analyze", "data.csv", "--by", "a"}), Words{"arm"}) << "another name of --group";
    EXPECT_EQ(Completed({"analyze", "data.csv", "--related", "score,a"}), Words{"score,arm"});
}

TEST(ZshCompletion, DescribesEveryCommandAndOption) {
    const std::vector<CommandDescription> commands{{"try",
                                                    "Try: it's easy",
                                                    {{{"--how"}, "fast|slow", "How [fast]: choose", {"fast", "slow"}},
                                                     {{"--fields"}, "FIELD,..", "Which", {}},
                                                     {{"-q", "--quiet"}, "", "Silent", {}},
                                                     {{}, "DATA", "The data", {}}}}};
    const std::string script = tarn::ShellCompletion("zsh", commands);
    EXPECT_TRUE(script.starts_with("#compdef tarn\n"));
    EXPECT_NE(script.find("        'try:Try\\: it'\\''s easy'\n"), std::string::npos) << script;
    EXPECT_NE(script.find("        try) _arguments \\\n"
                          "            '--how=[How \\[fast\\]\\: choose]:fast|slow:(fast slow)' \\\n"
                          "            '--fields=[Which]:FIELD,..:_values -s , field $(_tarn_fields)' \\\n"
                          "            '-q[Silent]' \\\n"
                          "            '--quiet[Silent]' \\\n"
                          "            '1:The data:_files' ;;\n"),
              std::string::npos)
        << script;
}

}  // namespace
