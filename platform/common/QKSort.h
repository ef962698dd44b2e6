#pragma once

#include <cstddef>
#include <cstdint>

namespace QKSort {

/// Sorts the keys in ascending order, in place, by the fastest way that the processor has. Safe on several threads at
/// once. Throws `std::bad_alloc` where memory for the work is lacking.
void SortKeys(std::uint64_t* keys, std::size_t count);

}  // namespace QKSort
