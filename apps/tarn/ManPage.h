#pragma once

#include <string>
#include <vector>

#include "apps/tarn/CommandDescription.h"

namespace tarn {

/// The manual page tarn(1) in the language of man(7).
std::string ManPage(const std::vector<CommandDescription>& commands);

}  // namespace tarn
