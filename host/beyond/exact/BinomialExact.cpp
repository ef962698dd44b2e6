#include "host/beyond/exact/BinomialExact.h"

#include <algorithm>
#include <boost/math/distributions/binomial.hpp>
#include <cmath>

namespace tarn {

namespace {

using boost::math::policies::discrete_quantile;
using boost::math::policies::domain_error;
using boost::math::policies::evaluation_error;
using boost::math::policies::ignore_error;
using boost::math::policies::overflow_error;
using Quiet = boost::math::policies::policy<domain_error<ignore_error>, overflow_error<ignore_error>,
                                            evaluation_error<ignore_error>>;
using Binomial = boost::math::binomial_distribution<double, Quiet>;

/// The successes in so many trials.
class Successes {
 public:
    Successes(std::int64_t trials, double probability)
        : trials_(trials), distribution_(static_cast<double>(trials), probability) {}

    double AtMost(std::int64_t count) const {
        if (count < 0) return 0;
        return count >= trials_ ? 1 : boost::math::cdf(distribution_, static_cast<double>(count));
    }

    double AtLeast(std::int64_t count) const {
        if (count > trials_) return 0;
        if (count <= 0) return 1;
        return boost::math::cdf(boost::math::complement(distribution_, static_cast<double>(count - 1)));
    }

    double Exactly(std::int64_t count) const { return boost::math::pdf(distribution_, static_cast<double>(count)); }

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
