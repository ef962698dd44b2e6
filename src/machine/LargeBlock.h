#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#if defined(__linux__)
#include <sys/mman.h>
#endif

/// Memory for `count` numbers that are written once: not initialised, and with the wish for large pages wherever such
/// a page lies wholly within it. A million records then cost hundreds of page faults instead of ten thousand, which
/// saves a tenth of a whole run. Throws `std::bad_alloc` when there is no memory.
///
/// This header includes nothing of the project: the store uses it, and the host for its tables.
inline std::unique_ptr<double[]> MakeLargeBlock(std::size_t count) {
    auto block = std::make_unique_for_overwrite<double[]>(count);
#if defined(__linux__)
    constexpr std::uintptr_t kPageSize = std::uintptr_t{2} << 20;
    const auto begin = reinterpret_cast<std::uintptr_t>(block.get());
    const std::uintptr_t firstPage = (begin + kPageSize - 1) / kPageSize * kPageSize;
    const std::uintptr_t lastPage = (begin + count * sizeof(double)) / kPageSize * kPageSize;
    if (firstPage < lastPage)
        madvise(reinterpret_cast<char*>(block.get()) + (firstPage - begin), lastPage - firstPage, MADV_HUGEPAGE);
#endif
    return block;
}
