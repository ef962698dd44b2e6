#include "host/beyond/MiddlePlaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include "host/beyond/Quartiles.h"

namespace {

using tarn::AscendingSample;
using tarn::MiddleOf;
using tarn::MiddleOfDifferences;
using tarn::ValueAtPlace;

/// Whether the places next to the quartiles and about the median have the values that a sort puts there.
void ExpectPlacesOf(std::vector<double> sorted, const std::optional<AscendingSample>& middle) {
    std::ranges::sort(sorted);
    ASSERT_TRUE(middle);
    EXPECT_EQ(middle->size, static_cast<double>(sorted.size()));
    const auto expectAt = [&](std::size_t place) {
        ASSERT_EQ(ValueAtPlace(*middle, static_cast<double>(place)), sorted[place]) << place;
    };
    const auto last = static_cast<double>(sorted.size() - 1);
    for (const double share : {0.25, 0.75}) {
        expectAt(static_cast<std::size_t>(share * last));
        expectAt(static_cast<std::size_t>(share * last) + 1);
    }
    const double spread = tarn::kMiddleSpread * std::sqrt(last);
    const auto end = static_cast<std::size_t>(last / 2 + spread);
    for (auto place = static_cast<std::size_t>(last / 2 - spread); place <= end; ++place) expectAt(place);
}

void ExpectMiddleOf(const std::vector<double>& values) {
    ExpectPlacesOf(values, MiddleOf(values));
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

TEST(MiddlePlaces, AreThoseOfSortedDifferences) {
    const std::vector<double> first = Normal(100001, 0.1);
    std::vector<double> second = first;
    std::ranges::reverse(second);
    std::vector<double> differences;
    for (std::size_t i = 0; i < first.size(); ++i) differences.push_back(first[i] - second[i]);
    ExpectPlacesOf(differences, MiddleOfDifferences(first, second));
}

// Every other value is looked at, and those are all small ones.
TEST(MiddlePlaces, AreNotHadWhereTheStepsMislead) {
    std::vector<double> values(65536);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = i % 2 == 0 ? static_cast<double>(i) : 1e6 + static_cast<double>(i);
    }
    EXPECT_FALSE(MiddleOf(values));
}

TEST(MiddlePlaces, AreNotHadOfFewValues) {
    EXPECT_FALSE(MiddleOf(std::vector<double>{3, 1, 2}));
}

// A value that is looked at, and the last one, which no other value stands beside.
TEST(MiddlePlaces, AreNotHadWhereAValueIsNotFinite) {
    std::vector<double> values = Normal(100001, 0.1);
    EXPECT_TRUE(MiddleOf(values));
    for (const std::size_t place : {std::size_t{0}, std::size_t{1}, values.size() - 1}) {
        for (const double odd : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
            const double before = std::exchange(values[place], odd);
            EXPECT_FALSE(MiddleOf(values)) << place << " " << odd;
            values[place] = before;
        }
    }
}

TEST(MiddlePlaces, SayWhereThereIsNoValue) {
    const std::optional<AscendingSample> middle = MiddleOf(Normal(100001, 0.1));
    ASSERT_TRUE(middle);
    EXPECT_TRUE(std::isnan(ValueAtPlace(*middle, 0)));
}
