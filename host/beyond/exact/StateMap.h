#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace tarn {

__extension__ using WideKey = unsigned __int128;

/// Whole numbers below 2^`width` side by side in one key.
template <typename Key>
struct LanePacking {
    std::size_t lanes = 0;
    int width = 0;

    static bool Fits(std::size_t lanes, int width) {
        constexpr std::size_t kBits = 8 * sizeof(Key);
        constexpr int kBitsOfLane = 62;  // of what is packed and unpacked, with room for sums
        return width <= kBitsOfLane && lanes * static_cast<std::size_t>(width) <= kBits;
    }

    Key Pack(const std::uint64_t* values) const {
        Key key = 0;
        for (std::size_t i = lanes; i-- > 0;) key = (key << width) | values[i];
        return key;
    }
    void Unpack(Key key, std::uint64_t* values) const {
        const std::uint64_t mask = (std::uint64_t{1} << width) - 1;
        for (std::size_t i = 0; i < lanes; ++i) {
            values[i] = static_cast<std::uint64_t>(key) & mask;
            key >>= width;
        }
    }
};

/// The probabilities of the states that a growing sample can be in. What is added for a key that is there already adds
/// up. The order in which states are visited depends on what was added and in which order, on nothing else.
template <typename Key>
class StateMap {
 public:
    /// False where there is no room for another state.
    bool Add(Key key, double probability) {
        if (probability <= 0) return true;  // too small for a double; a place without probability is a free one
        if (2 * (count_ + 1) > slots_.size() && !Grow()) return false;
        Slot& slot = slots_[PlaceOf(key)];
        if (slot.probability <= 0) {
            slot.key = key;
            ++count_;
        }
        slot.probability += probability;
        return true;
    }

    /// Takes all states out, keeps the memory.
    void Clear() {
        for (Slot& slot : slots_) slot.probability = 0;
        count_ = 0;
    }

    std::size_t Count() const { return count_; }

    /// Calls `visit` with each key and its probability until it returns false; false then.
    template <typename Visit>
    bool ForEach(Visit visit) const {
        for (const Slot& slot : slots_) {
            if (slot.probability > 0 && !visit(slot.key, slot.probability)) return false;
        }
        return true;
    }

 private:
    struct Slot {
        Key key = 0;
        double probability = 0;
    };
    static constexpr std::size_t kMostBytes = std::size_t{1} << 27;
    static constexpr std::size_t kFirstSlots = 256;

    /// Where the key stands, or the free place for it.
    std::size_t PlaceOf(Key key) const {
        constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15;  // 2^64 over the golden ratio
        constexpr int kHalf = 32;
        auto bits = static_cast<std::uint64_t>(key);
        if constexpr (sizeof(Key) > sizeof(std::uint64_t)) {
            constexpr int kWordBits = 64;
            bits ^= static_cast<std::uint64_t>(key >> kWordBits) * kMultiplier;
        }
        bits = (bits ^ (bits >> kHalf)) * kMultiplier;
        const std::size_t mask = slots_.size() - 1;
        std::size_t place = static_cast<std::size_t>(bits >> kHalf) & mask;
        while (slots_[place].probability > 0 && slots_[place].key != key) place = (place + 1) & mask;
        return place;
    }

    bool Grow() {
        const std::size_t size = slots_.empty() ? kFirstSlots : 2 * slots_.size();
        if (size * sizeof(Slot) > kMostBytes) return false;
        const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(size));
        for (const Slot& slot : old) {
            if (slot.probability > 0) slots_[PlaceOf(slot.key)] = slot;
        }
        return true;
    }

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

}  // namespace tarn
