#include "host/beyond/SmirnovDistance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/beyond/IntervalScales.h"

namespace tarn {

namespace {

/// How far the distribution function of n cases keeps to the true one with the probability `level`.
double Band(double n, double level) {
    if (!(n > 0) || !IsLevel(level)) return std::numeric_limits<double>::quiet_NaN();
    return std::sqrt(std::log(2 / (1 - level)) / (2 * n));
}

Estimate WithReach(double distance, double reach) {
    if (std::isnan(reach)) return {distance, reach, reach};
    return {distance, std::max(0.0, distance - reach), std::min(1.0, distance + reach)};
}

}  // namespace

Estimate SmirnovDistance(double distance, double n1, double n2, double level) {
    const double ofOne = std::sqrt(level);
    return WithReach(distance, Band(n1, ofOne) + Band(n2, ofOne));
}

Estimate KolmogorovDistance(double distance, double n, double level) {
    return WithReach(distance, Band(n, level));
}

}  // namespace tarn
