#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/tarn/Presentation.h"
#include "host/analysis/Analysis.h"

namespace tarn {

/// How the command ends.
enum class ExitStatus { kDone = 0, kRunFailed = 1, kWrongUsage = 2, kIsAnother = 3 };

/// What is said of a run that was cancelled, as of any that failed.
inline constexpr const char* kCancelledRun = "the run failed with code 1: the run was cancelled";

/// Where a command's results go.
struct OutputOptions {
    std::string outPath;                 ///< for the result document; empty: no file
    std::string reportPath;              ///< for the page of the result; empty: no file
    std::string plotPath;                ///< for the plot of its one test; empty: no file
    std::string plotFolder;              ///< for the plots of all tests; empty: none
    bool quiet = false;                  ///< neither a progress bar nor a table
    bool explain = false;                ///< whether each test says how its numbers came about
    bool details = false;                ///< whether a text has all that there is of each test
    std::optional<ReportFormat> format;  ///< of what goes to standard output; each command has its own otherwise
};

/// Throws an `InputError` for a format that a terminal can't show, before anything is worked out.
void CheckOutput(const OutputOptions& output);

/// Writes a text to standard output. Throws an `InputError` if it can't be written.
void PrintResult(const std::string& text);

/// Says on standard error, in one line, what went wrong; returns `status`.
ExitStatus TellMistake(const std::string& mistake, ExitStatus status);

/// Says on standard error, a line each, what a reader of the results should know of the data.
void TellNotes(const std::vector<std::string>& notes);

/// Shows the remarks of a run on standard error; returns how the command ends.
ExitStatus TellRemarks(const AnalysisOutcome& outcome);

}  // namespace tarn
