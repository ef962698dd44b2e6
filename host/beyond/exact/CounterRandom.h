#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarn {

using PhiloxBlock = std::array<std::uint32_t, 4>;
using PhiloxKey = std::array<std::uint32_t, 2>;

/// The block of random words that belongs to a counter and a key: Philox 4x32 with ten rounds (Salmon, Moraes, Dror and
/// Shaw, 2011, "Parallel random numbers: as easy as 1, 2, 3", Proceedings of SC11, article 16).
inline PhiloxBlock Philox4x32(PhiloxBlock counter, PhiloxKey key) {
    constexpr int kRounds = 10;
    constexpr std::uint64_t kMultipliers[] = {0xD2511F53, 0xCD9E8D57};
    constexpr std::uint32_t kKeySteps[] = {0x9E3779B9, 0xBB67AE85};
    constexpr int kWordBits = 32;
    for (int round = 0; round < kRounds; ++round) {
        const std::uint64_t first = kMultipliers[0] * counter[0];
        const std::uint64_t second = kMultipliers[1] * counter[2];
        counter = {
            static_cast<std::uint32_t>(second >> kWordBits) ^ counter[1] ^ key[0], static_cast<std::uint32_t>(second),
            static_cast<std::uint32_t>(first >> kWordBits) ^ counter[3] ^ key[1], static_cast<std::uint32_t>(first)};
        key[0] += kKeySteps[0];
        key[1] += kKeySteps[1];
    }
    return counter;
}

/// The random numbers of one draw. They depend on the seed and the number of the draw alone, so that draws can be made
/// in any order and by any number of threads. The words are those of the blocks 0, 1, 2, ... of the draw, in order; the
/// counter's low half is the number of the block, its high half that of the draw, and the key is the seed.
class CounterRandom {
 public:
    CounterRandom(std::uint64_t seed, std::uint64_t draw)
        : key_{Low(seed), High(seed)}, drawLow_(Low(draw)), drawHigh_(High(draw)) {}

    std::uint32_t Next() {
        if (used_ == words_.size()) Refill();
        return words_[used_++];
    }

    /// A whole number from 0 to `bound` - 1, each as likely as the others; `bound` is above 0. Words that would favour
    /// some of them are left out (Lemire, 2019, ACM Transactions on Modeling and Computer Simulation 29, 3).
    std::uint32_t Below(std::uint32_t bound) {
        std::uint64_t product = std::uint64_t{Next()} * bound;
        if (Low(product) < bound) {
            const std::uint32_t threshold = (0U - bound) % bound;
            while (Low(product) < threshold) product = std::uint64_t{Next()} * bound;
        }
        return High(product);
    }

 private:
    static constexpr std::size_t kBlocksAtOnce = 4;  // their rounds don't wait for each other

    static std::uint32_t Low(std::uint64_t number) { return static_cast<std::uint32_t>(number); }
    static std::uint32_t High(std::uint64_t number) {
        constexpr int kWordBits = 32;
        return static_cast<std::uint32_t>(number >> kWordBits);
    }

    void Refill() {
        std::size_t word = 0;
        for (std::size_t i = 0; i < kBlocksAtOnce; ++i) {
            const PhiloxBlock block = Philox4x32({Low(block_), High(block_), drawLow_, drawHigh_}, key_);
            for (const std::uint32_t one : block) words_[word++] = one;
            ++block_;
        }
        used_ = 0;
    }

    PhiloxKey key_;
    std::uint32_t drawLow_;
    std::uint32_t drawHigh_;
    std::uint64_t block_ = 0;
    std::array<std::uint32_t, kBlocksAtOnce * std::tuple_size_v<PhiloxBlock>> words_{};
    std::size_t used_ = words_.size();
};

}  // namespace tarn
