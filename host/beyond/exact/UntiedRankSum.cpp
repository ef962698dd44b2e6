#include "host/beyond/exact/UntiedRankSum.h"
#include "host/beyond/StopQuestion.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace tarn {

namespace {

using Complex = std::complex<double>;

/// exp(-kNothing) makes no difference to 1.
constexpr double kNothing = 45;
/// From so many weighted arrangements on, exp(200), the integrand has vanished for good where it has for some points in
/// a row. It is largest again half a round further, where about the square root of their number is left of them.
constexpr long double kLogOfMany = 200;

/// 1 - exp(-power * (rate - i * angle)), without cancellation.
Complex OneLess(double power, double rate, double angle) {
    const double turn = power * angle;
    const double half = std::sin(turn / 2);
    const double size = -power * rate;
    return {2 * half * half - std::expm1(size) * std::cos(turn), -std::exp(size) * std::sin(turn)};
}

/// The mean of a number whose distribution falls by exp(-rate * power) from each multiple of `power` to the next.
double GeometricMean(double power, double rate) {
    return power * rate > kNothing ? 0 : power / std::expm1(power * rate);
}

/// The mean of U, each value weighted with exp(-rate * U), and of a geometric number that makes sums of coefficients.
double TiltedMean(std::int64_t smaller, std::int64_t larger, double rate) {
    double mean = GeometricMean(1, rate);
    for (std::int64_t i = 1; i <= smaller; ++i) {
        const auto power = static_cast<double>(i);
        if (power * rate > kNothing) break;
        mean += GeometricMean(power, rate) - GeometricMean(static_cast<double>(larger) + power, rate);
    }
    return mean;
}

/// The rate at which the tilted mean is `u`, to some digits: any rate is right, and this one has no cancellation.
double RateFor(std::int64_t smaller, std::int64_t larger, double u) {
    constexpr int kSteps = 40;
    double low = std::log(1e-12);
    double high = std::log(kNothing);
    for (int step = 0; step < kSteps; ++step) {
        const double middle = (low + high) / 2;
        (TiltedMean(smaller, larger, std::exp(middle)) > u ? low : high) = middle;
    }
    return std::exp(high);
}

}  // namespace

UntiedRankSum::UntiedRankSum(std::int64_t firstCount, std::int64_t secondCount, std::int64_t u)
    : smaller_(std::min(firstCount, secondCount)), larger_(std::max(firstCount, secondCount)), u_(u) {
    constexpr long double kLogOfTolerance = 55;  // of 1e-24: the tail itself is smaller than the integrand's scale
    constexpr long double kFewestPoints = 8;
    rate_ = RateFor(smaller_, larger_, static_cast<double>(u));
    const auto rate = static_cast<long double>(rate_);
    logScale_ = rate * static_cast<long double>(u) - std::log(-std::expm1(-rate));
    long double logWays = logScale_;
    for (std::int64_t i = 1; i <= smaller_; ++i) {
        const auto power = static_cast<long double>(i);
        const auto above = static_cast<long double>(larger_ + i);
        const long double logFactor = std::log(std::expm1(-rate * above) / std::expm1(-rate * power));
        logScale_ += logFactor + std::log(power / above);
        logWays += logFactor;
    }
    const long double needed = (kLogOfTolerance + std::max(0.0L, -logScale_)) / rate;
    points_ = static_cast<std::int64_t>(std::max(kFewestPoints, std::ceil(needed)));
    areAllNeeded_ = logWays < kLogOfMany;
}

double UntiedRankSum::LowerTail() const {
    constexpr double kVanished = 1e-30;
    constexpr int kManyInARow = 16;
    const double atAxis = -std::expm1(-rate_);
    double sum = 1;
    int vanished = 0;
    for (std::int64_t point = 1; 2 * point <= points_ && (areAllNeeded_ || vanished < kManyInARow); ++point) {
        AskNowAndThen();
        const double angle = 2 * std::numbers::pi * static_cast<double>(point) / static_cast<double>(points_);
        Complex value = atAxis / OneLess(1, rate_, angle);
        for (std::int64_t i = 1; i <= smaller_; ++i) {
            const auto power = static_cast<double>(i);
            if (power * rate_ > kNothing) break;
            const double above = static_cast<double>(larger_) + power;
            value *= OneLess(above, rate_, angle) / OneLess(power, rate_, angle) *
                     (std::expm1(-power * rate_) / std::expm1(-above * rate_));
        }
        // Points above and below the real axis are alike; the one opposite is alone.
        const double times = 2 * point == points_ ? 1 : 2;
        const double turn = std::remainder(static_cast<double>(u_) * angle, 2 * std::numbers::pi);
        sum += times * (value * std::polar(1.0, -turn)).real();
        vanished = std::abs(value) < kVanished ? vanished + 1 : 0;
    }
    const long double logTail = logScale_ + std::log(static_cast<long double>(sum) / static_cast<long double>(points_));
    return static_cast<double>(std::exp(logTail));
}

double UntiedRankSum::Cost() const {
    constexpr double kForEachFactor = 60;
    constexpr double kUsualPoints = 120;
    const double factors = std::min(static_cast<double>(smaller_), kNothing / rate_ + 1);
    const double points = areAllNeeded_ ? static_cast<double>(points_) / 2 : kUsualPoints;
    return kForEachFactor * factors * points;
}

}  // namespace tarn
