#include "host/beyond/IntervalScales.h"

#include <boost/math/distributions/normal.hpp>
#include <limits>

#include "host/beyond/QuietDistributions.h"

namespace tarn {

bool IsLevel(double level) {
    return level > 0 && level < 1;
}

double NormalBound(double level) {
    if (!IsLevel(level)) return std::numeric_limits<double>::quiet_NaN();
    const boost::math::normal_distribution<double, QuietPolicy> normal;
    return boost::math::quantile(boost::math::complement(normal, (1 - level) / 2));
}

Estimate AsCoefficient(const Estimate& share) {
    return {2 * share.value - 1, 2 * share.lower - 1, 2 * share.upper - 1};
}

}  // namespace tarn
