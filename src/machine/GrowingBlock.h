#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

/// Numbers side by side in memory that grows behind them, without a copy where the system can do without: what is large
/// is a mapping of its own, whose pages move to another address as they are, and of which only what was written takes
/// memory, with the wish for large pages. New numbers are not initialised. Throws `std::bad_alloc` when there is no
/// memory.
///
/// This header includes nothing of the project and is open to all floors.
class GrowingBlock {
 public:
    GrowingBlock() = default;
    GrowingBlock(GrowingBlock&& other) noexcept
        : values_(std::exchange(other.values_, nullptr)),
          bytes_(std::exchange(other.bytes_, 0)),
          copied_(std::exchange(other.copied_, 0)) {}
    GrowingBlock& operator=(GrowingBlock&& other) noexcept {
        std::swap(values_, other.values_);
        std::swap(bytes_, other.bytes_);
        std::swap(copied_, other.copied_);
        return *this;
    }
    ~GrowingBlock() { Release(); }

    double* Values() { return values_; }
    const double* Values() const { return values_; }
    std::size_t Capacity() const { return bytes_ / sizeof(double); }
    /// Whether numbers from that one on are 0 until they are written to, which takes no memory.
    bool IsZeroFrom(std::size_t first) const { return IsMapped(bytes_) && first * sizeof(double) >= copied_; }

    /// Makes room for `count` numbers. Those that are there stay; their address may change.
    void Reserve(std::size_t count) {
        if (count > Capacity()) Resize(BytesOf(count));
    }
    /// The same with room for more to come, so that growing by and by doesn't move them each time.
    void Grow(std::size_t count) {
        if (count > Capacity()) Resize(BytesOf(std::max(count, 2 * Capacity())));
    }
    /// Gives back what is behind the first `count` numbers.
    void Trim(std::size_t count) {
        if (count < Capacity()) Resize(BytesOf(count));
    }

 private:
    static constexpr std::size_t kPage = 4096;
    /// From here on, the size of a large page, a block is a mapping of its own. Below it there may be a hundred
    /// thousand blocks, which is more than a process may have mappings.
    static constexpr std::size_t kMappedFrom = std::size_t{2} << 20;

    static std::size_t BytesOf(std::size_t count) {
        if (count > PTRDIFF_MAX / sizeof(double)) throw std::bad_alloc();
        const std::size_t bytes = count * sizeof(double);
        return IsMapped(bytes) ? (bytes + kPage - 1) / kPage * kPage : bytes;
    }

#if defined(__linux__)
    static bool IsMapped(std::size_t bytes) {
        return bytes >= kMappedFrom;
    }

    void Resize(std::size_t bytes) {
        if (bytes == 0) return Release();
        if (!IsMapped(bytes_) && !IsMapped(bytes)) return ResizeInHeap(bytes);
        if (IsMapped(bytes_) != IsMapped(bytes)) return MoveTo(bytes);
        // Memory is there when it is written to: what is reserved for numbers to come must not count as taken.
        Take(mremap(values_, bytes_, bytes, MREMAP_MAYMOVE), bytes);
    }

    /// Between the heap and a mapping of its own.
    void MoveTo(std::size_t bytes) {
        GrowingBlock other;
        if (IsMapped(bytes)) {
            other.Take(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0),
                       bytes);
        } else {
            other.ResizeInHeap(bytes);
        }
        if (values_ != nullptr) {
            other.copied_ = std::min(bytes, bytes_);
            std::memcpy(other.values_, values_, other.copied_);
        }
        *this = std::move(other);
    }

    void Take(void* mapping, std::size_t bytes) {
        if (mapping == MAP_FAILED) throw std::bad_alloc();
        values_ = static_cast<double*>(mapping);
        bytes_ = bytes;
        // For the whole of it: a mapping of which a part is treated differently can't be moved as one.
        madvise(mapping, bytes, MADV_HUGEPAGE);
    }

    void Release() {
        if (IsMapped(bytes_)) {
            munmap(values_, bytes_);
        } else {
            std::free(values_);
        }
        values_ = nullptr;
        bytes_ = 0;
    }
#else
    static bool IsMapped(std::size_t) {
        return false;
    }

    void Resize(std::size_t bytes) {
        if (bytes == 0) return Release();
        ResizeInHeap(bytes);
    }

    void Release() {
        std::free(values_);
        values_ = nullptr;
        bytes_ = 0;
    }
#endif

    void ResizeInHeap(std::size_t bytes) {
        void* const values = std::realloc(values_, bytes);
        if (values == nullptr) throw std::bad_alloc();
        values_ = static_cast<double*>(values);
        bytes_ = bytes;
    }

    double* values_ = nullptr;
    std::size_t bytes_ = 0;
    std::size_t copied_ = 0;  // bytes at the front of a mapping that came from the heap, written to or not
};
