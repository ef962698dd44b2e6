#pragma once

#include <string>
#include <vector>

#include "host/Json.h"
#include "host/table/Table.h"

namespace tarn {

// A study: what was typed behind `tarn analyze`, in its own words, and what the table was. docs/command-line.md lists
// the keys.

inline constexpr const char* kStudyFormat = "tarn-study-1";

/// An option as it stands in a study: one value, a list, or true.
struct StudyOption {
    std::string name;  ///< without hyphens
    Json value;
};

struct Study {
    std::string dataPath;
    std::string formula;               ///< "" for none
    std::vector<StudyOption> options;  ///< in the order in which they were typed
    Json data;                         ///< what the table was; null before it is known
};

/// The text of a study with the table that it was made on.
std::string StudyText(const Study& study, const Table& table);

/// Reads one. Throws an `InputError` for a file that is none.
Study ReadStudy(const std::string& path);

/// In what a table differs from that of a study, as sentences: records, fields, their types, levels and categories.
std::vector<std::string> DifferencesFrom(const Json& data, const Table& table);

}  // namespace tarn
