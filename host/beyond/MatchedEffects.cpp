#include "host/beyond/MatchedEffects.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

#include "host/beyond/DistinctValues.h"
#include "host/beyond/IntervalScales.h"
#include "host/beyond/PairScore.h"
#include "host/beyond/Placements.h"
#include "host/beyond/Proportions.h"
#include "machine/LargeArray.h"

namespace tarn {

namespace {

double SumOf(std::span<const double> weights) {
    return std::accumulate(weights.begin(), weights.end(), 0.0);
}

/// The differences above 0, which stand in their sample as they are wanted, and those below it.
class Sides {
 public:
    explicit Sides(const AscendingSample& differences) {
        const std::vector<double>& values = differences.values;
        const auto firstPositive = static_cast<std::size_t>(std::ranges::upper_bound(values, 0.0) - values.begin());
        const auto negatives = static_cast<std::ptrdiff_t>(std::ranges::lower_bound(values, 0.0) - values.begin());
        positive_ = std::span(values).subspan(firstPositive);
        positiveSize_ = static_cast<double>(positive_.size());
        negative_.values = RoomInLargePages<double>(static_cast<std::size_t>(negatives));
        negative_.values.assign(values.rend() - negatives, values.rend());
        for (double& value : negative_.values) value = -value;
        negative_.size = static_cast<double>(negatives);
        if (differences.weights.empty()) return;
        const std::vector<double>& weights = differences.weights;
        positiveWeights_ = std::span(weights).subspan(firstPositive);
        positiveSize_ = SumOf(positiveWeights_);
        negative_.weights.assign(weights.rend() - negatives, weights.rend());
        negative_.size = SumOf(negative_.weights);
    }

    double Positive() const { return positiveSize_; }
    double Negative() const { return negative_.size; }
    Placements Compare() const {
        return PlacementsOf(DistinctValues(positive_, positiveWeights_, positiveSize_), DistinctValues(negative_));
    }

 private:
    std::span<const double> positive_;
    std::span<const double> positiveWeights_;
    double positiveSize_ = 0;
    AscendingSample negative_;  ///< their magnitudes
};

/// The share of positive means and its variance where there are differences of both signs. What a difference adds is
/// the sum of the signs of its means with each difference, itself included.
Estimate ShareOfPositiveMeans(const Sides& sides, double bound) {
    const double positive = sides.Positive();
    const double negative = sides.Negative();
    const double n = positive + negative;
    const ComparedPairs pairs{n * (n + 1) / 2, n, n - 1};
    if (positive == 0 || negative == 0) return ExponentialPairScore(positive > 0 ? 1 : 0, pairs, bound);
    const Placements placements = sides.Compare();
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
    const Sides sides(differences);
    if (sides.Positive() == 0 && sides.Negative() == 0) return {};
    return AsCoefficient(ShareOfPositiveMeans(sides, NormalBound(level)));
}

Estimate MatchedSignBiserial(double positive, double negative, double level) {
    return AsCoefficient(WilsonInterval(positive, positive + negative, level));
}

}  // namespace tarn
