#pragma once

#include <cstdint>

namespace tarn {

// The Arrow C data interface and its stream, laid out as Arrow fixes them for all programs
// (https://arrow.apache.org/docs/format/CDataInterface.html, CStreamInterface.html). The layouts are fixed for good, so
// that data passes between libraries that know nothing of one another. Whoever fills a structure sets `release`, and
// whoever takes it calls that once; a null `release` marks one that is used up.

inline constexpr std::int64_t kArrowDictionaryOrdered = 1;  ///< a flag of a schema

struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    std::int64_t flags;
    std::int64_t n_children;
    ArrowSchema** children;
    ArrowSchema* dictionary;
    void (*release)(ArrowSchema*);
    void* private_data;
};

struct ArrowArray {
    std::int64_t length;
    std::int64_t null_count;  ///< -1 where it was never counted
    std::int64_t offset;
    std::int64_t n_buffers;
    std::int64_t n_children;
    const void** buffers;
    ArrowArray** children;
    ArrowArray* dictionary;
    void (*release)(ArrowArray*);
    void* private_data;
};

/// The functions return 0 or an error number. A stream ends with an array that is used up.
struct ArrowArrayStream {
    int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
    int (*get_next)(ArrowArrayStream*, ArrowArray*);
    const char* (*get_last_error)(ArrowArrayStream*);
    void (*release)(ArrowArrayStream*);
    void* private_data;
};

/// Owns one of the structures.
template <typename Structure>
class ArrowOwner {
 public:
    ArrowOwner() = default;
    /// Takes over what `other` holds, which is used up then.
    explicit ArrowOwner(Structure& other) : held_(other) { other.release = nullptr; }
    ArrowOwner(const ArrowOwner&) = delete;
    ArrowOwner& operator=(const ArrowOwner&) = delete;
    ~ArrowOwner() { Release(); }

    Structure* operator->() { return &held_; }
    const Structure* operator->() const { return &held_; }
    Structure& operator*() { return held_; }
    const Structure& operator*() const { return held_; }
    bool IsUsedUp() const { return held_.release == nullptr; }

    /// The place for a new one; what was held is released.
    Structure* Fill() {
        Release();
        return &held_;
    }
    /// Gives up what a producer left that failed: it is not ours to release.
    void Forget() { held_ = Structure{}; }

 private:
    void Release() {
        if (held_.release != nullptr) held_.release(&held_);
        held_ = Structure{};
    }

    Structure held_{};
};

}  // namespace tarn
