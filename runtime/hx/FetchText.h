#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/hx/HXStatus.h"

/// Fetches a text from the host by the rule that stands at `HXHost`: `ask(buffer, size, needed)` is called for the size
/// and then for the text. No value if a call fails.
template <typename Ask>
std::optional<std::string> FetchText(Ask ask) {
    std::size_t needed = 0;
    const unsigned sized = ask(nullptr, 0, &needed);
    if (sized != HX_BUFFER_TOO_SMALL || needed == 0) return std::nullopt;
    std::string text(needed, '\0');
    if (ask(text.data(), text.size(), &needed) != HX_OK || needed == 0 || needed > text.size()) return std::nullopt;
    text.resize(needed - 1);
    return text;
}
