#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/report/TestPage.h"

namespace tarn {

/// A text in lines of at most `width` characters, each behind `indent` blanks and all but the first behind three more;
/// a word that is longer than a line has one for itself. Ends with a line break.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent);

/// Parts that a comma or the like separates, put into lines such that a part is broken only where it doesn't fit a
/// line.
std::string WrappedParts(const std::vector<std::string>& parts, std::string_view separator, std::size_t width,
                         std::size_t indent);

/// The text with its middle left out, in at most `width` characters of UTF-8.
std::string CutInTheMiddle(const std::string& text, std::size_t width);

/// A table in lines behind `indent` blanks. Details
/// are left out up to 80 characters, and where they don't fit. Where the table is still wider than `width` titles take
/// two lines, then names are cut in the middle and told in full below.
std::string TableText(const PageTable& table, std::size_t width, std::size_t indent);

}  // namespace tarn
