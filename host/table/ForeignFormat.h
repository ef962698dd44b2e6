#pragma once

#include <string>
#include <string_view>

namespace tarn {

/// Refuses what is handed in for a table of text and is something else, told by its first bytes: throws an `InputError`
/// that says what it is and what to do. Looks at the first 512 bytes at most.
void RefuseForeignFormat(const std::string& name, std::string_view firstBytes);

}  // namespace tarn
