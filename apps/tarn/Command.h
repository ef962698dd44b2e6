#pragma once

#include <string>

#include "apps/tarn/RunOutcome.h"

namespace tarn {

/// How the command ends.
enum class ExitStatus { kDone = 0, kRunFailed = 1, kWrongUsage = 2 };

/// Where a command's results go.
struct OutputOptions {
    std::string outPath;  ///< empty: no file
    bool quiet = false;   ///< neither a progress bar nor a table
};

/// Writes a document to the file, or to standard output without one. Throws an `InputError` if it can't be written.
void StoreDocument(const std::string& document, const std::string& outPath);

/// Tells the remarks of a run on standard error, and how the command ends.
ExitStatus TellRemarks(const RunOutcome& outcome);

}  // namespace tarn
