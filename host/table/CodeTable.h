#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

/// A number that differs wherever two values do, with few exceptions.
inline std::uint64_t CodeHash(std::uint64_t bits) {
    bits = (bits ^ bits >> 32) * 0x9e3779b97f4a7c15;
    return bits ^ bits >> 32;
}
inline std::uint64_t CodeHash(double value) {
    return CodeHash(std::bit_cast<std::uint64_t>(value + 0.0));  // adding 0 makes -0 the 0 that it equals
}
inline std::uint64_t CodeHash(std::string_view text) {
    const auto load = [](const char* from, auto bytes) -> std::uint64_t {
        std::memcpy(&bytes, from, sizeof bytes);
        return bytes;
    };
    const char* const first = text.data();
    const std::size_t size = text.size();
    std::uint64_t hash = size;
    // Whole words, and the last one over again as far as it laps over.
    if (size >= 8) {
        for (std::size_t at = 0; at + 8 < size; at += 8) hash = CodeHash(hash ^ load(first + at, std::uint64_t{}));
        return CodeHash(hash ^ load(first + size - 8, std::uint64_t{}));
    }
    if (size >= 4) {
        return CodeHash(hash ^ (load(first, std::uint32_t{}) << 32 | load(first + size - 4, std::uint32_t{})) << 3);
    }
    for (const char c : text) hash = hash << 8 | static_cast<unsigned char>(c);
    return CodeHash(hash);
}

inline bool AreSame(double a, double b) {
    return a == b;
}
/// A call of the library's costs more than the comparison of texts as short as categories are.
inline bool AreSame(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    std::size_t at = 0;
    for (; at + 8 <= a.size(); at += 8) {
        std::uint64_t ofA = 0;
        std::uint64_t ofB = 0;
        std::memcpy(&ofA, a.data() + at, sizeof ofA);
        std::memcpy(&ofB, b.data() + at, sizeof ofB);
        if (ofA != ofB) return false;
    }
    for (; at < a.size(); ++at) {
        if (a[at] != b[at]) return false;
    }
    return true;
}

/// Numbers the different values of a column by their first occurrence, from 0. -0.0 and 0.0 are one number.
///
/// `View` is what a value is looked up by; only a new value is stored, as a `Value`.
template <typename Value, typename View>
class CodeTable {
 public:
    int CodeOf(View value) {
        if (places_.empty()) places_.resize(kFirstSize, kFree);
        const std::uint64_t hash = CodeHash(value);
        const auto mark = static_cast<std::uint32_t>(hash >> 32);
        for (std::size_t place = hash & Mask();; place = (place + 1) & Mask()) {
            const Place& at = places_[place];
            if (at.code == kFree.code) return Add(place, value, mark);
            if (at.mark == mark && AreSame(values_[static_cast<std::size_t>(at.code)], value)) return at.code;
        }
    }

    /// The values by their codes.
    const std::vector<Value>& Values() const { return values_; }

    /// Forgets all values.
    void Clear() {
        if (values_.empty()) return;
        values_.clear();
        places_.assign(kFirstSize, kFree);
    }

 private:
    struct Place {
        std::int32_t code;
        std::uint32_t mark;  // a part of the hash that the place doesn't show
    };
    static constexpr Place kFree = {-1, 0};
    static constexpr std::size_t kFirstSize = 32;

    std::size_t Mask() const { return places_.size() - 1; }

    int Add(std::size_t place, View value, std::uint32_t mark) {
        const auto code = static_cast<std::int32_t>(values_.size());
        values_.emplace_back(value);
        places_[place] = {code, mark};
        if (2 * values_.size() > places_.size()) Grow();
        return code;
    }

    void Grow() {
        places_.assign(2 * places_.size(), kFree);
        for (std::size_t code = 0; code < values_.size(); ++code) {
            const std::uint64_t hash = CodeHash(View(values_[code]));
            std::size_t place = hash & Mask();
            while (places_[place].code != kFree.code) place = (place + 1) & Mask();
            places_[place] = {static_cast<std::int32_t>(code), static_cast<std::uint32_t>(hash >> 32)};
        }
    }

    std::vector<Value> values_;
    std::vector<Place> places_;  // a power of two, at most half of them taken
};

using NumberCodes = CodeTable<double, double>;
using TextCodes = CodeTable<std::string, std::string_view>;
/// Of texts that stay where they are.
using TextViewCodes = CodeTable<std::string_view, std::string_view>;

}  // namespace tarn
