#include "records/SortOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "platform/common/QKMV.h"

namespace {

/// The order of the values, which is the same for any number of threads; and with it come the values.
std::vector<int> AscendingOrder(const std::vector<double>& values) {
    const QKTarn::SortedColumn sorted = QKTarn::SortColumn(values, WorkShare(1));
    const QKTarn::SortedColumn shared = QKTarn::SortColumn(values, WorkShare(3));
    const std::vector<int> order(sorted.order.begin(), sorted.order.end());
    EXPECT_TRUE(std::equal(shared.order.begin(), shared.order.end(), order.begin(), order.end()));
    for (std::size_t i = 0; i < order.size(); ++i) {
        const double value = values[static_cast<std::size_t>(order[i])];
        EXPECT_EQ(std::bit_cast<std::uint64_t>(sorted.values[i]), std::bit_cast<std::uint64_t>(value)) << i;
    }
    return order;
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<int> StableOrder(const std::vector<double>& values) {
    std::vector<int> order(values.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return values[static_cast<std::size_t>(a)] < values[static_cast<std::size_t>(b)];
    });
    return order;
}

/// Whole numbers are counted where they are no more than the values; from 131,072 values on threads share the work, and
/// from 1,048,576 on it is parted in any case.
const std::vector<std::size_t> kSizes{0, 1, 2, 3, 17, 31, 32, 33, 2047, 2048, 2049, 6000, 300'000};

/// Values by a rule, for each of the sizes.
template <typename MakeValue>
void ExpectStableOrder(const std::string& what, MakeValue makeValue) {
    for (const std::size_t size : kSizes) {
        std::vector<double> values(size);
        for (std::size_t i = 0; i < size; ++i) values[i] = makeValue(i);
        EXPECT_EQ(AscendingOrder(values), StableOrder(values)) << what << ", size " << size;
    }
}

}  // namespace

TEST(SortOrderTest, NastyValuesByHand) {
    const double subnormal = std::numeric_limits<double>::denorm_min();
    //                              0    1          2                 3     4    5           6          7
    const std::vector<double> values{0.0, kInfinity, QKMV::Missing(), -0.0, 1e-300, -kInfinity, -subnormal, subnormal,
                                     //  8    9
                                     -1.0, 0.0};
    EXPECT_EQ(AscendingOrder(values), (std::vector<int>{5, 2, 8, 6, 0, 3, 9, 7, 4, 1}));
}

TEST(SortOrderTest, AgreesWithAStableSort) {
    std::mt19937_64 random(20240817);
    ExpectStableOrder("already sorted", [](std::size_t i) { return static_cast<double>(i); });
    ExpectStableOrder("backward", [](std::size_t i) { return -static_cast<double>(i); });
    ExpectStableOrder("all equal", [](std::size_t) { return 7.25; });
    ExpectStableOrder("zeros of both signs", [](std::size_t i) { return i % 3 == 1 ? -0.0 : 0.0; });
    ExpectStableOrder("few values", [&](std::size_t) { return static_cast<double>(random() % 5) - 2; });
    ExpectStableOrder("whole numbers", [&](std::size_t) { return static_cast<double>(random() % 100000) - 50000; });
    ExpectStableOrder("any double", [&](std::size_t) {
        const double value = std::bit_cast<double>(random());
        return value == value ? value : 0.5;  // NaN has no order to compare with
    });
    ExpectStableOrder("neighbours in the last bit", [&](std::size_t) {
        return std::bit_cast<double>(std::bit_cast<std::uint64_t>(-1.5) + random() % 4);
    });
    ExpectStableOrder("ties, infinities, missing", [&](std::size_t) {
        const std::vector<double> choice{kInfinity, -kInfinity, QKMV::Missing(), -QKMV::Missing(), -0.0, 0.0, 3, -3};
        return choice[random() % choice.size()];
    });
}

TEST(SortOrderTest, ALongColumnIsParted) {
    std::mt19937_64 random(7);
    std::vector<double> values(1'400'000);
    for (double& value : values) value = static_cast<double>(random() % 1'000'000'007) / 3;
    EXPECT_EQ(AscendingOrder(values), StableOrder(values));
}

TEST(SortOrderTest, KeysThatDifferInTheirLastBitsOnlyKeepTheirOrder) {
    // Beside positions of 12 bits a key keeps 52: of doubles that range over all exponents the last 12 are lost.
    std::mt19937_64 random(8);
    std::vector<double> values(4000);
    for (double& value : values) value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(1.25) + random() % 50);
    values[17] = 1e300;
    values[18] = -1e-300;
    values[19] = 5e-324;
    EXPECT_EQ(AscendingOrder(values), StableOrder(values));
}

TEST(SortOrderTest, AStopEndsTheWork) {
    std::vector<double> values(3'000'000);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = 1.0 / static_cast<double>(i + 1);
    int asked = 0;
    const WorkShare share(1, [&] { return ++asked > 3; });
    static_cast<void>(QKTarn::SortColumn(values, share));
    EXPECT_TRUE(share.IsStopped());
    EXPECT_EQ(asked, 4) << "nothing goes on behind it";
}

TEST(SortOrderTest, ANaNStandsAtAnEndAndLeavesTheOthersSorted) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const std::size_t size : {std::size_t{5}, std::size_t{2500}}) {
        std::vector<double> values(size);
        for (std::size_t i = 0; i < size; ++i) values[i] = static_cast<double>((i * 7) % size);
        values[1] = nan;
        values[3] = -nan;
        std::vector<double> sorted;
        for (const int position : AscendingOrder(values)) sorted.push_back(values[static_cast<std::size_t>(position)]);
        ASSERT_EQ(sorted.size(), size);
        EXPECT_EQ(std::count_if(sorted.begin(), sorted.end(), [](double x) { return x != x; }), 2);
        const auto isNumber = [](double x) { return x == x; };
        const auto first = std::find_if(sorted.begin(), sorted.end(), isNumber);
        const auto last = std::find_if_not(first, sorted.end(), isNumber);
        EXPECT_EQ(last - first, static_cast<std::ptrdiff_t>(size) - 2) << "the numbers stand together";
        EXPECT_TRUE(std::is_sorted(first, last));
    }
}
