// Some categories of a field, asked one by one and for many records.

#include "support/CategorySet.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

std::vector<std::uint32_t> Marked(const CategorySet& set, const std::vector<std::int32_t>& categories) {
    std::vector<std::uint32_t> marks(categories.size(), 7);
    set.Mark(categories.data(), categories.size(), marks.data());
    return marks;
}

TEST(CategorySet, HoldsTheIndicesOfTheListAndNoOthers) {
    const CategorySet set(std::vector<double>{3, 0, -1, 3});
    EXPECT_EQ(Marked(set, {0, 1, 2, 3, 4, -1, kLowest, kHighest}),
              (std::vector<std::uint32_t>{1, 0, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(set.Size(), 4U);
}

TEST(CategorySet, IsTheSameAsOneOfTheSameCategories) {
    const CategorySet set(std::vector<bool>{false, true});
    EXPECT_TRUE(set.IsSameAs(CategorySet(std::vector<bool>{false, true, false})));
    EXPECT_TRUE(CategorySet(std::vector<double>{1}).IsSameAs(set));
    EXPECT_FALSE(set.IsSameAs(CategorySet(std::vector<bool>{false, true, true})));
    EXPECT_FALSE(CategorySet(std::vector<bool>{false, true, true}).IsSameAs(set));
    EXPECT_FALSE(set.IsSameAs(CategorySet()));
}

TEST(CategorySet, HoldsTheCategoriesWhoseBitIsSet) {
    const CategorySet set(std::vector<bool>{false, true, true, false});
    EXPECT_EQ(Marked(set, {0, 1, 2, 3, 4, -1}), (std::vector<std::uint32_t>{0, 1, 1, 0, 0, 0}));
    EXPECT_EQ(set.Size(), 4U);
}

TEST(CategorySet, OfOneCategoryOrNoneIsAskedAlike) {
    for (const CategorySet& set : {CategorySet(std::vector<double>{2}), CategorySet(std::vector<double>{-1}),
                                   CategorySet(std::vector<bool>{true, false}), CategorySet()}) {
        const std::vector<std::int32_t> categories{0, 1, 2, 3, -1, kLowest, kHighest};
        const std::vector<std::uint32_t> marks = Marked(set, categories);
        for (std::size_t i = 0; i < categories.size(); ++i) EXPECT_EQ(marks[i], set.Contains(categories[i]));
    }
    EXPECT_EQ(CategorySet(std::vector<double>{2}).Contains(2), 1U);
    EXPECT_EQ(CategorySet(std::vector<bool>{true, false}).Contains(0), 1U);
}

}  // namespace
