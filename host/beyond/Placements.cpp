#include "host/beyond/Placements.h"

#include <algorithm>
#include <cmath>

namespace tarn {

namespace {

/// A mean and a sum of squares that are taken about a guess of the mean.
class Moments {
 public:
    void Add(double count, double deviation) {
        sum_ += count * deviation;
        squares_ += count * deviation * deviation;
    }
    double SquaresAboutMean(double cases) const { return std::max(0.0, squares_ - sum_ * (sum_ / cases)); }

 private:
    double sum_ = 0;
    double squares_ = 0;
};

Placements WalkAbout(double centre, const DistinctValues& first, const DistinctValues& second) {
    Placements placements;
    Moments firstMoments;
    Moments secondMoments;
    double pairsWon = 0;
    const double perSecond = 1 / second.Cases();
    const double perFirst = 1 / first.Cases();
    WalkTogether(first, second, [&](double ofFirst, double ofSecond, double firstBelow, double secondBelow) {
        const double beaten = secondBelow + ofSecond / 2;
        const double beating = first.Cases() - firstBelow - ofFirst / 2;
        pairsWon += ofFirst * beaten;
        firstMoments.Add(ofFirst, beaten * perSecond - centre);
        secondMoments.Add(ofSecond, beating * perFirst - centre);
    });
    placements.pairsWon = pairsWon;
    placements.share = std::min(1.0, pairsWon / first.Cases() / second.Cases());
    placements.firstSquares = firstMoments.SquaresAboutMean(first.Cases());
    placements.secondSquares = secondMoments.SquaresAboutMean(second.Cases());
    return placements;
}

}  // namespace

Placements PlacementsOf(const DistinctValues& first, const DistinctValues& second) {
    constexpr double kMiddle = 0.5;
    const Placements placements = WalkAbout(kMiddle, first, second);
    // Far from the middle the squares about it are much larger than those about the mean, and digits cancel.
    constexpr double kFar = 0.25;
    if (std::fabs(placements.share - kMiddle) < kFar) return placements;
    return WalkAbout(placements.share, first, second);
}

Placements PlacementsOf(const AscendingSample& first, const AscendingSample& second) {
    return PlacementsOf(DistinctValues(first), DistinctValues(second));
}

}  // namespace tarn
