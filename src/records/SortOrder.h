#pragma once

#include <vector>

namespace QKTarn {

/// The positions 0 .. n-1 in the ascending order of their values. Equal values keep their order; a missing value has
/// the place of its number, a NaN an end.
std::vector<int> AscendingOrder(const std::vector<double>& values);

}  // namespace QKTarn
