#include "host/beyond/MatchedEffects.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/beyond/IntervalScales.h"
#include "host/beyond/PairScore.h"
#include "host/beyond/Placements.h"
#include "host/beyond/Proportions.h"
#include "machine/LargeArray.h"

namespace tarn {

namespace {

void Append(AscendingSample& sample, double value, double weight) {
    sample.values.push_back(value);
    sample.weights.push_back(weight);
    sample.size += weight;
}

struct Sides {
    AscendingSample positive;
    AscendingSample negative;  ///< the absolute values
};

/// Of differences without weights.
Sides PlainSidesOf(const std::vector<double>& differences) {
    Sides sides;
    const auto firstPositive = std::ranges::upper_bound(differences, 0.0);
    const auto pastNegative = std::ranges::lower_bound(differences, 0.0);
    sides.positive.values = RoomInLargePages<double>(static_cast<std::size_t>(differences.end() - firstPositive));
    sides.negative.values = RoomInLargePages<double>(static_cast<std::size_t>(pastNegative - differences.begin()));
    sides.positive.values.assign(firstPositive, differences.end());
    sides.positive.size = static_cast<double>(sides.positive.values.size());
    sides.negative.values.assign(std::make_reverse_iterator(pastNegative), differences.rend());
    for (double& value : sides.negative.values) value = -value;
    sides.negative.size = static_cast<double>(sides.negative.values.size());
    return sides;
}

Sides SidesOf(const AscendingSample& differences) {
    if (differences.weights.empty()) return PlainSidesOf(differences.values);
    Sides sides;
    const std::size_t size = differences.values.size();
    for (std::size_t i = 0; i < size; ++i) {
        if (differences.values[i] > 0) Append(sides.positive, differences.values[i], differences.WeightAt(i));
        const std::size_t fromEnd = size - 1 - i;
        const double mirrored = differences.values[fromEnd];
        if (mirrored < 0) Append(sides.negative, -mirrored, differences.WeightAt(fromEnd));
    }
    return sides;
}

/// The share of positive means and its variance where there are differences of both signs. What a difference adds is
/// the sum of the signs of its means with each difference, itself included.
Estimate ShareOfPositiveMeans(const Sides& sides, double bound) {
    const double positive = sides.positive.size;
    const double negative = sides.negative.size;
    const double n = positive + negative;
    const ComparedPairs pairs{n * (n + 1) / 2, n, n - 1};
    if (positive == 0 || negative == 0) return ExponentialPairScore(positive > 0 ? 1 : 0, pairs, bound);
    const Placements placements = PlacementsOf(sides.positive, sides.negative);
    const double share = (placements.pairsWon + positive * (positive + 1) / 2) / pairs.count;
    const double between = n + (negative - positive) * (2 * placements.share - 1);
    const double squares = 4 * negative * negative * placements.firstSquares +
                           4 * positive * positive * placements.secondSquares +
                           positive * (negative / n) * between * between;
    const double variance = squares / (n - 1) / n / (n + 1) / (n + 1);
    return LimitsOfPairShare(share, variance, pairs, bound);
}

}  // namespace

Estimate MatchedRankBiserial(const AscendingSample& differences, double level) {
    const Sides sides = SidesOf(differences);
    if (sides.positive.size == 0 && sides.negative.size == 0) return {};
    return AsCoefficient(ShareOfPositiveMeans(sides, NormalBound(level)));
}

Estimate MatchedSignBiserial(double positive, double negative, double level) {
    return AsCoefficient(WilsonInterval(positive, positive + negative, level));
}

}  // namespace tarn
