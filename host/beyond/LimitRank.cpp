#include "host/beyond/LimitRank.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/beyond/IntervalScales.h"

namespace tarn {

std::vector<double> ArrangementsOfU(int n1, int n2) {
    const auto most = static_cast<std::size_t>(n1) * static_cast<std::size_t>(n2);
    std::vector<double> counts(most + 1, 0.0);
    counts[0] = 1;
    // The generating function is the product of (1 - q^(n2 + i)) / (1 - q^i) for i = 1 .. n1.
    for (int i = 1; i <= n1; ++i) {
        const auto factor = static_cast<std::size_t>(n2) + static_cast<std::size_t>(i);
        const auto divisor = static_cast<std::size_t>(i);
        for (std::size_t u = most; u >= factor; --u) counts[u] -= counts[u - factor];
        for (std::size_t u = divisor; u <= most; ++u) counts[u] += counts[u - divisor];
    }
    return counts;
}

std::vector<double> SigningsOfRankSum(int n) {
    const auto most = static_cast<std::size_t>(n) * static_cast<std::size_t>(n + 1) / 2;
    std::vector<double> counts(most + 1, 0.0);
    counts[0] = 1;
    for (int rank = 1; rank <= n; ++rank) {
        const auto step = static_cast<std::size_t>(rank);
        for (std::size_t sum = most; sum >= step; --sum) counts[sum] += counts[sum - step];
    }
    return counts;
}

PairCount ExactLimitRank(const std::vector<double>& counts, double level) {
    if (!IsLevel(level)) return 0;
    // A tail that is met exactly may come out a rounding off.
    constexpr double kRounding = 1e-12;
    const double all = std::accumulate(counts.begin(), counts.end(), 0.0);
    const double allowed = all * (1 - level) / 2 * (1 + kRounding);
    double below = 0;
    std::size_t rank = 0;
    while (rank < counts.size() && below + counts[rank] <= allowed) below += counts[rank++];
    return rank;
}

PairCount NormalLimitRank(long double mean, long double deviation, double level) {
    if (!IsLevel(level)) return 0;
    const long double rank = std::floor(mean - static_cast<long double>(NormalBound(level)) * deviation);
    return rank < 1 ? 0 : static_cast<PairCount>(rank);
}

}  // namespace tarn
