#include "onesample/ProportionIntervals.h"

#include <algorithm>
#include <cmath>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKPower.h"

using QKMath::QKDistFun;
using QKMath::QKPower;

namespace {

constexpr double kDegreesOfFreedom = 1;

// Of the solver.
constexpr int kMaxIterations = 50;
constexpr int kMaxFailures = 20;
constexpr double kTolerance = 1e-7;
constexpr double kScaleFloor = 1e-11;
constexpr long double kSettled = 1e-17L;

bool CountsAsZero(double share) {
    return std::fabs(share) < QKPower::gMachineEpsilon;
}
bool CountsAsOne(double share) {
    return std::fabs(share - 1) < QKPower::gMachineEpsilon;
}
double TailOf(double confidenceLevel) {
    return (1 - confidenceLevel) * 0.5;
}

/// Log likelihood of a probability; 0 outside the open scale.
double LogLikelihood(double x, double y, double t) {
    return t > 0 && t < 1 ? y * std::log(1 - t) + x * std::log(t) : 0.0;
}

/// A quantile of the beta distribution, `usual` as it comes out by `QKDistFun`. Where one shape is beyond 1e9 and the
/// other one small, they take it as that at 1e9. There -log(1 - X) is a gamma variate but for (sinh(y / 2) / (y /
/// 2))^(a - 1), the exponential of (a - 1) y^2 / 24, which is taken with its slope at the mean. Source: Wise (1950),
/// Biometrika 37, 208-218.
long double BetaQuantile(double probability, double a, double b, double usual) {
    constexpr double kLargeShape = 1e9;
    constexpr double kSmallShape = 3e5;
    if (std::max(a, b) <= kLargeShape || std::min(a, b) >= kSmallShape) return usual;
    if (a > b) return 1 - BetaQuantile(1 - probability, b, a, 1 - usual);
    const long double rate = b + (static_cast<long double>(a) - 1) / 2;
    const long double slope = (a - 1) * (a / rate) / 12;
    return -std::expm1(-static_cast<long double>(QKDistFun::IdfChi(probability, 2 * a)) / (2 * (rate - slope)));
}

}  // namespace

ProportionInterval ClopperPearsonInterval(const ProportionCounts& counts, double confidenceLevel,
                                          const Arithmetic& arithmetic) {
    const double x = static_cast<double>(counts.first);
    const double y = static_cast<double>(counts.second);
    const double tail = TailOf(confidenceLevel);
    ProportionInterval limits{0, 1};
    if (!CountsAsZero(counts.Share())) {
        const double byF = 1 / ((y + 1) / (x * QKDistFun::IdfF(tail, 2 * x, 2 * (y + 1))) + 1);
        limits.lower = arithmetic.Carefully([=] { return byF; }, [=] { return BetaQuantile(tail, x, y + 1, byF); });
    }
    if (!CountsAsOne(counts.Share())) {
        const double byF = 1 / (y / ((x + 1) * QKDistFun::IdfF(1 - tail, 2 * (x + 1), 2 * y)) + 1);
        limits.upper = arithmetic.Carefully([=] { return byF; }, [=] { return BetaQuantile(1 - tail, x + 1, y, byF); });
    }
    return limits;
}

ProportionInterval JeffreysInterval(const ProportionCounts& counts, double confidenceLevel,
                                    const Arithmetic& arithmetic) {
    const double a = static_cast<double>(counts.first) + 0.5;
    const double b = static_cast<double>(counts.second) + 0.5;
    const double tail = TailOf(confidenceLevel);
    ProportionInterval limits{0, 1};
    const auto quantile = [&](double probability) {
        const double usual = QKDistFun::IdfBeta(probability, a, b);
        return arithmetic.Carefully([=] { return usual; }, [=] { return BetaQuantile(probability, a, b, usual); });
    };
    if (!CountsAsZero(counts.Share())) limits.lower = quantile(tail);
    if (!CountsAsOne(counts.Share())) limits.upper = quantile(1 - tail);
    return limits;
}

namespace {

/// The iteration stops within an absolute bound, which is coarse beside an interval that is narrow or near an end of
/// the scale: there its limit is another one and not only short of digits.
double ProfileLimit(const ProportionCounts& counts, double drop, double start, int side, const Arithmetic& arithmetic) {
    constexpr double kDigits = 1e-6;
    const double defined = SolveProfileLimit(counts, drop, start);
    return arithmetic.Carefully([&] { return defined; },
                                [&] {
                                    const long double precise = PreciseProfileLimit(counts, drop, side);
                                    const bool differs = !(std::fabs(defined - precise) <= kDigits * precise);
                                    static_cast<void>(arithmetic.TakesTextbook(differs));
                                    return precise;
                                });
}

}  // namespace

std::optional<ProportionInterval> ProfileLikelihoodInterval(const ProportionCounts& counts, double confidenceLevel,
                                                            const Arithmetic& arithmetic) {
    const double p = counts.Share();
    const double quantile = QKDistFun::IdfChi(confidenceLevel, kDegreesOfFreedom);
    if (p > 0 && p < 1) {
        const ProportionInterval jeffreys = JeffreysInterval(counts, confidenceLevel, Arithmetic::AsDefined());
        const double drop = quantile * 0.5;
        const double below = p > jeffreys.lower ? jeffreys.lower : p * 0.5;
        const double above = jeffreys.upper > p ? jeffreys.upper : (p + 1) * 0.5;
        return ProportionInterval{ProfileLimit(counts, drop, below, -1, arithmetic),
                                  ProfileLimit(counts, drop, above, 1, arithmetic)};
    }
    // Where a class is empty the limit has a closed form.
    double limit = 0;
    const double exponent = -quantile / (2 * counts.Total());
    const int result = QKPower::Exponent(exponent, limit);
    if (result != 0 && result != 1) return std::nullopt;
    ProportionInterval limits;
    if (CountsAsZero(p)) {
        limits = {0, arithmetic.Carefully([&] { return 1 - limit; }, [&] { return -std::expm1(exponent); })};
    }
    if (CountsAsOne(p)) limits = {limit, 1};
    return limits;
}

double SolveProfileLimit(const ProportionCounts& counts, double drop, double start) {
    const double x = static_cast<double>(counts.first);
    const double y = static_cast<double>(counts.second);
    const double n = counts.Total();
    const double greatest = LogLikelihood(x, y, counts.Share());
    const auto excess = [&](double t) { return LogLikelihood(x, y, t) - greatest + drop; };

    double t = start;
    double residual = excess(t);
    double step = 1.0;
    int failures = 0;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        const double previous = t;
        t -= step * t * (1 - t) * residual / (x - n * t);
        bool better = false;
        if (t > 0 && t < 1) {
            const double next = excess(t);
            better = std::fabs(residual) > std::fabs(next);
            residual = next;
        }
        if (!better) {
            step *= 0.5;
            if (++failures == kMaxFailures) return t;
        }
        const double moved = std::fabs(t - previous);
        if (moved < kTolerance || moved / (std::fabs(previous) + kScaleFloor) < kTolerance ||
            std::fabs(residual) < kTolerance) {
            break;
        }
    }
    return t;
}

namespace {

/// log(1 + u) - u.
long double LogLessLinear(long double u) {
    constexpr long double kSmall = 0.01L;
    if (std::fabs(u) > kSmall) return std::log1p(u) - u;
    constexpr int kTerms = 12;
    long double sum = 0;
    for (int k = kTerms; k >= 2; --k) sum = sum * -u + 1 / static_cast<long double>(k);
    return -u * u * sum;
}

}  // namespace

/// Newton's steps on how far the log likelihood is above the level of the limit, as a function of the distance from the
/// share. The parts of it that grow with the distance itself cancel and are left out. It is concave, so that the steps
/// come from outside and stay there.
long double PreciseProfileLimit(const ProportionCounts& counts, double drop, int side) {
    const auto x = static_cast<long double>(counts.first);
    const auto y = static_cast<long double>(counts.second);
    const long double n = x + y;
    const long double p = x / n;
    const long double q = y / n;
    const auto excess = [&](long double distance) {
        return x * LogLessLinear(distance / p) + y * LogLessLinear(-distance / q) + drop;
    };
    long double inside = 0;
    long double outside = side < 0 ? -p : q;
    long double distance = side * std::sqrt(2 * drop * p * q / n);
    if (std::fabs(distance) >= std::fabs(outside)) distance = outside / 2;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        const long double height = excess(distance);
        (height > 0 ? inside : outside) = distance;
        const long double step = height * (p + distance) * (q - distance) / (n * distance);
        const long double next = distance + step;
        if (std::fabs(step) <= std::fabs(distance) * kSettled) break;
        const bool isWithin = std::fabs(next) > std::fabs(inside) && std::fabs(next) < std::fabs(outside);
        distance = isWithin ? next : (inside + outside) / 2;
    }
    return p + distance;
}
