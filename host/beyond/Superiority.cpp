#include "host/beyond/Superiority.h"

#include <limits>

#include "host/beyond/IntervalScales.h"
#include "host/beyond/PairScore.h"
#include "host/beyond/Placements.h"

namespace tarn {

Superiority ProbabilityOfSuperiority(const AscendingSample& first, const AscendingSample& second, double level) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const double n1 = first.size;
    const double n2 = second.size;
    if (!(n1 > 0 && n2 > 0)) return {kNaN, {}, {}, kNaN};
    const Placements placements = PlacementsOf(first, second);
    Superiority superiority;
    superiority.pairsWon = placements.pairsWon;
    superiority.variance =
        n1 > 1 && n2 > 1 ? placements.firstSquares / (n1 - 1) / n1 + placements.secondSquares / (n2 - 1) / n2 : kNaN;
    const ComparedPairs pairs{n1 * n2, n1 + n2, (n1 + n2) / 2 - 1};
    superiority.probability = LimitsOfPairShare(placements.share, superiority.variance, pairs, NormalBound(level));
    superiority.rankBiserial = AsCoefficient(superiority.probability);
    return superiority;
}

}  // namespace tarn
