#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarn {

/// How the command ends.
enum class ExitStatus { kDone = 0, kRunFailed = 1, kWrongUsage = 2 };

/// What the user typed behind `tarn run`.
struct RunOptions {
    std::string dataPath;
    std::string fieldsPath;  ///< empty: every column is inferred
    std::string planPath;    ///< either this or the next one
    std::string settingsPath;
    std::string outPath;  ///< empty: standard output
    bool quiet = false;
    std::optional<std::string> weightField;
    std::optional<std::string> caseIdField;
    std::vector<std::string> nominal;
    std::vector<std::string> ordinal;
    std::vector<std::string> continuous;
};

/// `tarn run`: runs a plan or a request on a table and stores the document. Throws an `InputError` for an input that
/// can't be read.
ExitStatus Run(const RunOptions& options);

}  // namespace tarn
