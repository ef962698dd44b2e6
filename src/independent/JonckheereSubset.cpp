#include "independent/JonckheereSubset.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace {

/// The sixth power of a total up to here fits into 128 bits several times, and the third one into a long double.
constexpr double kExactUpTo = 1'500'000;

/// The formula over a common denominator, in integers or, beyond them, in long doubles.
template <typename Number>
double VarianceIn(const std::vector<double>& sizes, long double pairsTied, long double triplesTied) {
    Number n = 0;
    Number s3 = 0;
    Number s4 = 0;
    Number s5 = 0;
    for (const double size : sizes) {
        const auto m = static_cast<Number>(size);
        n += m;
        s3 += m * (m - 1) * (2 * m + 5);
        s4 += m * (m - 1);
        s5 += m * (m - 1) * (m - 2);
    }
    const auto a = static_cast<Number>(pairsTied);
    const auto b = static_cast<Number>(triplesTied);
    const Number triples = n * (n - 1) * (n - 2);
    const Number numerator =
        2 * (b - 2 * a) * s5 + triples * (n * (n - 1) * (2 * n + 5) - s3 - 2 * b - 5 * a) + 9 * (n - 2) * s4 * a;
    return static_cast<double>(static_cast<long double>(numerator) / static_cast<long double>(72 * triples));
}

}  // namespace

double JonckheereVariance(const std::vector<double>& sizes, long double pairsTied, long double triplesTied) {
    const auto n = static_cast<long double>(std::accumulate(sizes.begin(), sizes.end(), 0.0));
    // More pairs are tied than there are where the records don't go with the sizes: nothing bounds them then.
    if (pairsTied > n * (n - 1)) return VarianceIn<long double>(sizes, pairsTied, triplesTied);
    if (n <= kExactUpTo) return VarianceIn<WideNumber>(sizes, pairsTied, triplesTied);
    // In these two cases nothing can vary; rounding must not leave a remainder.
    const bool isAllTied = pairsTied == n * (n - 1);
    const bool isOneGroup = std::count_if(sizes.begin(), sizes.end(), [](double size) { return size > 0; }) < 2;
    if (isAllTied || isOneGroup) return 0;
    return std::max(VarianceIn<long double>(sizes, pairsTied, triplesTied), 0.0);
}

void JonckheereSubset::SetGroups(std::vector<double> groupSizes) {
    sizes = std::move(groupSizes);
    totalN = std::accumulate(sizes.begin(), sizes.end(), 0.0);
}

bool JonckheereSubset::HasEmptyGroup() const {
    return std::find(sizes.begin(), sizes.end(), 0.0) != sizes.end();
}

/// Of cases of different groups.
WideNumber JonckheereSubset::PairsOfCases() const {
    WideNumber pairs = 0;
    WideNumber before = 0;
    for (const double size : sizes) {
        const auto cases = static_cast<std::int64_t>(size);
        pairs += before * cases;
        before += cases;
    }
    return pairs;
}

void JonckheereSubset::Compute(const JonckheereCounts& counts, const Arithmetic& arithmetic) {
    j = arithmetic.Carefully([&] { return counts.j; }, [&] { return static_cast<long double>(counts.twiceJ) / 2; });
    double sumOfSquares = 0;
    for (const double size : sizes) sumOfSquares += size * size;
    mean = (totalN * totalN - sumOfSquares) / 4;
    double variance = 0;
    if (totalN >= 3) {
        variance = JonckheereVariance(sizes, counts.pairsTied, counts.triplesTied);
    } else if (sizes.size() > 1) {
        const double n = sizes[0] + sizes[1];
        variance = (n * n * n - n - counts.tieCorrectionSum) / 12 * (sizes[0] * sizes[1] / (n * (n - 1)));
    }
    standardError = std::sqrt(variance);
    const double above = arithmetic.Carefully(
        [&] { return j - mean; }, [&] { return static_cast<long double>(counts.twiceJ - PairsOfCases()) / 2; });
    z = standardError == 0 ? 0 : above / standardError;
}
