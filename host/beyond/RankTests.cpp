#include "host/beyond/RankTests.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "host/beyond/KolmogorovDistribution.h"
#include "host/beyond/NormalTail.h"

namespace tarn {

namespace {

/// Sums of products of counts, up to 2^108.
__extension__ using Wide = __int128;

constexpr long double kHalf = 0.5L;

/// A statistic less its expectation, and its variance.
struct Distance {
    long double deviation;
    long double variance;
};

std::int64_t Whole(double count) {
    return std::llround(count);
}

long double TowardsZero(long double deviation, long double step) {
    return std::copysign(std::max(std::abs(deviation) - step, 0.0L), deviation);
}

/// The correction that moves a statistic against the alternative.
long double AgainstAlternative(long double deviation, Alternative alternative) {
    if (alternative == Alternative::kTwoSided) return TowardsZero(deviation, kHalf);
    return alternative == Alternative::kGreater ? deviation - kHalf : deviation + kHalf;
}

/// `corrected`: the deviation after a correction for continuity.
ChosenTest NormalTest(long double statistic, const Distance& distance, long double corrected, Alternative alternative) {
    ChosenTest test;
    if (!(distance.variance > 0)) return test;
    const long double z = corrected / std::sqrt(distance.variance);
    test.statistic = static_cast<double>(statistic);
    test.z = static_cast<double>(z);
    test.p = NormalTail(z, alternative);
    return test;
}

// ---- Two samples in one order ----

/// How many cases of two samples have one value.
struct TwoCounts {
    std::int64_t first = 0;
    std::int64_t second = 0;
};

std::vector<TwoCounts> MergedBlocks(const AscendingSample& first, const AscendingSample& second, double shift) {
    std::vector<TwoCounts> blocks;
    std::size_t i = 0;
    std::size_t j = 0;
    const auto shifted = [&](std::size_t at) { return first.values[at] - shift; };
    while (i < first.values.size() || j < second.values.size()) {
        const bool hasFirst = i < first.values.size();
        const bool hasSecond = j < second.values.size();
        const double value = !hasSecond  ? shifted(i)
                             : !hasFirst ? second.values[j]
                                         : std::min(shifted(i), second.values[j]);
        TwoCounts block;
        for (; i < first.values.size() && shifted(i) <= value; ++i) block.first += Whole(first.WeightAt(i));
        for (; j < second.values.size() && second.values[j] <= value; ++j) block.second += Whole(second.WeightAt(j));
        blocks.push_back(block);
    }
    return blocks;
}

TwoCounts SizesOf(const std::vector<TwoCounts>& blocks) {
    TwoCounts sizes;
    for (const TwoCounts& block : blocks) {
        sizes.first += block.first;
        sizes.second += block.second;
    }
    return sizes;
}

// ---- Signed ranks ----

/// How many differences have one magnitude.
struct SignCounts {
    std::int64_t positive = 0;
    std::int64_t negative = 0;

    std::int64_t Size() const { return positive + negative; }
};

struct Magnitudes {
    std::int64_t zeros = 0;
    std::vector<SignCounts> blocks;  ///< ascending, without zero
};

/// The negative differences ascend in magnitude from the middle to the front, the positive ones to the back.
Magnitudes MagnitudesOf(const AscendingSample& differences) {
    Magnitudes magnitudes;
    const std::vector<double>& values = differences.values;
    auto negative = static_cast<std::size_t>(std::ranges::lower_bound(values, 0.0) - values.begin());
    std::size_t positive = negative;
    for (; positive < values.size() && values[positive] == 0; ++positive) {
        magnitudes.zeros += Whole(differences.WeightAt(positive));
    }
    while (negative > 0 || positive < values.size()) {
        const bool isPositive = negative == 0 || (positive < values.size() && values[positive] < -values[negative - 1]);
        const double magnitude = isPositive ? values[positive] : -values[negative - 1];
        SignCounts block;
        for (; positive < values.size() && values[positive] <= magnitude; ++positive) {
            block.positive += Whole(differences.WeightAt(positive));
        }
        for (; negative > 0 && -values[negative - 1] <= magnitude; --negative) {
            block.negative += Whole(differences.WeightAt(negative - 1));
        }
        magnitudes.blocks.push_back(block);
    }
    return magnitudes;
}

// ---- Groups in an order ----

/// What the permutation variance of a count of concordant pairs needs of one of its two orders.
struct OrderSums {
    long double untied = 0;   ///< ordered pairs of cases that are not tied
    long double triples = 0;  ///< squares of what lies below a case less what lies above it, without `untied`
};

/// `sizes`: of the blocks of tied cases, in their order.
OrderSums SumsOfOrder(const std::vector<std::int64_t>& sizes, std::int64_t total) {
    OrderSums sums;
    std::int64_t below = 0;
    for (const std::int64_t size : sizes) {
        const std::int64_t above = total - below - size;
        const auto difference = static_cast<long double>(below - above);
        const auto weight = static_cast<long double>(size);
        sums.untied += weight * static_cast<long double>(total - size);
        sums.triples += weight * difference * difference;
        below += size;
    }
    sums.triples -= sums.untied;
    return sums;
}

/// Of a fourth of the sum over all ordered pairs, by Daniels (1944).
long double ConcordanceVariance(const OrderSums& values, const OrderSums& groups, long double total) {
    constexpr long double kSixteen = 16;
    constexpr long double kFewest = 3;
    long double variance = 2 / (total * (total - 1)) * values.untied * groups.untied;
    if (total >= kFewest) {
        variance += 4 / (total * (total - 1) * (total - 2)) * values.triples * groups.triples;
    }
    return variance / kSixteen;
}

// ---- Distribution functions ----

/// The largest difference of two distribution functions to a side, times the product of the sizes.
Wide LargestDifference(const std::vector<TwoCounts>& blocks, const TwoCounts& sizes, Alternative alternative) {
    Wide above = 0;
    Wide below = 0;
    TwoCounts reached;
    for (const TwoCounts& block : blocks) {
        reached.first += block.first;
        reached.second += block.second;
        const Wide difference = Wide{reached.first} * sizes.second - Wide{reached.second} * sizes.first;
        above = std::max(above, difference);
        below = std::max(below, -difference);
    }
    if (alternative == Alternative::kGreater) return above;
    return alternative == Alternative::kLess ? below : std::max(above, below);
}

double CorrectedKolmogorovTail(long double z, double difference, const TwoCounts& sizes, bool isTwoSided) {
    const auto larger = static_cast<long double>(std::max(sizes.first, sizes.second));
    const auto smaller = static_cast<long double>(std::min(sizes.first, sizes.second));
    if (isTwoSided) {
        const long double size = std::nearbyint(larger * smaller / (larger + smaller));
        return KolmogorovUpperTail(static_cast<double>(size), difference);
    }
    constexpr long double kThree = 3;
    const long double correction =
        2 * z * (larger + 2 * smaller) / std::sqrt(larger * smaller * (larger + smaller)) / kThree;
    return static_cast<double>(std::exp(-2 * z * z - correction));
}

}  // namespace

ChosenTest RankSumTest(const AscendingSample& first, const AscendingSample& second, Alternative alternative,
                       bool continuity, double shift) {
    constexpr long double kFour = 4;
    const std::vector<TwoCounts> blocks = MergedBlocks(first, second, shift);
    const TwoCounts sizes = SizesOf(blocks);
    Wide twiceDeviation = 0;
    long double squares = 0;  // of what lies below a case less what lies above it; tied cases have none between them
    TwoCounts below;
    for (const TwoCounts& block : blocks) {
        const TwoCounts above{sizes.first - below.first - block.first, sizes.second - below.second - block.second};
        twiceDeviation += Wide{block.first} * (below.second - above.second);
        const auto difference = static_cast<long double>(below.first + below.second - above.first - above.second);
        squares += static_cast<long double>(block.first + block.second) * difference * difference;
        below.first += block.first;
        below.second += block.second;
    }
    const auto pairs = static_cast<long double>(sizes.first) * static_cast<long double>(sizes.second);
    const auto total = static_cast<long double>(sizes.first + sizes.second);
    const Wide twiceU = Wide{sizes.first} * sizes.second + twiceDeviation;
    const Distance distance{static_cast<long double>(twiceDeviation) / 2,
                            pairs > 0 ? pairs * squares / (kFour * total * (total - 1)) : 0};
    const long double corrected = continuity ? AgainstAlternative(distance.deviation, alternative) : distance.deviation;
    ChosenTest test = NormalTest(static_cast<long double>(twiceU) / 2, distance, corrected, alternative);
    test.hasShift = true;
    return test;
}

ChosenTest SignedRankTest(const AscendingSample& differences, Alternative alternative, bool continuity,
                          ZeroMethod zeros) {
    constexpr long double kFour = 4;
    constexpr long double kSixteen = 16;
    const Magnitudes magnitudes = MagnitudesOf(differences);
    std::int64_t below = zeros == ZeroMethod::kDrop ? 0 : magnitudes.zeros;
    Wide positive = 0;  // twice the rank sums
    Wide negative = 0;
    long double squares = 0;  // of twice the ranks
    for (const SignCounts& block : magnitudes.blocks) {
        const std::int64_t twiceRank = 2 * below + block.Size() + 1;
        positive += Wide{block.positive} * twiceRank;
        negative += Wide{block.negative} * twiceRank;
        const auto rank = static_cast<long double>(twiceRank);
        squares += static_cast<long double>(block.Size()) * rank * rank;
        below += block.Size();
    }
    long double statistic = static_cast<long double>(positive) / 2;
    if (zeros == ZeroMethod::kSplit) {
        const auto count = static_cast<long double>(magnitudes.zeros);
        squares += count * (count + 1) * (count + 1);
        statistic += count * (count + 1) / kFour;
    }
    const Distance distance{static_cast<long double>(positive - negative) / kFour, squares / kSixteen};
    const long double corrected = continuity ? AgainstAlternative(distance.deviation, alternative) : distance.deviation;
    ChosenTest test = NormalTest(statistic, distance, corrected, alternative);
    test.hasZeroMethod = true;
    test.hasShift = true;
    return test;
}

ChosenTest SignTest(double positive, double negative, Alternative alternative, bool continuity) {
    return ProportionTest(positive, positive + negative, 0.5, alternative, continuity);
}

ChosenTest ProportionTest(double count, double size, double expected, Alternative alternative, bool continuity) {
    const long double cases = size;
    const Distance distance{static_cast<long double>(count) - cases * expected,
                            cases * expected * (1 - static_cast<long double>(expected))};
    const long double corrected = continuity ? TowardsZero(distance.deviation, kHalf) : distance.deviation;
    return NormalTest(count, distance, corrected, alternative);
}

ChosenTest McNemarTest(double oneWay, double otherWay, bool continuity) {
    const Distance distance{static_cast<long double>(oneWay) - otherWay, static_cast<long double>(oneWay) + otherWay};
    const long double corrected = continuity ? TowardsZero(distance.deviation, 1) : distance.deviation;
    ChosenTest test =
        NormalTest(corrected * corrected / distance.variance, distance, corrected, Alternative::kTwoSided);
    test.hasAlternative = false;
    return test;
}

ChosenTest JonckheereTest(const TieBlocks& blocks, Alternative alternative) {
    std::vector<std::int64_t> groupSizes(blocks.groupCount);
    std::vector<std::int64_t> blockSizes(blocks.BlockCount());
    Wide twiceStatistic = 0;
    for (std::size_t block = 0; block < blocks.BlockCount(); ++block) {
        Wide beneath = 0;  // twice the cases of earlier groups that are smaller, once those that are equal
        for (std::size_t group = 0; group < blocks.groupCount; ++group) {
            const std::int64_t count = blocks.CountOf(block, group);
            twiceStatistic += beneath * count;
            beneath += 2 * Wide{groupSizes[group]} + count;
            groupSizes[group] += count;
            blockSizes[block] += count;
        }
    }
    std::int64_t total = 0;
    Wide pairs = 0;  // of cases in different groups
    for (const std::int64_t size : groupSizes) {
        pairs += Wide{total} * size;
        total += size;
    }
    ChosenTest test;
    if (total > 1) {
        constexpr long double kFewestGroups = 2;
        const OrderSums values = SumsOfOrder(blockSizes, total);
        const OrderSums groups = SumsOfOrder(groupSizes, total);
        const Distance distance{static_cast<long double>(twiceStatistic - pairs) / kFewestGroups,
                                ConcordanceVariance(values, groups, static_cast<long double>(total))};
        test = NormalTest(static_cast<long double>(twiceStatistic) / 2, distance, distance.deviation, alternative);
    }
    test.hasContinuity = false;
    return test;
}

ChosenTest RunsTest(double runs, double firstSize, double secondSize, Alternative alternative, bool continuity) {
    const long double total = static_cast<long double>(firstSize) + secondSize;
    const long double twicePairs = 2 * static_cast<long double>(firstSize) * secondSize;
    const Distance distance{runs - 1 - twicePairs / total,
                            twicePairs * (twicePairs - total) / (total * total * (total - 1))};
    const long double corrected = continuity ? AgainstAlternative(distance.deviation, alternative) : distance.deviation;
    return NormalTest(runs, distance, corrected, alternative);
}

ChosenTest KolmogorovTest(const AscendingSample& first, const AscendingSample& second, Alternative alternative,
                          KolmogorovForm form) {
    ChosenTest test;
    test.hasContinuity = false;
    const std::vector<TwoCounts> blocks = MergedBlocks(first, second, 0);
    const TwoCounts sizes = SizesOf(blocks);
    if (sizes.first == 0 || sizes.second == 0) return test;
    const auto pairs = static_cast<long double>(sizes.first) * static_cast<long double>(sizes.second);
    const auto total = static_cast<long double>(sizes.first + sizes.second);
    const long double difference = static_cast<long double>(LargestDifference(blocks, sizes, alternative)) / pairs;
    const long double z = std::sqrt(pairs / total) * difference;
    const bool isTwoSided = alternative == Alternative::kTwoSided;
    test.statistic = static_cast<double>(difference);
    test.z = static_cast<double>(z);
    if (form == KolmogorovForm::kCorrected) {
        test.p = CorrectedKolmogorovTail(z, test.statistic, sizes, isTwoSided);
    } else {
        test.p = isTwoSided ? KolmogorovLimitUpperTail(z) : static_cast<double>(std::exp(-2 * z * z));
    }
    return test;
}

ChosenTest MedianTest(const MedianCounts& first, const MedianCounts& second, Alternative alternative, bool continuity) {
    const Wide determinant =
        Wide{Whole(first.above)} * Whole(second.rest) - Wide{Whole(first.rest)} * Whole(second.above);
    const long double firstSize = static_cast<long double>(first.above) + first.rest;
    const long double secondSize = static_cast<long double>(second.above) + second.rest;
    const long double above = static_cast<long double>(first.above) + second.above;
    const long double total = firstSize + secondSize;
    const long double margins = firstSize * secondSize * above * (total - above);
    const Distance distance{static_cast<long double>(determinant) / total,
                            total > 0 ? margins / (total * total * total) : 0};
    const long double corrected = continuity ? TowardsZero(distance.deviation, kHalf) : distance.deviation;
    return NormalTest(corrected * corrected / distance.variance, distance, corrected, alternative);
}

}  // namespace tarn
