#include "host/report/Letters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tarn {
namespace {

using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;
using Texts = std::vector<std::string>;

std::vector<std::size_t> InOrder(std::size_t count) {
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    return order;
}

/// The letters of a sample, those in brackets as one.
std::set<std::string> LettersIn(const std::string& text) {
    std::set<std::string> letters;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t end = text[i] == '(' ? text.find(')', i) + 1 : i + 1;
        letters.insert(text.substr(i, end - i));
        i = end;
    }
    return letters;
}

bool Share(const std::string& first, const std::string& second) {
    const std::set<std::string> letters = LettersIn(first);
    return std::ranges::any_of(LettersIn(second), [&](const std::string& letter) { return letters.contains(letter); });
}

void ExpectRight(std::size_t count, const Pairs& different, const Texts& letters) {
    ASSERT_EQ(letters.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_FALSE(letters[i].empty());
        for (std::size_t j = i + 1; j < count; ++j) {
            const bool differs = std::ranges::find(different, std::pair(i, j)) != different.end();
            EXPECT_NE(Share(letters[i], letters[j]), differs) << i << " " << j;
        }
    }
}

// R, multcompView 0.1-8: the first two examples on the help page of multcompLetters, dif3 and dif4.
TEST(Letters, AreThoseOfMultcompLetters) {
    EXPECT_EQ(LettersOfPairs(3, {{1, 2}}, InOrder(3)), (Texts{"ab", "a", "b"}));
    EXPECT_EQ(LettersOfPairs(4, {{0, 1}, {0, 2}, {1, 3}}, InOrder(4)), (Texts{"a", "b", "bc", "ac"}));
}

// R, multcompView 0.1-8: multcompLetters of t1 to t8 where t1-t7, t1-t8, t2-t4, t2-t5 and t3-t5 differ.
TEST(Letters, AreThoseOfMultcompLettersWithEightSamples) {
    const Pairs different{{0, 6}, {0, 7}, {1, 3}, {1, 4}, {2, 4}};
    const Texts letters = LettersOfPairs(8, different, InOrder(8));
    EXPECT_EQ(letters, (Texts{"abc", "ad", "abde", "bcef", "cf", "abcdef", "def", "def"}));
}

TEST(Letters, AreSharedExactlyByThoseThatDoNotDiffer) {
    std::uint32_t state = 7;
    const auto random = [&state] { return (state = state * 1664525 + 1013904223) >> 8; };
    for (int round = 0; round < 2000; ++round) {
        const std::size_t count = 1 + random() % 8;
        const std::uint32_t share = random() % 10;
        Pairs different;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t j = i + 1; j < count; ++j) {
                if (random() % 10 < share) different.emplace_back(i, j);
            }
        }
        std::vector<std::size_t> order = InOrder(count);
        for (std::size_t i = count; i > 1; --i) std::swap(order[i - 1], order[random() % i]);
        const Texts letters = LettersOfPairs(count, different, order);
        ExpectRight(count, different, letters);
        EXPECT_TRUE(LettersIn(letters[order[0]]).contains("a"));
    }
}

// 20 pairs, each of which differs within itself, want 2^20 letters by insert and absorb.
TEST(Letters, StayFewWhereInsertAndAbsorbWouldTakeTooMany) {
    Pairs different;
    for (std::size_t i = 0; i < 40; i += 2) different.emplace_back(i, i + 1);
    ExpectRight(40, different, LettersOfPairs(40, different, InOrder(40)));
}

// More than 64 samples, by insert and absorb and one by one: those differ that are more than 9 places apart, or whose
// places are those of a random pair.
TEST(Letters, OfManySamplesAreSharedExactlyByThoseThatDoNotDiffer) {
    constexpr std::size_t kSamples = 90;
    Pairs apart;
    Pairs scattered;
    std::uint32_t state = 11;
    for (std::size_t i = 0; i < kSamples; ++i) {
        for (std::size_t j = i + 1; j < kSamples; ++j) {
            if (j - i > 9) apart.emplace_back(i, j);
            state = state * 1664525 + 1013904223;
            if (state >> 24 < 60) scattered.emplace_back(i, j);
        }
    }
    const Texts letters = LettersOfPairs(kSamples, apart, InOrder(kSamples));
    ExpectRight(kSamples, apart, letters);
    // By hand: runs of 10 places, the first of which begins at each of the first 81.
    EXPECT_EQ(letters[0], "a");
    EXPECT_EQ(letters[1], "ab");
    EXPECT_EQ(letters[89], "(81)");
    ExpectRight(kSamples, scattered, LettersOfPairs(kSamples, scattered, InOrder(kSamples)));
}

TEST(Letters, GoOnWithCapitalsAndNumbers) {
    Pairs different;
    for (std::size_t i = 0; i < 54; ++i) {
        for (std::size_t j = i + 1; j < 54; ++j) different.emplace_back(i, j);
    }
    const Texts letters = LettersOfPairs(54, different, InOrder(54));
    EXPECT_EQ(letters[25], "z");
    EXPECT_EQ(letters[26], "A");
    EXPECT_EQ(letters[51], "Z");
    EXPECT_EQ(letters[52], "(53)");
    ExpectRight(54, different, letters);
}

TEST(Letters, AreGivenInTheOrderAskedFor) {
    EXPECT_EQ(LettersOfPairs(3, {{0, 1}, {0, 2}, {1, 2}}, {2, 0, 1}), (Texts{"b", "c", "a"}));
    EXPECT_EQ(LettersOfPairs(2, {}, {1, 0}), (Texts{"a", "a"}));
    EXPECT_TRUE(LettersOfPairs(0, {}, {}).empty());
}

// By hand: the third subset lies within the first one, and sample 4 is in none.
TEST(Letters, StandForSubsets) {
    EXPECT_EQ(LettersOfSubsets(5, {{0, 1, 2}, {2, 3}, {1, 2}}, InOrder(5)), (Texts{"a", "a", "ab", "b", "c"}));
    EXPECT_EQ(LettersOfSubsets(3, {{0, 1}, {1, 2}}, {2, 1, 0}), (Texts{"b", "ab", "a"}));
}

}  // namespace
}  // namespace tarn
