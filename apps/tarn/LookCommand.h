#pragma once

#include <string>

#include "apps/tarn/Command.h"
#include "apps/tarn/TableOptions.h"

namespace tarn {

/// What the user typed behind `tarn look`.
struct LookOptions {
    TableOptions table;
    bool asJson = false;  ///< a descriptor for `--fields` in place of a text
    /// What was typed of how the table is read, as a user would type it again.
    std::string readingOptions;
};

/// `tarn look`: what a table holds and how it was read, and what can be typed next. Throws an `InputError` for a table
/// that can't be read.
ExitStatus Look(const LookOptions& options);

}  // namespace tarn
