#include "onesample/ProportionIntervals.h"

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

}  // namespace

ProportionInterval ClopperPearsonInterval(const ProportionCounts& counts, double confidenceLevel) {
    const double x = static_cast<double>(counts.first);
    const double y = static_cast<double>(counts.second);
    const double tail = TailOf(confidenceLevel);
    ProportionInterval limits{0, 1};
    if (!CountsAsZero(counts.Share())) {
        limits.lower = 1 / ((y + 1) / (x * QKDistFun::IdfF(tail, 2 * x, 2 * (y + 1))) + 1);
    }
    if (!CountsAsOne(counts.Share())) {
        limits.upper = 1 / (y / ((x + 1) * QKDistFun::IdfF(1 - tail, 2 * (x + 1), 2 * y)) + 1);
    }
    return limits;
}

ProportionInterval JeffreysInterval(const ProportionCounts& counts, double confidenceLevel) {
    const double a = static_cast<double>(counts.first) + 0.5;
    const double b = static_cast<double>(counts.second) + 0.5;
    const double tail = TailOf(confidenceLevel);
    ProportionInterval limits{0, 1};
    if (!CountsAsZero(counts.Share())) limits.lower = QKDistFun::IdfBeta(tail, a, b);
    if (!CountsAsOne(counts.Share())) limits.upper = QKDistFun::IdfBeta(1 - tail, a, b);
    return limits;
}

std::optional<ProportionInterval> ProfileLikelihoodInterval(const ProportionCounts& counts, double confidenceLevel) {
    const double p = counts.Share();
    const double quantile = QKDistFun::IdfChi(confidenceLevel, kDegreesOfFreedom);
    if (p > 0 && p < 1) {
        const ProportionInterval jeffreys = JeffreysInterval(counts, confidenceLevel);
        const double drop = quantile * 0.5;
        return ProportionInterval{SolveProfileLimit(counts, drop, p > jeffreys.lower ? jeffreys.lower : p * 0.5),
                                  SolveProfileLimit(counts, drop, jeffreys.upper > p ? jeffreys.upper : (p + 1) * 0.5)};
    }
    // Where a class is empty the limit has a closed form.
    double limit = 0;
    const int result = QKPower::Exponent(-quantile / (2 * counts.Total()), limit);
    if (result != 0 && result != 1) return std::nullopt;
    ProportionInterval limits;
    if (CountsAsZero(p)) limits = {0, 1 - limit};
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
