#include "apps/tarn/ManPage.h"

#include <string_view>
#include <utility>

namespace tarn {

namespace {

// What no command says by itself.
constexpr std::string_view kDescription =
    "tarn tests hypotheses about one, related and independent samples without assuming that they are normal. "
    "analyze chooses the tests by the levels of the fields, or takes those that are named, and shows the results. "
    "look, or a table alone, shows what a table holds and what can be asked of it. "
    "run hands over a request that is written down, and gives the result document.";

constexpr std::pair<std::string_view, std::string_view> kExitStatuses[] = {
    {"0", "done; a test that ended in an error of its own is a result, too"},
    {"1", "the run failed; its code and what it means stand on standard error"},
    {"2", "wrong usage or an input that can't be read, told in one line"},
};

constexpr std::pair<std::string_view, std::string_view> kEnvironment[] = {
    {"TARN_LANGUAGE", "the language of the sentences; otherwise that of LC_ALL, LC_MESSAGES or LANG"},
    {"TARN_MESSAGES", "the folder with the sentences in other languages"},
    {"NO_COLOR", "if it is set and not empty, no colour is used"},
};

constexpr std::pair<std::string_view, std::string_view> kExamples[] = {
    {"tarn data.csv", "see what a table holds and what can be asked of it"},
    {"tarn analyze data.csv --related before,after", "compare two fields measured on the same cases"},
    {"tarn analyze data.csv --independent score --group arm --compare pairwise",
     "compare a field between groups, and the groups with one another"},
    {"tarn analyze data.csv --one-sample score --out result.xml && tarn show result.xml --format csv",
     "keep the result document, and tell it again as a tidy table"},
};

/// A text as the page shows it: a backslash and a hyphen mean themselves, and a point or an apostrophe at the start of
/// a line starts no request.
std::string Escaped(std::string_view text) {
    std::string escaped;
    if (text.starts_with('.') || text.starts_with('\'')) escaped = "\\&";
    for (const char c : text) {
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string Sentence(std::string_view text) {
    return Escaped(text) + (text.ends_with('.') ? "" : ".") + "\n";
}

/// A term in bold, what it takes in italics, and what it means.
std::string Term(const std::string& names, const std::string& argument, std::string_view meaning) {
    std::string text = ".TP\n\\fB" + names + "\\fR";
    if (!argument.empty()) text += " \\fI" + Escaped(argument) + "\\fR";
    return text + "\n" + Sentence(meaning);
}

std::string NamesOf(const OptionDescription& option) {
    if (option.IsPositional()) return Escaped(option.argument);
    std::string names;
    for (const std::string& name : option.names) names += (names.empty() ? "" : "\\fR, \\fB") + Escaped(name);
    return names;
}

std::string CommandSection(const CommandDescription& command) {
    std::string text = ".SS tarn " + Escaped(command.name);
    for (const OptionDescription& option : command.options) {
        if (option.IsPositional()) text += " " + Escaped(option.argument);
    }
    text += "\n" + Sentence(command.help);
    for (const OptionDescription& option : command.options) {
        text += Term(NamesOf(option), option.IsPositional() ? "" : option.argument, option.help);
    }
    return text;
}

template <typename Rows>
std::string Terms(const Rows& rows) {
    std::string text;
    for (const auto& [term, meaning] : rows) text += Term(Escaped(term), "", meaning);
    return text;
}

}  // namespace

std::string ManPage(const std::vector<CommandDescription>& commands) {
    std::string text =
        ".\\\" Made by \"tarn man\".\n"
        ".TH TARN 1 \"\" \"tarn " TARN_VERSION
        "\" \"User Commands\"\n"
        ".SH NAME\ntarn \\- nonparametric tests of one, related and independent samples\n"
        ".SH SYNOPSIS\n.B tarn\n.I COMMAND\n.RI [ OPTIONS ]\n"
        ".SH DESCRIPTION\n";
    text += Sentence(kDescription) + ".SH COMMANDS\n";
    for (const CommandDescription& command : commands) text += CommandSection(command);
    text += ".SH EXIT STATUS\n" + Terms(kExitStatuses);
    text += ".SH ENVIRONMENT\n" + Terms(kEnvironment);
    text += ".SH EXAMPLES\n" + Terms(kExamples);
    return text;
}

}  // namespace tarn
