#pragma once

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>

namespace tarn {

/// The shortest text that reads back as the same number.
inline std::string ExactText(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// A number as a pocket calculator shows it, in ten digits.
inline std::string CalculatorText(double number) {
    if (std::isnan(number)) return "undefined";
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", number + 0.0);  // no -0
    return text;
}

}  // namespace tarn
