#pragma once

#include <cstdint>
#include <span>

#include "machine/LargeArray.h"
#include "machine/WorkShare.h"

namespace QKTarn {

/// A column in ascending order.
struct SortedColumn {
    LargeArray<std::uint32_t> order;  ///< the positions 0 .. n-1 of the values in ascending order
    LargeArray<double> values;        ///< the values in that order
};

/// Sorts a column of less than 2^32 values. Equal values keep their order; a missing value has the place of its
/// number, a NaN an end. The result is the same for any number of threads, and of no use once the work was stopped.
/// Throws `std::bad_alloc`.
SortedColumn SortColumn(std::span<const double> column, const WorkShare& share);

}  // namespace QKTarn
