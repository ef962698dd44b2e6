#pragma once

#include <string>
#include <vector>

#include "apps/tarn/Command.h"
#include "host/verify/PublishedCheck.h"

namespace tarn {

/// How a check is shown.
enum class VerifyFormat { kText, kJson, kHtml };

/// What the user typed behind `tarn verify`.
struct VerifyOptions {
    std::vector<std::string> names;  ///< of cases or tests; none: all
    bool functions = false;          ///< the distribution functions in place of the published results
    bool asDefined = false;          ///< in the engine's fixed widths
    bool quiet = false;              ///< only what doesn't agree, and the summary
    std::string packFolder;          ///< another pack than that which tarn is installed with; empty: that one
    VerifyFormat format = VerifyFormat::kText;
};

/// `tarn verify`: runs published results, or points of the distribution functions, with the engine at hand and shows
/// how far its numbers agree. Fails where one doesn't. Throws an `InputError` for a pack that can't be read and a name
/// that is none of its cases.
ExitStatus Verify(const VerifyOptions& options, const WordReader& readWords);

}  // namespace tarn
