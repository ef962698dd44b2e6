#include "host/beyond/HodgesLehmann.h"

#include <cmath>
#include <numeric>
#include <vector>

#include "host/beyond/DifferenceMatrix.h"
#include "host/beyond/DistinctValues.h"
#include "host/beyond/IntervalScales.h"
#include "host/beyond/LimitRank.h"

namespace tarn {

namespace {

constexpr double kLargestExact = 50;
constexpr double kNoSign = 0.0;  // turns -0 into 0

/// The sum of t^3 - t over the numbers t of equal cases.
long double TieSum(const AscendingSample& sample) {
    const DistinctValues distinct(sample);
    long double sum = 0;
    for (std::size_t i = 0; distinct.Counts() != nullptr && i < distinct.Size(); ++i) {
        const long double t = distinct.CountAt(i);
        sum += (t - 1) * t * (t + 1);
    }
    return sum;
}

PairCount RankOfShift(const AscendingSample& first, const AscendingSample& second, double level) {
    if (first.size + second.size <= kLargestExact) {
        return ExactLimitRank(ArrangementsOfU(static_cast<int>(first.size), static_cast<int>(second.size)), level);
    }
    const long double n1 = first.size;
    const long double n2 = second.size;
    const long double n = n1 + n2;
    const long double ties = (TieSum(first) + TieSum(second)) / (n * (n - 1));
    return NormalLimitRank(n1 * n2 / 2, std::sqrt(n1 * n2 / 12 * (n + 1 - ties)), level);
}

PairCount RankOfPseudoMedian(const AscendingSample& sample, double level) {
    if (sample.size <= kLargestExact) {
        return ExactLimitRank(SigningsOfRankSum(static_cast<int>(sample.size)), level);
    }
    const long double n = sample.size;
    const long double variance = n * (n + 1) * (2 * n + 1) / 24 - TieSum(sample) / 48;
    return NormalLimitRank(n * (n + 1) / 4, std::sqrt(variance), level);
}

/// The middle of the elements, and those at `limitRank` from both ends; no limits where that is 0.
Estimate MiddleAndLimits(const DifferenceMatrix& matrix, PairCount limitRank) {
    const PairCount count = matrix.Count();
    std::vector<PairCount> ranks{(count + 1) / 2, count / 2 + 1};
    if (limitRank > 0) ranks.insert(ranks.end(), {limitRank, count + 1 - limitRank});
    const std::vector<double> elements = matrix.Select(ranks);
    Estimate estimate;
    estimate.value = std::midpoint(elements[0], elements[1]) + kNoSign;
    if (limitRank > 0) {
        estimate.lower = elements[2] + kNoSign;
        estimate.upper = elements[3] + kNoSign;
    }
    return estimate;
}

/// Walks of four abreast, a listing and the preparation.
double CostOf(double steps) {
    constexpr double kNanosecondsOfStep = 60;
    constexpr double kNanosecondsOfFirstGuess = 1.2e6;
    return kNanosecondsOfFirstGuess + kNanosecondsOfStep * steps;
}

}  // namespace

Estimate ShiftOfSamples(const AscendingSample& first, const AscendingSample& second, double level) {
    if (!(first.size > 0 && second.size > 0)) return {};
    return MiddleAndLimits(DifferenceMatrix::OfSamples(first, second), RankOfShift(first, second, level));
}

Estimate PseudoMedian(const AscendingSample& sample, double level) {
    if (!(sample.size > 0)) return {};
    return MiddleAndLimits(DifferenceMatrix::OfWalshAverages(sample), RankOfPseudoMedian(sample, level));
}

double ShiftCost(double firstValues, double secondValues) {
    return CostOf(firstValues + secondValues);
}

double PseudoMedianCost(double values) {
    return CostOf(2 * values);
}

}  // namespace tarn
