#pragma once

#include <string_view>

namespace tarn {

/// The first byte that is a NUL or not part of a character in UTF-8 (shortest form, no surrogates, up to U+10FFFF);
/// `last` if there is none.
const char* FindInvalidUtf8(const char* first, const char* last);

/// Whether all of a text is UTF-8 without a NUL.
bool IsUtf8(std::string_view text);

}  // namespace tarn
