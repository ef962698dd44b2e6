#pragma once

#include <limits>
#include <string>
#include <string_view>

#include "host/report/ResultDocument.h"

namespace tarn {

/// A number of a document: its text, so that no digit is lost, and its value, for all that calculates or draws. A test
/// that has none of the kind has "", whose value is no number.
struct Number {
    std::string text;
    double value = std::numeric_limits<double>::quiet_NaN();

    Number() = default;
    Number(std::string digits) : text(std::move(digits)) { ReadValue(); }  // NOLINT: stands for its text
    Number(const char* digits) : text(digits) { ReadValue(); }             // NOLINT: stands for its text

    operator const std::string&() const { return text; }  // NOLINT: stands for its text
    operator std::string_view() const { return text; }    // NOLINT: stands for its text
    bool empty() const { return text.empty(); }

    friend bool operator==(const Number& one, const Number& other) { return one.text == other.text; }
    friend bool operator==(const Number& number, const char* digits) { return number.text == digits; }
    friend bool operator==(const Number& number, const std::string& digits) { return number.text == digits; }

 private:
    void ReadValue() {
        if (!ReadNumber(text, value)) value = std::numeric_limits<double>::quiet_NaN();
    }
};

}  // namespace tarn
