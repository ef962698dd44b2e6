#include "host/beyond/exact/BinomialExact.h"

#include <algorithm>
#include <boost/math/distributions/binomial.hpp>
#include <cmath>
#include <numbers>

#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

using Binomial = boost::math::binomial_distribution<double, QuietPolicy>;

/// So many successes and failures are expected that the saddlepoint approximation has a relative error below 1e-9. The
/// incomplete beta function would have lost more digits.
constexpr double kMany = 0x1p32;

/// The binomial distribution where both outcomes are expected many times: Lugannani and Rice's formula with Daniels's
/// second continuity correction (Daniels, 1987, International Statistical Review 55, 37-48).
class Saddlepoint {
 public:
    Saddlepoint(double trials, double probability)
        : trials_(trials),
          probability_(probability),
          mean_(trials_ * probability_),
          otherMean_(trials_ * (1 - probability_)) {}

    double Exactly(double count) const {
        const Place place(*this, count);
        const long double spread = 2 * std::numbers::pi_v<long double> * place.variance;
        return static_cast<double>(std::exp(-place.deviance) / std::sqrt(spread));
    }

    double AtLeast(double count) const { return UpperTail(count - 0.5L, 1); }
    double AtMost(double count) const { return UpperTail(count + 0.5L, -1); }

 private:
    struct Place {
        long double tilt = 0;  ///< the logarithm of odds at which this count is expected, less that of the true odds
        long double deviance = 0;  ///< trials times the information lost by the true probability
        long double variance = 0;  ///< at those odds

        Place(const Saddlepoint& of, long double count) {
            const long double off = (count - of.mean_) / of.mean_;
            const long double otherOff = (of.mean_ - count) / of.otherMean_;
            tilt = std::log1p(off) - std::log1p(otherOff);
            deviance = of.mean_ * Loss(off) + of.otherMean_ * Loss(otherOff);
            variance = count * (of.trials_ - count) / of.trials_;
        }

        /// (1 + off) * log(1 + off) - off
        static long double Loss(long double off) {
            constexpr long double kSmall = 0.1L;
            constexpr int kTerms = 22;
            if (std::fabs(off) > kSmall) return off <= -1 ? 1 : (1 + off) * std::log1p(off) - off;
            long double sum = 0;
            for (int term = kTerms; term >= 2; --term) {
                const long double divisor = static_cast<long double>(term) * (term - 1);
                sum = 1 / divisor - off * sum;
            }
            return off * off * sum;
        }
    };

    /// The chance to be above `edge`, half-way between two counts, or below it where `direction` is -1.
    double UpperTail(long double edge, int direction) const {
        constexpr long double kNearMean = 1e-6L;
        if (edge <= 0 || edge >= trials_) return (edge <= 0) == (direction > 0) ? 1 : 0;
        const Place place(*this, edge);
        const long double side = edge < mean_ ? -1 : 1;
        const long double root = side * std::sqrt(2 * place.deviance);
        const long double slope = 2 * std::sinh(place.tilt / 2) * std::sqrt(place.variance);
        const long double skewness =
            (1 - 2 * probability_) / std::sqrt(mean_ * (1 - static_cast<long double>(probability_)));
        const long double correction = std::fabs(root) < kNearMean ? -skewness / 6 : 1 / slope - 1 / root;
        const long double density = std::exp(-place.deviance) / std::sqrt(2 * std::numbers::pi_v<long double>);
        const long double tail = std::erfc(direction * root / std::numbers::sqrt2_v<long double>) / 2;
        return static_cast<double>(std::clamp(tail + direction * density * correction, 0.0L, 1.0L));
    }

    long double trials_;
    long double probability_;
    long double mean_;
    long double otherMean_;
};

/// The successes in so many trials.
class Successes {
 public:
    Successes(std::int64_t trials, double probability)
        : trials_(trials),
          distribution_(static_cast<double>(trials), probability),
          saddlepoint_(static_cast<double>(trials), probability),
          areMany_(static_cast<double>(trials) * std::min(probability, 1 - probability) > kMany) {}

    double AtMost(std::int64_t count) const {
        if (count < 0) return 0;
        if (count >= trials_) return 1;
        const auto number = static_cast<double>(count);
        return areMany_ ? saddlepoint_.AtMost(number) : boost::math::cdf(distribution_, number);
    }

    double AtLeast(std::int64_t count) const {
        if (count > trials_) return 0;
        if (count <= 0) return 1;
        const auto number = static_cast<double>(count);
        if (areMany_) return saddlepoint_.AtLeast(number);
        return boost::math::cdf(boost::math::complement(distribution_, number - 1));
    }

    double Exactly(std::int64_t count) const {
        const auto number = static_cast<double>(count);
        const bool isInside = count > 0 && count < trials_;
        return areMany_ ? (isInside ? saddlepoint_.Exactly(number) : 0) : boost::math::pdf(distribution_, number);
    }

    /// The first count from `start` that is at most as probable as `limit`, where probabilities fall from `start` on;
    /// one more than the trials if there is none.
    std::int64_t FirstUnlikely(std::int64_t start, double limit) const {
        std::int64_t likely = start - 1;
        std::int64_t unlikely = trials_ + 1;
        while (unlikely - likely > 1) {
            const std::int64_t middle = likely + (unlikely - likely) / 2;
            (Exactly(middle) <= limit ? unlikely : likely) = middle;
        }
        return unlikely;
    }

    /// The last count up to `end` that is at most as probable as `limit`, where probabilities rise up to `end`; -1 if
    /// there is none.
    std::int64_t LastUnlikely(std::int64_t end, double limit) const {
        std::int64_t unlikely = -1;
        std::int64_t likely = end + 1;
        while (likely - unlikely > 1) {
            const std::int64_t middle = unlikely + (likely - unlikely) / 2;
            (Exactly(middle) <= limit ? unlikely : likely) = middle;
        }
        return unlikely;
    }

 private:
    std::int64_t trials_;
    Binomial distribution_;
    Saddlepoint saddlepoint_;
    bool areMany_;
};

double TwoSided(const Successes& successes, std::int64_t count, double mean) {
    constexpr double kTolerance = 1e-7;
    const auto observed = static_cast<double>(count);
    const double limit = successes.Exactly(count) * (1 + kTolerance);
    if (observed == mean) return 1;
    if (observed < mean) {
        const std::int64_t other = successes.FirstUnlikely(static_cast<std::int64_t>(std::ceil(mean)), limit);
        return std::min(1.0, successes.AtMost(count) + successes.AtLeast(other));
    }
    const std::int64_t other = successes.LastUnlikely(static_cast<std::int64_t>(std::floor(mean)), limit);
    return std::min(1.0, successes.AtLeast(count) + successes.AtMost(other));
}

}  // namespace

ExactTails SignExact(std::int64_t positive, std::int64_t negative) {
    const std::int64_t trials = positive + negative;
    if (trials == 0) return {};
    const Successes successes(trials, 0.5);
    // Both tails as that of the smaller count, so that equal counts give equal numbers.
    const double small = successes.AtMost(std::min(positive, negative));
    const double large = successes.AtMost(std::max(positive, negative));
    const double twoSided = positive == negative ? 1 : std::min(1.0, 2 * small);
    if (positive <= negative) return {small, large, twoSided};
    return {large, small, twoSided};
}

ExactTails McNemarExact(std::int64_t firstChange, std::int64_t secondChange) {
    return SignExact(firstChange, secondChange);
}

ExactTails BinomialExact(std::int64_t count, std::int64_t trials, double probability) {
    const bool isCertain = probability <= 0 || probability >= 1;
    if (trials == 0) return {};
    if (isCertain) {
        const std::int64_t only = probability <= 0 ? 0 : trials;
        return {count >= only ? 1.0 : 0.0, count <= only ? 1.0 : 0.0, count == only ? 1.0 : 0.0};
    }
    const Successes successes(trials, probability);
    const double mean = static_cast<double>(trials) * probability;
    return {successes.AtMost(count), successes.AtLeast(count), TwoSided(successes, count, mean)};
}

double BinomialExactCost() {
    constexpr double kAdditions = 1e5;
    return kAdditions;
}

}  // namespace tarn
