#pragma once

#include <cstddef>
#include <cstdint>

/// The ways of sorting keys that `QKSort::SortKeys` chooses from.
namespace KeySorts {

/// Whether the vector sort is built in and the processor has what makes it fast.
bool HasVectorSort();
/// The vectorised quicksort of Highway (Wassenberg, Blacher, Giesen and Sanders, 2022, Software: Practice and
/// Experience 52, 2684-2705). Of its sorts the one of unsigned whole numbers alone is used: in the releases before
/// 1.0.5 the one of doubles is wrong where an infinity is among them. Only where `HasVectorSort`.
void VectorSort(std::uint64_t* keys, std::size_t count);
/// Least significant digit first, for any processor. A digit that is the same in all keys is passed over.
void RadixSort(std::uint64_t* keys, std::size_t count);

}  // namespace KeySorts
