#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

/// Says that memory which is about to be written to may lie in large pages, wherever such a page lies wholly within it,
/// which spares most of the page faults.
inline void WishForLargePages(void* memory, std::size_t bytes) {
#if defined(__linux__)
    constexpr std::uintptr_t kPageSize = std::uintptr_t{2} << 20;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t firstPage = (begin + kPageSize - 1) / kPageSize * kPageSize;
    const std::uintptr_t lastPage = (begin + bytes) / kPageSize * kPageSize;
    if (firstPage < lastPage) {
        madvise(static_cast<char*>(memory) + (firstPage - begin), lastPage - firstPage, MADV_HUGEPAGE);
    }
#else
    static_cast<void>(memory);
    static_cast<void>(bytes);
#endif
}

/// An empty list with room for `count` values in large pages.
template <typename Value>
std::vector<Value> RoomInLargePages(std::size_t count) {
    std::vector<Value> room;
    room.reserve(count);
    WishForLargePages(room.data(), count * sizeof(Value));
    return room;
}

/// Memory for `count` values that are written once: not initialised, in large pages where they can be had. Moved, never
/// copied. The constructor throws `std::bad_alloc` when there is no memory.
template <typename Value>
class LargeArray {
    static_assert(std::is_trivially_copyable_v<Value>);

 public:
    LargeArray() = default;
    explicit LargeArray(std::size_t count) : values_(std::make_unique_for_overwrite<Value[]>(count)), size_(count) {
        WishForLargePages(values_.get(), count * sizeof(Value));
    }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    Value* data() { return values_.get(); }
    const Value* data() const { return values_.get(); }
    Value& operator[](std::size_t i) { return values_[i]; }
    const Value& operator[](std::size_t i) const { return values_[i]; }
    Value* begin() { return data(); }
    Value* end() { return data() + size_; }
    const Value* begin() const { return data(); }
    const Value* end() const { return data() + size_; }

 private:
    std::unique_ptr<Value[]> values_;
    std::size_t size_ = 0;
};
