#include "host/beyond/exact/SignedRankExact.h"
#include "host/beyond/StopQuestion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace tarn {

namespace {

/// So many differences have a doubled sum of ranks below 2^62.
constexpr double kMostDifferences = 0x1p30;

/// Differences of the same absolute value.
struct Magnitude {
    double value = 0;
    std::int64_t positive = 0;
    std::int64_t negative = 0;

    std::int64_t Count() const { return positive + negative; }
};

struct Magnitudes {
    std::int64_t zeros = 0;
    std::vector<Magnitude> ascending;
};

Magnitudes MagnitudesOf(const AscendingSample& differences) {
    const std::vector<double>& values = differences.values;
    const auto weight = [&](std::size_t i) { return static_cast<std::int64_t>(differences.WeightAt(i)); };
    Magnitudes magnitudes;
    auto above = static_cast<std::size_t>(std::ranges::lower_bound(values, 0.0) - values.begin());
    std::size_t below = above;  // one past the next negative value, which are taken from the largest down
    for (; above < values.size() && values[above] == 0; ++above) magnitudes.zeros += weight(above);
    while (above < values.size() || below > 0) {
        constexpr double kNone = std::numeric_limits<double>::infinity();
        const double positive = above < values.size() ? values[above] : kNone;
        const double negative = below > 0 ? -values[below - 1] : kNone;
        Magnitude next{std::min(positive, negative)};
        for (; above < values.size() && values[above] == next.value; ++above) next.positive += weight(above);
        for (; below > 0 && -values[below - 1] == next.value; --below) next.negative += weight(below - 1);
        magnitudes.ascending.push_back(next);
    }
    return magnitudes;
}

std::int64_t Rounded(long double sum) {
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    return sum >= static_cast<long double>(kLargest) ? kLargest : static_cast<std::int64_t>(sum);
}

/// Signed ranks in units of what divides all of them.
struct Signs {
    std::vector<std::int64_t> ranks;
    std::int64_t sum = 0;
    std::int64_t positive = 0;
};

Signs SignsOf(const SignedRankScores& scores) {
    std::int64_t divisor = 0;
    for (const std::int64_t rank : scores.doubledRanks) divisor = std::gcd(divisor, rank);
    Signs signs;
    if (divisor == 0) return signs;
    for (std::size_t i = 0; i < scores.doubledRanks.size(); ++i) {
        const std::int64_t rank = scores.doubledRanks[i] / divisor;
        signs.ranks.insert(signs.ranks.end(), static_cast<std::size_t>(scores.counts[i]), rank);
        signs.sum += rank * scores.counts[i];
    }
    signs.positive = (scores.doubledPositiveSum - scores.doubledFixedSum) / divisor;
    return signs;
}

struct LowerTail {
    double upToLimit = 0;
    double atLimit = 0;
};

/// The chance that the sum of the positive ranks is at most `limit`.
LowerTail LowerTailOf(const Signs& signs, std::int64_t limit) {
    // Smaller terms would be slow to work with and can't matter.
    constexpr double kNothing = 1e-305;
    constexpr double kHalf = 0.5;
    const auto places = static_cast<std::size_t>(limit) + 1;
    std::vector<double> before(places, 0.0);
    std::vector<double> after(places, 0.0);
    before[0] = 1;
    std::size_t end = 1;  // of the sums that there are so far
    for (const std::int64_t rank : signs.ranks) {
        AskWhetherToStop();
        const auto shift = std::min(static_cast<std::size_t>(rank), places);
        const std::size_t newEnd = std::min(places, end + shift);
        double* __restrict const to = after.data();
        const double* __restrict const from = before.data();
        for (std::size_t k = 0; k < std::min(shift, newEnd); ++k) to[k] = kHalf * from[k];
        for (std::size_t k = shift; k < newEnd; ++k) to[k] = kHalf * (from[k] + from[k - shift]);
        for (std::size_t k = 0; k < newEnd && to[k] < kNothing; ++k) to[k] = 0;
        end = newEnd;
        before.swap(after);
    }
    return {std::accumulate(before.begin(), before.end(), 0.0), before.back()};
}

}  // namespace

SignedRankScores MakeSignedRankScores(const AscendingSample& differences, ZeroMethod zeros) {
    const Magnitudes magnitudes = MagnitudesOf(differences);
    SignedRankScores scores;
    std::int64_t below = zeros == ZeroMethod::kDrop ? 0 : magnitudes.zeros;
    long double positiveSum = 0;
    for (const Magnitude& magnitude : magnitudes.ascending) {
        const std::int64_t doubledRank = 2 * below + magnitude.Count() + 1;
        scores.doubledRanks.push_back(doubledRank);
        scores.counts.push_back(magnitude.Count());
        positiveSum += static_cast<long double>(doubledRank) * static_cast<long double>(magnitude.positive);
        below += magnitude.Count();
    }
    if (zeros == ZeroMethod::kSplit) {
        // Each zero has the doubled rank zeros + 1, and half of them count.
        const auto count = static_cast<long double>(magnitudes.zeros);
        const long double fixedSum = count * (count + 1) / 2;
        scores.doubledFixedSum = Rounded(fixedSum);
        positiveSum += fixedSum;
    }
    scores.doubledPositiveSum = Rounded(positiveSum);
    return scores;
}

ExactTails SignedRankExact(const SignedRankScores& scores) {
    const Signs signs = SignsOf(scores);
    if (signs.sum == 0) return {};
    // The distribution is the same from both ends.
    const bool isLow = 2 * signs.positive <= signs.sum;
    const LowerTail tail = LowerTailOf(signs, isLow ? signs.positive : signs.sum - signs.positive);
    const double small = std::min(1.0, tail.upToLimit);
    const double large = std::min(1.0, 1 - tail.upToLimit + tail.atLimit);
    const bool isAtExpectation = 2 * signs.positive == signs.sum;
    return {isLow ? small : large, isLow ? large : small, isAtExpectation ? 1 : std::min(1.0, 2 * small)};
}

double SignedRankExactCost(const SignedRankScores& scores) {
    double count = 0;
    for (const std::int64_t ofRank : scores.counts) count += static_cast<double>(ofRank);
    if (count > kMostDifferences) return std::numeric_limits<double>::infinity();
    double sum = 0;
    double divisor = 0;
    std::int64_t common = 0;
    for (std::size_t i = 0; i < scores.counts.size(); ++i) {
        common = std::gcd(common, scores.doubledRanks[i]);
        sum += static_cast<double>(scores.doubledRanks[i]) * static_cast<double>(scores.counts[i]);
    }
    divisor = static_cast<double>(std::max<std::int64_t>(1, common));
    const auto observed = static_cast<double>(scores.doubledPositiveSum - scores.doubledFixedSum);
    return (count + 1) * (std::min(observed, sum - observed) / divisor + 1);
}

}  // namespace tarn
