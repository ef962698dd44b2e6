#pragma once

namespace tarn {

/// The first byte that is a NUL or not part of a character in UTF-8 (shortest form, no surrogates, up to U+10FFFF);
/// `last` if there is none.
const char* FindInvalidUtf8(const char* first, const char* last);

}  // namespace tarn
