#include "independent/MannWhitneyExact.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "independent/TextbookForm.h"

namespace {

/// How many arrangements give each value of the statistic, from 0 to n1 n2.
std::vector<double> Frequencies(std::size_t smaller, std::size_t larger) {
    const std::size_t size = smaller * larger + 1;
    if (smaller == 1) return std::vector<double>(size, 1.0);
    std::vector<double> frequencies(size);
    std::vector<double> work(size);
    std::fill_n(frequencies.begin(), larger + 1, 1.0);
    std::size_t last = larger;
    for (std::size_t i = 1; i < smaller; ++i) {
        work[i] = 0;
        last += larger;
        for (std::size_t j = 0; j <= last / 2; ++j) {
            const double sum = frequencies[j] + work[j];
            frequencies[j] = sum;
            work[i + 1 + j] = sum - frequencies[last - j];
            frequencies[last - j] = sum;
        }
    }
    return frequencies;
}

}  // namespace

double MannWhitneyExactSignificance(std::int32_t n1, std::int32_t n2, double u, const Arithmetic& arithmetic) {
    if (std::min(n1, n2) < 1 || std::isnan(u)) return std::nan("");
    const std::vector<double> frequencies =
        Frequencies(static_cast<std::size_t>(std::min(n1, n2)), static_cast<std::size_t>(std::max(n1, n2)));
    const auto begin = frequencies.begin();
    const auto end = frequencies.end();
    const auto size = static_cast<double>(frequencies.size());
    const double total = std::accumulate(begin, end, 0.0);
    // Between two values the lower tail takes the one below and the upper tail the one above.
    const auto significance = [&](bool isLower) {
        const double bound = std::clamp(isLower ? std::trunc(u) + 1 : std::ceil(u), 0.0, size);
        const auto split = begin + static_cast<std::ptrdiff_t>(bound);
        const double tail = isLower ? std::accumulate(begin, split, 0.0) : std::accumulate(split, end, 0.0);
        return std::min(tail / total * 2, 1.0);
    };
    // The middle is that of the number of values, n1 n2 + 1, and rounded up: a statistic just above n1 n2 / 2 still
    // takes the lower tail, and its significance is then cut at 1.
    const bool isLower = u <= std::ceil(size / 2);
    const bool isAboveMiddle = u > (size - 1) / 2;
    const double asDefined = significance(isLower);
    return isLower && isAboveMiddle ? FormOf(asDefined, significance(false), arithmetic) : asDefined;
}
