#pragma once

#include <optional>
#include <string>

#include "apps/tarn/Command.h"
#include "apps/tarn/Study.h"
#include "apps/tarn/TableOptions.h"

namespace tarn {

/// What the user typed behind `tarn run`.
struct RunOptions {
    TableOptions table;
    OutputOptions output;
    std::string planPath;  ///< either this or the next one
    std::string settingsPath;
    std::optional<std::string> caseIdField;
    bool extended = false;  ///< extended arithmetic, whatever the plan or the request says
    bool brief = false;     ///< statistics alone, whatever the plan or the request says
    bool strict = false;    ///< what the engine would pass over is a mistake, and nothing is run
    Study study;            ///< what was typed
};

/// `tarn run`: runs a plan or a request on a table and stores the document. Throws an `InputError` for an input that
/// can't be read.
ExitStatus Run(const RunOptions& options);

}  // namespace tarn
