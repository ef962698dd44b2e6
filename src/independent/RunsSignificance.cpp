#include "independent/RunsSignificance.h"

#include <cmath>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKPower.h"
#include "support/WideNumber.h"

using QKMath::QKDistFun;
using QKMath::QKPower;

namespace {

/// The normal statistic of fewer cases has a continuity correction.
constexpr double kUncorrectedFrom = 50;

std::optional<double> Binomial(double n, double k) {
    if (n < 0 || k < 0 || k > n) return 0.0;
    constexpr int kNoValue = 2;
    double value = 0;
    const double logarithm =
        QKDistFun::zomrdnlgam(n + 1) - QKDistFun::zomrdnlgam(k + 1) - QKDistFun::zomrdnlgam(n - k + 1);
    if (QKPower::Exponent(logarithm, value) == kNoValue) return std::nullopt;
    return value;
}

/// The ways to cut the first group into `first` + 1 runs and the second one into `second` + 1.
std::optional<double> Cuts(double n1, double first, double n2, double second) {
    const std::optional<double> cuts1 = Binomial(n1 - 1, first);
    const std::optional<double> cuts2 = Binomial(n2 - 1, second);
    if (!cuts1 || !cuts2) return std::nullopt;
    return *cuts1 * *cuts2;
}

/// The arrangements with exactly that many runs.
std::optional<double> Arrangements(std::int64_t runs, double n1, double n2) {
    if (runs % 2 == 0) {
        const std::int64_t cuts = runs / 2 - 1;
        const auto cutsOfEach = static_cast<double>(cuts);
        const std::optional<double> ways = Cuts(n1, cutsOfEach, n2, cutsOfEach);
        if (!ways) return std::nullopt;
        return 2 * *ways;
    }
    const std::int64_t pairs = (runs - 1) / 2;
    const auto more = static_cast<double>(pairs);
    const auto fewer = static_cast<double>(pairs - 1);
    const std::optional<double> firstHasMore = Cuts(n1, more, n2, fewer);
    const std::optional<double> secondHasMore = Cuts(n1, fewer, n2, more);
    if (!firstHasMore || !secondHasMore) return std::nullopt;
    return *firstHasMore + *secondHasMore;
}

}  // namespace

std::optional<RunsStatistic> RunsNormalStatistic(std::int64_t runs, std::int64_t size1, std::int64_t size2,
                                                 const Arithmetic& arithmetic) {
    const auto n1 = static_cast<double>(size1);
    const auto n2 = static_cast<double>(size2);
    const double n = n1 + n2;
    const double t = 2 * n1 * n2;
    const double variance = (t - n) * t / (n * n * (n - 1));
    if (!(variance > 0)) return std::nullopt;
    const double standardError = std::sqrt(variance);
    // Or over a common denominator, in whole numbers.
    const double deviation = arithmetic.Carefully(
        [&] { return static_cast<double>(runs) - (t / n + 1); },
        [&] {
            const WideNumber total = WideNumber{size1} + size2;
            return static_cast<long double>((WideNumber{runs} - 1) * total - WideNumber{2} * size1 * size2) /
                   static_cast<long double>(total);
        });
    if (n >= kUncorrectedFrom) return RunsStatistic{standardError, deviation / standardError};
    if (std::fabs(deviation) < 0.5) return RunsStatistic{standardError, 0.0};
    // The 0.5 is added whatever the sign: a number of runs above the mean moves away from it. The test is that of few
    // runs, whose tail reaches up to half a run above the number.
    return RunsStatistic{standardError, (deviation + 0.5) / standardError};
}

std::optional<double> RunsExactSignificance(std::int64_t runs, std::int64_t size1, std::int64_t size2) {
    const auto n1 = static_cast<double>(size1);
    const auto n2 = static_cast<double>(size2);
    double sum = 0;
    for (std::int64_t count = 2; count <= runs; ++count) {
        const std::optional<double> arrangements = Arrangements(count, n1, n2);
        if (!arrangements) return std::nullopt;
        sum += *arrangements;
    }
    const std::optional<double> all = Binomial(n1 + n2, n1);
    if (!all) return std::nullopt;
    return sum / *all;
}
