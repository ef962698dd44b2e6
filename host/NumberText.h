#pragma once

#include <charconv>
#include <string>

namespace tarn {

/// The shortest text that reads back as the same number.
inline std::string ExactText(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

}  // namespace tarn
