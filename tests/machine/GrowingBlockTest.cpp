#include "machine/GrowingBlock.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <utility>

namespace {

constexpr std::size_t kSome = 1000;       // in the heap
constexpr std::size_t kMany = 3'000'000;  // a mapping of its own
constexpr std::size_t kSizes[] = {1, kSome, kMany, 2 * kMany, kSome, kMany, 7};

void Fill(GrowingBlock& block, std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) block.Values()[i] = static_cast<double>(i);
}

bool Holds(const GrowingBlock& block, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (block.Values()[i] != static_cast<double>(i)) return false;
    }
    return true;
}

TEST(GrowingBlock, KeepsItsNumbersWhereverTheyGo) {
    GrowingBlock block;
    std::size_t held = 0;
    for (const std::size_t size : kSizes) {
        block.Reserve(size);
        block.Trim(size);
        EXPECT_GE(block.Capacity(), size);
        EXPECT_TRUE(Holds(block, held < size ? held : size)) << size;
        Fill(block, 0, size);
        held = size;
    }
}

TEST(GrowingBlock, GrowsAheadOfWhatIsAsked) {
    GrowingBlock block;
    int moves = 0;
    std::size_t capacity = 0;
    for (std::size_t count = 1; count <= kMany; count += count < kSome ? 1 : kSome) {
        block.Grow(count);
        ASSERT_GE(block.Capacity(), count);
        moves += block.Capacity() != capacity ? 1 : 0;
        capacity = block.Capacity();
    }
    EXPECT_LE(moves, 24);  // 2^22 is more than 3,000,000
}

TEST(GrowingBlock, IsZeroWhereItSaysSo) {
    GrowingBlock block;
    block.Grow(kSome);
    Fill(block, 0, kSome);
    EXPECT_FALSE(block.IsZeroFrom(0));
    block.Reserve(kMany);
    EXPECT_FALSE(block.IsZeroFrom(kSome - 1));
    for (const std::size_t capacity : {kMany, 2 * kMany}) {
        block.Reserve(capacity);
        GrowingBlock moved(std::move(block));
        block = std::move(moved);
        if (!block.IsZeroFrom(kSome)) continue;  // on systems without mappings
        for (std::size_t i = kSome; i < capacity; ++i) ASSERT_EQ(block.Values()[i], 0) << i;
    }
    EXPECT_TRUE(Holds(block, kSome));
}

TEST(GrowingBlock, MovesToAnotherOwner) {
    for (const std::size_t size : {kSome, kMany}) {
        GrowingBlock block;
        block.Reserve(size);
        Fill(block, 0, size);
        GrowingBlock other(std::move(block));
        GrowingBlock third;
        third.Reserve(kSome);
        third = std::move(other);
        EXPECT_TRUE(Holds(third, size));
    }
}

TEST(GrowingBlock, TrimmedToNothingItIsEmpty) {
    GrowingBlock block;
    block.Reserve(kMany);
    block.Trim(0);
    EXPECT_EQ(block.Capacity(), 0u);
    EXPECT_EQ(block.Values(), nullptr);
    block.Reserve(kSome);
    EXPECT_GE(block.Capacity(), kSome);
}

TEST(GrowingBlock, MoreThanThereIsIsRefused) {
    GrowingBlock block;
    EXPECT_THROW(block.Reserve(static_cast<std::size_t>(-1) / 8), std::bad_alloc);
    EXPECT_THROW(block.Reserve(static_cast<std::size_t>(-1)), std::bad_alloc);
}

}  // namespace
