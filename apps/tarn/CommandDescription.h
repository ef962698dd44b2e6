#pragma once

#include <string>
#include <vector>

namespace tarn {

/// An option or argument of a command as a user meets it.
struct OptionDescription {
    std::vector<std::string> names;    ///< "--format"; none for an argument that stands by its place
    std::string argument;              ///< "FILE", "FIELD,..", "text|json|csv|xml"; "" for a flag
    std::string help;                  ///< one line, without a full stop
    std::vector<std::string> choices;  ///< what it can be, where that is known

    bool IsPositional() const { return names.empty(); }
    bool IsList() const { return argument.ends_with(",.."); }
    bool TakesFile() const {
        return argument == "FILE" || argument == "DATA" || argument == "RESULT" || argument == "STUDY";
    }
    bool TakesField() const { return argument.starts_with("FIELD"); }
};

struct CommandDescription {
    std::string name;
    std::string help;  ///< one line, without a full stop
    std::vector<OptionDescription> options;
};

}  // namespace tarn
