#pragma once

#include <optional>
#include <span>

#include "host/beyond/AscendingSample.h"

namespace tarn {

/// The values of a large sample that its quartiles and the interval of its median ask for, by the places where they
/// stand in ascending order: one pass over the values in place of a copy and a sort. Those are the neighbours of both
/// quartiles, and of the median all within `kMiddleSpread` roots of the size.
///
/// Nothing where that can't be had so: of few values, of those whose order follows the steps in which they are looked
/// at, and where one is infinite or no number.
std::optional<AscendingSample> MiddleOf(std::span<const double> values);

/// The same of the differences of two columns of one length.
std::optional<AscendingSample> MiddleOfDifferences(std::span<const double> first, std::span<const double> second);

/// No interval of a median reaches further, whatever level below 1 a double holds.
inline constexpr double kMiddleSpread = 6;

}  // namespace tarn
