// The significance of H over all arrangements of every data set of up to 8 cases with the values 1 to 4 in three
// groups, some of which may be empty: each arrangement is made, and its H compared in whole numbers.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/beyond/exact/KruskalWallisExact.h"
#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

/// H rises with the sum of R^2 / n over the groups; 840 is a multiple of all sizes up to 8.
std::int64_t WholeH(const Integers& values, const Integers& groups) {
    constexpr std::int64_t kMultipleOfSizes = 840;
    Integers doubledSums(3, 0);
    const Integers sizes = SizesOf(groups, doubledSums.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (const std::int64_t other : values) {
            doubledSums[static_cast<std::size_t>(groups[i])] += other < values[i] ? 2 : other == values[i] ? 1 : 0;
        }
    }
    std::int64_t sum = 0;
    for (std::size_t group = 0; group < sizes.size(); ++group) {
        // The doubled mid-rank is one more than the sum above.
        const std::int64_t doubled = doubledSums[group] + sizes[group];
        if (sizes[group] > 0) sum += doubled * doubled * (kMultipleOfSizes / sizes[group]);
    }
    return sum;
}

TEST(KruskalWallisExact, IsTheShareOfAllArrangementsOfEverySmallDataSet) {
    std::size_t wrong = 0;
    std::size_t sets = 0;
    ForEveryDataSet(8, 3, WholeH, [&](const TieBlocks& blocks, const Integers& all, std::int64_t observed) {
        const std::optional<double> p = KruskalWallisExact(blocks);
        if (!p) return;  // all cases are in one group
        ++sets;
        wrong += std::abs(*p - TailsAmong(all, observed).greater) <= 1e-12 ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0u);
    // Ways to put 1 to 8 cases into 12 places, C(20, 8) - 1, less three times those into the 4 places of one group.
    EXPECT_EQ(sets, 125969u - 3 * 494u);
}

}  // namespace
}  // namespace tarn
