#pragma once

#include <string>
#include <string_view>

namespace tarn {

/// The texts of a list in one text.
template <typename Texts>
std::string JoinList(const Texts& texts, std::string_view separator = ", ") {
    std::string joined;
    bool isFirst = true;
    for (const std::string_view text : texts) {
        if (!isFirst) joined += separator;
        joined += text;
        isFirst = false;
    }
    return joined;
}

}  // namespace tarn
