#pragma once

#include <optional>
#include <string_view>

#include "host/table/TableShape.h"

namespace tarn {

/// Reads a text without outer blanks that is, as a whole, a number of that style. A mark of thousands has to stand
/// between groups of three digits, all of them or none.
std::optional<double> ParseNumber(std::string_view text, const NumberStyle& style);

/// The sign of a currency that an amount of money begins with, behind its own sign, or ends with; empty for none. It
/// lives as long as the program.
std::string_view CurrencySignOf(std::string_view text);

/// The mark of thousands at the front of `text` and how many bytes it has, 0 for none. An apostrophe may be curled, and
/// a blank one at which no line breaks.
struct ThousandsMark {
    char mark = '\0';
    std::size_t size = 0;
};
ThousandsMark ThousandsMarkOf(std::string_view text);

}  // namespace tarn
