#pragma once

#include <vector>

namespace tarn {

/// Puts the values of a large sample that its quartiles and the interval of its median ask for where they stand in
/// ascending order, and leaves other values at all other places: a few passes in place of a sort. Those are the
/// neighbours of both quartiles, and of the median all within `kMiddleSpread` roots of the size.
///
/// False where that can't be had so, and the values are as they were: of few values, and of those whose order follows
/// the steps in which they are looked at.
bool PutMiddleInPlace(std::vector<double>& values);

/// No interval of a median reaches further, whatever level below 1 a double holds.
inline constexpr double kMiddleSpread = 6;

}  // namespace tarn
