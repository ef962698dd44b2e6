#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/ByteSource.h"

namespace tarn {

/// The filter for a table whose cells stand apart by any number of blanks or tabs: one tab stands there afterwards,
/// and none at the ends of a line. Within double quotes everything stays.
std::unique_ptr<ByteFilter> TabsForBlanks();

/// The same of a text in memory.
std::string WithTabsForBlanks(std::string_view text);

}  // namespace tarn
