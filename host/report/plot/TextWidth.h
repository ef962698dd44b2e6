#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarn {

/// How wide a text is in a sans font of a size, in the unit of the size. No font is asked: of each character the wider
/// of two common fonts counts, and of a script without a table the width of most of its letters, so that what fits here
/// fits wherever the picture is seen.
double TextWidth(std::string_view text, double fontSize);

/// The text, cut in the middle where it is wider: "hours of…treatment". Never within a character.
std::string FittedText(std::string_view text, double width, double fontSize);

/// Names that stand in one list, each cut where it is wider. Where two of them would look alike, what all have in
/// common at their ends gives way, and what tells them apart stays: "…number 17…".
std::vector<std::string> FittedNames(const std::vector<std::string>& names, double width, double fontSize);

}  // namespace tarn
