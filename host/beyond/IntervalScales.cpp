#include "host/beyond/IntervalScales.h"

#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <limits>

#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double FromLogit(double logit) {
    return 1 / (1 + std::exp(-logit));
}

}  // namespace

bool IsLevel(double level) {
    return level > 0 && level < 1;
}

double NormalBound(double level) {
    if (!IsLevel(level)) return kNaN;
    const boost::math::normal_distribution<double, QuietPolicy> normal;
    return boost::math::quantile(boost::math::complement(normal, (1 - level) / 2));
}

double StudentBound(double level, double degrees) {
    if (!IsLevel(level) || !(degrees > 0)) return kNaN;
    const boost::math::students_t_distribution<double, QuietPolicy> student(degrees);
    return boost::math::quantile(boost::math::complement(student, (1 - level) / 2));
}

Estimate OnLogitScale(double share, double error, double bound) {
    const double logit = std::log(share) - std::log1p(-share);
    const double reach = bound * error / (share * (1 - share));
    return {share, FromLogit(logit - reach), FromLogit(logit + reach)};
}

Estimate OnFisherScale(double coefficient, double error, double bound) {
    const double z = std::atanh(coefficient);
    const double reach = bound * error / ((1 - coefficient) * (1 + coefficient));
    return {coefficient, std::tanh(z - reach), std::tanh(z + reach)};
}

Estimate AsCoefficient(const Estimate& share) {
    return {2 * share.value - 1, 2 * share.lower - 1, 2 * share.upper - 1};
}

}  // namespace tarn
