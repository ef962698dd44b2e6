#include "apps/tarn/ShellCompletion.h"

#include <string_view>

namespace tarn {

namespace {

std::string JoinWords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// ---- bash ----

/// What completes the word behind an option, or at the place of an argument: a call in the script; "" for nothing.
std::string BashAction(const OptionDescription& option) {
    if (!option.choices.empty()) {
        return std::string(option.IsList() ? "_tarn_list" : "_tarn_words") + " '" + JoinWords(option.choices) + "'";
    }
    if (option.TakesField())
        return option.IsList() ? "_tarn_list \"$(_tarn_fields)\"" : "_tarn_words \"$(_tarn_fields)\"";
    return option.TakesFile() ? "_tarn_files" : "";
}

constexpr std::string_view kBashHead = R"(# Completion of tarn for bash; made by "tarn completion bash".

# The names in the header of the first table among the words typed, a name with a blank left out.
_tarn_fields() {
    local word header name
    for word in "${COMP_WORDS[@]:2}"; do
        [[ $word == *.csv && -r $word ]] || continue
        IFS= read -r header <"$word"
        header=${header%$'\r'}
        IFS=, read -r -a names <<<"${header//\"/}"
        for name in "${names[@]}"; do [[ $name == *[[:space:]]* ]] || printf '%s ' "$name"; done
        return
    done
}
_tarn_words() { COMPREPLY=($(compgen -W "$1" -- "$cur")); }
_tarn_files() { compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- "$cur")); }
_tarn_list() {
    local before=
    [[ $cur == *,* ]] && before=${cur%,*},
    compopt -o nospace 2>/dev/null
    COMPREPLY=($(compgen -P "$before" -W "$1" -- "${cur##*,}"))
}

_tarn() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} names
    COMPREPLY=()
    # "--format=json" comes as three words.
    if [[ $cur == = ]]; then cur=; elif [[ $prev == = ]]; then prev=${COMP_WORDS[COMP_CWORD-2]}; fi
)";

std::string BashCompletion(const std::vector<CommandDescription>& commands) {
    std::string names;
    std::string behindOptions;
    std::string elsewhere;
    for (const CommandDescription& command : commands) {
        names += command.name + " ";
        std::string options;
        std::string arguments;
        for (const OptionDescription& option : command.options) {
            const std::string action = BashAction(option);
            if (option.IsPositional()) {
                if (!action.empty()) arguments += " " + action + ";";
                continue;
            }
            options += (options.empty() ? "" : " ") + JoinWords(option.names);
            if (option.argument.empty()) continue;
            std::string typed;
            for (const std::string& name : option.names) {
                typed += (typed.empty() ? "'" : "|'") + command.name + " " + name + "'";
            }
            behindOptions += "        " + typed + ") " + (action.empty() ? "" : action + "; ") + "return ;;\n";
        }
        elsewhere += "        " + command.name + ") if [[ $cur == -* ]]; then _tarn_words '" + options + "'; else" +
                     (arguments.empty() ? " :;" : arguments) + " fi ;;\n";
    }
    return std::string(kBashHead) + "    if ((COMP_CWORD == 1)); then _tarn_words '" + names +
           "--help --version'; return; fi\n    case \"${COMP_WORDS[1]} $prev\" in\n" + behindOptions +
           "    esac\n    case ${COMP_WORDS[1]} in\n" + elsewhere + "    esac\n}\ncomplete -F _tarn tarn\n";
}

// ---- zsh ----

/// A text within single quotes, in which `special` characters are escaped for the function that reads it.
std::string ZshText(const std::string& text, std::string_view special) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
            continue;
        }
        if (special.find(c) != std::string_view::npos) quoted += '\\';
        quoted += c;
    }
    return quoted;
}

std::string ZshAction(const OptionDescription& option) {
    if (!option.choices.empty()) {
        return option.IsList() ? "_values -s , word " + JoinWords(option.choices)
                               : "(" + JoinWords(option.choices) + ")";
    }
    if (option.TakesField()) return option.IsList() ? "_values -s , field $(_tarn_fields)" : "_tarn_field";
    return option.TakesFile() ? "_files" : " ";
}

constexpr std::string_view kZshHead = R"(#compdef tarn
# Completion of tarn for zsh; made by "tarn completion zsh".

# The names in the header of the first table among the words typed, a name with a blank left out.
_tarn_fields() {
    local word header name
    for word in $words; do
        [[ $word == *.csv && -r $word ]] || continue
        IFS= read -r header <$word
        for name in ${(s:,:)${${header%$'\r'}//\"/}}; do [[ $name == *[[:space:]]* ]] || print -r -- $name; done
        return
    done
}
_tarn_field() { local -a names=($(_tarn_fields)); compadd -a names; }

_tarn() {
    local -a commands=(
)";

std::string ZshCompletion(const std::vector<CommandDescription>& commands) {
    std::string names;
    std::string cases;
    for (const CommandDescription& command : commands) {
        names += "        '" + command.name + ":" + ZshText(command.help, ":") + "'\n";
        cases += "        " + command.name + ") _arguments";
        int place = 0;
        for (const OptionDescription& option : command.options) {
            if (option.IsPositional()) {
                cases += " \\\n            '" + std::to_string(++place) + ":" + ZshText(option.help, ":[]") + ":" +
                         ZshAction(option) + "'";
            }
            for (const std::string& name : option.names) {
                cases += " \\\n            '" + name + (option.argument.empty() || name.size() == 2 ? "" : "=") + "[" +
                         ZshText(option.help, ":[]") + "]";
                if (!option.argument.empty()) cases += ":" + option.argument + ":" + ZshAction(option);
                cases += "'";
            }
        }
        cases += " ;;\n";
    }
    return std::string(kZshHead) + names +
           "    )\n    if (( CURRENT == 2 )); then _describe command commands; return; fi\n"
           "    local command=$words[2]\n    shift words; (( CURRENT-- ))\n    case $command in\n" +
           cases + "    esac\n}\n_tarn \"$@\"\n";
}

}  // namespace

const std::vector<std::string>& ShellNames() {
    static const std::vector<std::string> names{"bash", "zsh"};
    return names;
}

std::string ShellCompletion(const std::string& shell, const std::vector<CommandDescription>& commands) {
    return shell == "zsh" ? ZshCompletion(commands) : BashCompletion(commands);
}

}  // namespace tarn
