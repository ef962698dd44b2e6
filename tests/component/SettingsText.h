#pragma once

#include <string>

#include "platform/common/QKSettings.h"

namespace component_test {

/// The settings document of a tree of settings, as a host would write it.
std::string SettingsText(const QKSettings& settings);

}  // namespace component_test
