#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "python/src/ArrowInterface.h"
#include "python/src/ColumnFormat.h"

namespace tarn {

// The values of an array, by their place in its buffers. All borrow the array, and believe what it says: whether that
// may be believed was checked before (ArrowCheck.h).

/// The value at a place of a buffer, which may stand anywhere in memory.
template <typename Value>
Value ValueAt(const void* buffer, std::int64_t at) {
    constexpr auto kSize = static_cast<std::int64_t>(sizeof(Value));
    Value value;
    std::memcpy(&value, static_cast<const char*>(buffer) + at * kSize, sizeof value);
    return value;
}

/// Tells which values are there.
class Presence {
 public:
    explicit Presence(const ArrowArray& array)
        : bits_(array.null_count == 0 || array.n_buffers == 0 ? nullptr
                                                              : static_cast<const std::uint8_t*>(array.buffers[0])) {}
    bool operator()(std::int64_t at) const { return bits_ == nullptr || (bits_[at / 8] >> (at % 8) & 1) != 0; }

 private:
    const std::uint8_t* bits_;  // null where all are there
};

/// The doubles of an array of them from that place on, where all are there, finite, and stand where a double may; null
/// otherwise.
const double* FiniteDoubles(const ArrowArray& array, std::int64_t first, std::int64_t count);

template <typename Number>
class PlainNumbers {
 public:
    explicit PlainNumbers(const ArrowArray& array) : values_(array.buffers[1]) {}
    double operator()(std::int64_t at) const { return static_cast<double>(ValueAt<Number>(values_, at)); }

 private:
    const void* values_;
};

class BitNumbers {
 public:
    explicit BitNumbers(const ArrowArray& array) : bits_(static_cast<const std::uint8_t*>(array.buffers[1])) {}
    double operator()(std::int64_t at) const { return bits_[at / 8] >> (at % 8) & 1; }

 private:
    const std::uint8_t* bits_;
};

/// Numbers of 16 bits (IEEE 754 binary16).
class HalfNumbers {
 public:
    explicit HalfNumbers(const ArrowArray& array) : values_(array.buffers[1]) {}
    double operator()(std::int64_t at) const;

 private:
    const void* values_;
};

/// Whole numbers with a point at a fixed place, rounded once, to the nearest number.
class DecimalNumbers {
 public:
    DecimalNumbers(const ArrowArray& array, const ColumnFormat& format)
        : bytes_(static_cast<const std::uint8_t*>(array.buffers[1])),
          width_(format.decimalWidth),
          scale_(format.scale) {}
    double operator()(std::int64_t at) const;

 private:
    const std::uint8_t* bytes_;
    int width_;
    int scale_;
};

template <typename Offset>
class OffsetTexts {
 public:
    explicit OffsetTexts(const ArrowArray& array)
        : offsets_(array.buffers[1]), bytes_(static_cast<const char*>(array.buffers[2])) {}
    std::string_view operator()(std::int64_t at) const {
        const auto begin = ValueAt<Offset>(offsets_, at);
        const auto size = static_cast<std::size_t>(ValueAt<Offset>(offsets_, at + 1) - begin);
        return size == 0 ? std::string_view() : std::string_view(bytes_ + begin, size);
    }

 private:
    const void* offsets_;
    const char* bytes_;
};

/// How the interface says where a text is that is too long to stand in the view itself.
struct TextView {
    static constexpr std::int32_t kLongestWithin = 12;

    std::int32_t size;
    std::int32_t beginning;  ///< its first bytes
    std::int32_t buffer;     ///< in which it is, of those with texts
    std::int32_t begin;      ///< its place in it
};

/// Texts of which the short ones stand in the views themselves.
class ViewTexts {
 public:
    static constexpr int kFirstBuffer = 2;  ///< of those with texts

    explicit ViewTexts(const ArrowArray& array)
        : views_(static_cast<const char*>(array.buffers[1])), buffers_(array.buffers + kFirstBuffer) {}
    std::string_view operator()(std::int64_t at) const;

 private:
    const char* views_;
    const void** buffers_;
};

/// Calls `take` with the numbers of an array, which has rows, as a function of their place. False for one of no
/// numbers.
template <typename Take>
bool WithNumbers(const ColumnFormat& format, const ArrowArray& array, Take take) {
    switch (format.layout) {
        case ValueLayout::kBit:
            return take(BitNumbers(array)), true;
        case ValueLayout::kInt8:
            return take(PlainNumbers<std::int8_t>(array)), true;
        case ValueLayout::kUInt8:
            return take(PlainNumbers<std::uint8_t>(array)), true;
        case ValueLayout::kInt16:
            return take(PlainNumbers<std::int16_t>(array)), true;
        case ValueLayout::kUInt16:
            return take(PlainNumbers<std::uint16_t>(array)), true;
        case ValueLayout::kInt32:
            return take(PlainNumbers<std::int32_t>(array)), true;
        case ValueLayout::kUInt32:
            return take(PlainNumbers<std::uint32_t>(array)), true;
        case ValueLayout::kInt64:
            return take(PlainNumbers<std::int64_t>(array)), true;
        case ValueLayout::kUInt64:
            return take(PlainNumbers<std::uint64_t>(array)), true;
        case ValueLayout::kHalf:
            return take(HalfNumbers(array)), true;
        case ValueLayout::kFloat:
            return take(PlainNumbers<float>(array)), true;
        case ValueLayout::kDouble:
            return take(PlainNumbers<double>(array)), true;
        case ValueLayout::kDecimal:
            return take(DecimalNumbers(array, format)), true;
        default:
            return false;
    }
}

/// The same for texts.
template <typename Take>
bool WithTexts(const ColumnFormat& format, const ArrowArray& array, Take take) {
    switch (format.layout) {
        case ValueLayout::kText:
            return take(OffsetTexts<std::int32_t>(array)), true;
        case ValueLayout::kLargeText:
            return take(OffsetTexts<std::int64_t>(array)), true;
        case ValueLayout::kTextView:
            return take(ViewTexts(array)), true;
        default:
            return false;
    }
}

}  // namespace tarn
