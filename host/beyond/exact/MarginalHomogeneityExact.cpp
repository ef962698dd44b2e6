#include "host/beyond/exact/MarginalHomogeneityExact.h"
#include "host/beyond/StopQuestion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace tarn {

namespace {

constexpr double kWithin = 1e-9;  // of the measure
constexpr std::int64_t kMostTotal = std::int64_t{1} << 24;

/// The differences and their sum as multiples of the largest common measure.
struct Multiples {
    struct Counted {
        std::int64_t multiple;
        std::int64_t count;
    };
    std::vector<Counted> differences;
    std::int64_t total = 0;  ///< of the differences
    std::int64_t sum = 0;
    std::int64_t cases = 0;
};

/// By Euclid's algorithm, where a rest that is small beside the largest difference counts as none.
double CommonMeasure(const std::vector<CountedDifference>& differences) {
    double largest = 0;
    for (const CountedDifference& one : differences) largest = std::max(largest, one.difference);
    double measure = 0;
    for (const CountedDifference& one : differences) {
        double rest = one.count > 0 ? one.difference : 0;
        while (rest > kWithin * largest) {
            const double quotient = std::round(measure / rest);
            const double remainder = std::fabs(measure - quotient * rest);
            measure = rest;
            rest = remainder;
        }
    }
    return measure;
}

/// The whole multiple of the measure that a number is.
std::optional<std::int64_t> MultipleOf(double number, double measure) {
    const double multiple = std::round(number / measure);
    const bool isWhole = std::fabs(number / measure - multiple) <= kWithin * std::max(1.0, std::fabs(multiple));
    const bool isSmall = std::fabs(multiple) <= static_cast<double>(kMostTotal);
    return isWhole && isSmall ? std::optional(static_cast<std::int64_t>(multiple)) : std::nullopt;
}

std::optional<Multiples> MultiplesOf(const std::vector<CountedDifference>& differences, double sum) {
    Multiples result;
    const double measure = CommonMeasure(differences);
    if (measure <= 0) return sum == 0 ? std::optional(result) : std::nullopt;
    const std::optional<std::int64_t> multipleOfSum = MultipleOf(sum, measure);
    if (!multipleOfSum) return std::nullopt;
    result.sum = *multipleOfSum;
    for (const CountedDifference& one : differences) {
        const std::optional<std::int64_t> multiple = MultipleOf(one.difference, measure);
        if (!multiple) return std::nullopt;
        if (*multiple == 0 || one.count == 0) continue;
        if (one.count > (kMostTotal - result.total) / *multiple) return std::nullopt;
        result.differences.push_back({*multiple, one.count});
        result.total += *multiple * one.count;
        result.cases += one.count;
    }
    const bool isWithin = std::abs(result.sum) <= result.total;
    const bool isEvenApart = (result.total - result.sum) % 2 == 0;  // turning a sign moves the sum by an even number
    return isWithin && isEvenApart ? std::optional(result) : std::nullopt;
}

/// The probabilities of the sums of the positive differences, from 0 on.
std::vector<double> PositiveSums(const Multiples& multiples) {
    constexpr double kHalf = 0.5;
    std::vector<double> probabilities(static_cast<std::size_t>(multiples.total) + 1);
    probabilities[0] = 1;
    std::size_t largest = 0;
    for (const Multiples::Counted& one : multiples.differences) {
        const auto shift = static_cast<std::size_t>(one.multiple);
        for (std::int64_t i = 0; i < one.count; ++i) {
            AskNowAndThen();
            largest += shift;
            for (std::size_t sum = largest + 1; sum-- > shift;) {
                probabilities[sum] = kHalf * (probabilities[sum] + probabilities[sum - shift]);
            }
            for (std::size_t sum = 0; sum < shift; ++sum) probabilities[sum] *= kHalf;
        }
    }
    return probabilities;
}

}  // namespace

std::optional<ExactTails> MarginalHomogeneityExact(const std::vector<CountedDifference>& differences, double sum) {
    const std::optional<Multiples> multiples = MultiplesOf(differences, sum);
    if (!multiples) return std::nullopt;
    const std::vector<double> probabilities = PositiveSums(*multiples);
    ExactTails tails{0, 0, 0};
    for (std::size_t i = 0; i < probabilities.size(); ++i) {
        const std::int64_t drawn = 2 * static_cast<std::int64_t>(i) - multiples->total;
        if (drawn <= multiples->sum) tails.less += probabilities[i];
        if (drawn >= multiples->sum) tails.greater += probabilities[i];
        if (std::abs(drawn) >= std::abs(multiples->sum)) tails.twoSided += probabilities[i];
    }
    return ExactTails{std::min(1.0, tails.less), std::min(1.0, tails.greater), std::min(1.0, tails.twoSided)};
}

double MarginalHomogeneityExactSteps(const std::vector<CountedDifference>& differences, double sum) {
    constexpr double kShiftsOfStep = 20;  // about 2e9 additions a second, over half of the sums on average
    const std::optional<Multiples> multiples = MultiplesOf(differences, sum);
    if (!multiples) return std::numeric_limits<double>::infinity();
    return static_cast<double>(multiples->cases) * static_cast<double>(multiples->total + 1) / kShiftsOfStep;
}

}  // namespace tarn
