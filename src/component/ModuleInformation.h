#pragma once

#include <string>

#include "platform/hx/HXHost.h"

/// The text that tells a host what the library is. Empty without a usable host.
std::string MakeModuleInformation(HXHost* host);
