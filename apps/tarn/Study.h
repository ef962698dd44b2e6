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
    std::string command = "analyze";   ///< behind which it was typed
    Json result;                       ///< where it was read from a result, all of that; else null
};

/// The text of a study with the table that it was made on.
std::string StudyText(const Study& study, const Table& table);

/// The same in a line that can be typed: "tarn analyze DATA.csv 'score ~ arm' --exact".
std::string WordsOf(const Study& study);

/// The same as the request of a record: what was typed behind the table.
Json RequestOf(const Study& study);

/// Reads one, or that of the record of a result in JSON, of a whole analysis or in parts. Throws an `InputError` for a
/// file that is none of them, and for a result that `tarn analyze` didn't make.
Study ReadStudy(const std::string& path);

/// In what a table differs from that of a study, as sentences: records, fields, their types, levels and categories.
std::vector<std::string> DifferencesFrom(const Json& data, const Table& table);

}  // namespace tarn
