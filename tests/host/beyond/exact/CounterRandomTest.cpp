// The random words are those of the published generator, and a draw's words are its own.

#include "host/beyond/exact/CounterRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace tarn {
namespace {

// The known answers that Salmon, Moraes, Dror and Shaw publish with their library Random123 (file kat_vectors, lines
// "philox4x32 10"): zeros, ones, and the digits of pi.
TEST(CounterRandom, BlocksAreThePublishedOnes) {
    EXPECT_EQ(Philox4x32({0, 0, 0, 0}, {0, 0}), (PhiloxBlock{0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}));
    constexpr std::uint32_t kOnes = 0xffffffff;
    EXPECT_EQ(Philox4x32({kOnes, kOnes, kOnes, kOnes}, {kOnes, kOnes}),
              (PhiloxBlock{0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}));
    EXPECT_EQ(Philox4x32({0x243f6a88, 0x85a308d3, 0x13198a2e, 0x03707344}, {0xa4093822, 0x299f31d0}),
              (PhiloxBlock{0xd16cfe09, 0x94fdcceb, 0x5001e420, 0x24126ea1}));
}

TEST(CounterRandom, WordsOfADrawAreThoseOfItsBlocks) {
    constexpr std::uint64_t kSeed = 0x0123456789abcdef;
    constexpr std::uint64_t kDraw = 0xfedcba9876543210;
    CounterRandom random(kSeed, kDraw);
    for (std::uint32_t block = 0; block < 11; ++block) {
        const PhiloxBlock expected = Philox4x32({block, 0, 0x76543210, 0xfedcba98}, {0x89abcdef, 0x01234567});
        for (const std::uint32_t word : expected) EXPECT_EQ(random.Next(), word);
    }
}

// The first word at seed 0 and draw 0 is 0x6627e8d5, by the known answer, and 0x6627e8d5 / 2^32 is 0.39905.
TEST(CounterRandom, BoundedNumbersAreThePartOfTheBoundThatTheWordIs) {
    EXPECT_EQ(CounterRandom(0, 0).Below(1000), 399U);
    EXPECT_EQ(CounterRandom(0, 0).Below(1), 0U);
}

// With 3 * 2^30 numbers, words whose product with the bound leaves less than 2^32 mod (3 * 2^30) = 2^30 are left out:
// the words that are multiples of 4, one in four. What remains is floor(word * 3 / 4).
TEST(CounterRandom, BoundedNumbersLeaveOutTheWordsThatWouldFavourSome) {
    constexpr std::uint32_t kBound = 3U << 30;
    CounterRandom words(7, 5);
    CounterRandom bounded(7, 5);
    int leftOut = 0;
    for (int i = 0; i < 400; ++i) {
        const std::uint32_t word = words.Next();
        if (word % 4 == 0) {
            ++leftOut;
            continue;
        }
        EXPECT_EQ(bounded.Below(kBound), static_cast<std::uint32_t>(std::uint64_t{word} * 3 / 4));
    }
    EXPECT_GT(leftOut, 60);  // 100 are expected, with a standard deviation of 8.7
    EXPECT_LT(leftOut, 140);
}

// Chi-square of 60,000 throws of a die with 5 degrees of freedom stays below 20.5, which a fair one passes in one of
// 1000 cases (R: qchisq(0.999, 5) is 20.515).
TEST(CounterRandom, BoundedNumbersAreEquallyLikely) {
    constexpr std::uint32_t kFaces = 6;
    constexpr double kExpected = 10000;
    std::array<int, kFaces> counts{};
    for (std::uint64_t draw = 0; draw < kFaces * static_cast<std::uint64_t>(kExpected); ++draw) {
        ++counts.at(CounterRandom(1, draw).Below(kFaces));
    }
    double chiSquare = 0;
    for (const int count : counts) chiSquare += (count - kExpected) * (count - kExpected) / kExpected;
    EXPECT_LT(chiSquare, 20.515);
    EXPECT_GT(chiSquare, 0.21);  // qchisq(0.001, 5): nor are they more even than chance makes them
}

}  // namespace
}  // namespace tarn
