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
    std::string planPath;
    std::string outPath;  ///< empty: standard output
    bool quiet = false;
    std::optional<std::string> weightField;
    std::optional<std::string> caseIdField;
    std::vector<std::string> nominal;
    std::vector<std::string> ordinal;
    std::vector<std::string> continuous;
};

/// `tarn run --plan`: hands the plan and the table straight to the engine's factory, as a program would that links
/// the library, and stores the document. Throws an `InputError` for an input that can't be read.
ExitStatus RunPlan(const RunOptions& options);

}  // namespace tarn
