#pragma once

#include <string>

#include "apps/tarn/Command.h"

namespace tarn {

/// `tarn explain`: what a status code means, or what a test asks, assumes, when it is chosen, which significance
/// decides, and who made it. Throws an `InputError` for what is neither.
ExitStatus ExplainTopic(const std::string& topic);

}  // namespace tarn
