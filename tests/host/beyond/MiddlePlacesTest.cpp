#include "host/beyond/MiddlePlaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using tarn::PutMiddleInPlace;

/// Whether the values stand where a sort puts them: next to the quartiles, and about the median.
void ExpectMiddleOf(std::vector<double> values) {
    std::vector<double> sorted = values;
    std::ranges::sort(sorted);
    ASSERT_TRUE(PutMiddleInPlace(values));
    ASSERT_EQ(values.size(), sorted.size());
    const auto last = static_cast<double>(values.size() - 1);
    for (const double share : {0.25, 0.75}) {
        const auto place = static_cast<std::size_t>(share * last);
        EXPECT_EQ(values[place], sorted[place]) << share;
        EXPECT_EQ(values[place + 1], sorted[place + 1]) << share;
    }
    const double spread = tarn::kMiddleSpread * std::sqrt(last);
    const auto end = static_cast<std::size_t>(last / 2 + spread);
    for (auto place = static_cast<std::size_t>(last / 2 - spread); place <= end; ++place) {
        ASSERT_EQ(values[place], sorted[place]) << place;
    }
}

std::vector<double> Normal(std::size_t size, double unit) {
    std::mt19937 generator(3);
    std::normal_distribution<double> normal;
    std::vector<double> values(size);
    for (double& value : values) value = std::round(normal(generator) / unit) * unit;
    return values;
}

}  // namespace

TEST(MiddlePlaces, AreThoseOfASort) {
    ExpectMiddleOf(Normal(100001, 1e-9));
    ExpectMiddleOf(Normal(300000, 0.1));
    ExpectMiddleOf(Normal(131072, 2));
    ExpectMiddleOf(std::vector<double>(100000, 7));
}

TEST(MiddlePlaces, AreThoseOfASortWhereValuesRiseOrFall) {
    std::vector<double> values = Normal(200000, 1e-9);
    std::ranges::sort(values);
    ExpectMiddleOf(values);
    std::ranges::reverse(values);
    ExpectMiddleOf(values);
}

// Every other value is looked at, and those are all small ones.
TEST(MiddlePlaces, AreNotHadWhereTheStepsMislead) {
    std::vector<double> values(65536);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = i % 2 == 0 ? static_cast<double>(i) : 1e6 + static_cast<double>(i);
    }
    const std::vector<double> before = values;
    EXPECT_FALSE(PutMiddleInPlace(values));
    EXPECT_EQ(values, before);
}

TEST(MiddlePlaces, AreNotHadOfFewValues) {
    std::vector<double> values{3, 1, 2};
    EXPECT_FALSE(PutMiddleInPlace(values));
    EXPECT_EQ(values, (std::vector<double>{3, 1, 2}));
}
