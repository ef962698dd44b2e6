#include "host/beyond/KolmogorovDistribution.h"

#include <algorithm>
#include <boost/math/distributions/binomial.hpp>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

using Binomial = boost::math::binomial_distribution<double, QuietPolicy>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr long double kPi = std::numbers::pi_v<long double>;

/// From here on the series of the upper tail ends sooner than that of the lower one.
constexpr long double kLimitTurn = 0.8L;

/// Terms below this share of the sum no longer change it.
constexpr long double kLastTerm = 1e-22L;

/// Below this the lower tail of the limit is 0 in any digit.
constexpr long double kSmallestZ = 0.02L;

// ---- Durbin's matrix ----

constexpr double kRescaleAbove = 1e140;

/// A square matrix times a power of ten, so that high powers don't overflow.
struct ScaledMatrix {
    std::size_t side;
    std::vector<double> cells;
    int exponent = 0;

    explicit ScaledMatrix(std::size_t order) : side(order), cells(order * order) {}
    double& At(std::size_t i, std::size_t j) { return cells[i * side + j]; }
    double At(std::size_t i, std::size_t j) const { return cells[i * side + j]; }

    void Rescale() {
        constexpr int kDigits = 140;
        if (At(side / 2, side / 2) <= kRescaleAbove) return;
        for (double& cell : cells) cell /= kRescaleAbove;
        exponent += kDigits;
    }
};

ScaledMatrix Product(const ScaledMatrix& left, const ScaledMatrix& right) {
    ScaledMatrix product(left.side);
    for (std::size_t i = 0; i < left.side; ++i) {
        for (std::size_t k = 0; k < left.side; ++k) {
            const double factor = left.At(i, k);
            if (factor == 0) continue;
            for (std::size_t j = 0; j < left.side; ++j) product.At(i, j) += factor * right.At(k, j);
        }
    }
    product.exponent = left.exponent + right.exponent;
    product.Rescale();
    return product;
}

ScaledMatrix Power(const ScaledMatrix& base, std::size_t power) {
    if (power == 1) return base;
    const ScaledMatrix half = Power(base, power / 2);
    ScaledMatrix whole = Product(half, half);
    return power % 2 == 0 ? whole : Product(base, whole);
}

/// The matrix H of Marsaglia, Tsang and Wang for n d = order - `beyond`, with 2 order - 1 rows.
ScaledMatrix DurbinMatrix(std::size_t order, double beyond) {
    const std::size_t side = 2 * order - 1;
    ScaledMatrix matrix(side);
    for (std::size_t i = 0; i < side; ++i) {
        for (std::size_t j = 0; j < std::min(i + 2, side); ++j) matrix.At(i, j) = 1;
    }
    for (std::size_t i = 0; i < side; ++i) {
        matrix.At(i, 0) -= std::pow(beyond, static_cast<double>(i + 1));
        matrix.At(side - 1, i) -= std::pow(beyond, static_cast<double>(side - i));
    }
    if (2 * beyond > 1) matrix.At(side - 1, 0) += std::pow(2 * beyond - 1, static_cast<double>(side));
    for (std::size_t i = 0; i < side; ++i) {
        double factorial = 1;
        for (std::size_t j = i + 1; j-- > 0;) {
            matrix.At(i, j) /= factorial *= static_cast<double>(i + 1 - j);
        }
    }
    return matrix;
}

/// P(D < d) for a sample of `size`.
double LowerTailByMatrix(std::size_t size, double difference) {
    const double scaled = static_cast<double>(size) * difference;
    const auto order = static_cast<std::size_t>(scaled) + 1;
    const ScaledMatrix power = Power(DurbinMatrix(order, static_cast<double>(order) - scaled), size);
    double tail = power.At(order - 1, order - 1);
    int exponent = power.exponent;
    constexpr double kTooSmall = 1e-140;
    for (std::size_t i = 1; i <= size; ++i) {
        tail *= static_cast<double>(i) / static_cast<double>(size);
        if (tail < kTooSmall) {
            tail /= kTooSmall;
            exponent -= 140;
        }
    }
    return tail * std::pow(10.0, exponent);
}

// ---- The other forms ----

/// The one-sided distribution: P(D+ >= d). A term is the probability that the sample's function first meets the line
/// at j cases, written with a binomial probability, which keeps its digits.
double OneSidedUpperTail(double size, double difference) {
    constexpr double kMostTerms = 1e6;
    constexpr double kSix = 6;
    constexpr double kEighteen = 18;
    if (size > kMostTerms) {
        // Maag and Dicaire 1971, Biometrika 58, 653-656
        const double root = kSix * size * difference + 1;
        return std::exp(-root * root / (kEighteen * size));
    }
    double sum = 0;
    const double last = std::floor(size * (1 - difference));
    for (double j = 0; j <= last; ++j) {
        const double place = difference + j / size;
        if (place >= 1) break;
        sum += boost::math::pdf(Binomial(size, place), j) / place;
    }
    return difference * sum;
}

/// The sums of Pelz and Good: of e^(-pi^2 h^2 / (2 z^2)) times the powers 0, 2, 4 and 6 of pi h, h = 1/2, 3/2, ...; and
/// the same of h = 1, 2, ...
struct PelzGoodSums {
    long double half[4] = {};
    long double whole[4] = {};
};

PelzGoodSums SumsAt(long double z) {
    PelzGoodSums sums;
    const auto add = [z](long double h, long double(&to)[4]) {
        const long double square = kPi * kPi * h * h;
        long double term = std::exp(-square / (2 * z * z));
        const bool isLast = term * square * square * square < kLastTerm;
        for (long double& sum : to) {
            sum += term;
            term *= square;
        }
        return isLast;
    };
    for (long double h = 0.5L; !add(h, sums.half);) ++h;
    for (long double h = 1; !add(h, sums.whole);) ++h;
    return sums;
}

/// P(D < d) in powers of one over the root of the size; the sums run over both signs of h.
double LowerTailByPelzGood(double size, double difference) {
    const long double root = std::sqrt(static_cast<long double>(size));
    const long double z = root * difference;
    if (z < kSmallestZ) return 0;
    const PelzGoodSums sums = SumsAt(z);
    const long double scale = 2 * std::sqrt(kPi / 2);
    const long double z2 = z * z;
    const long double z4 = z2 * z2;
    const long double z6 = z4 * z2;
    const long double z8 = z4 * z4;
    const auto& half = sums.half;
    const auto& whole = sums.whole;
    const long double k0 = scale * half[0] / z;
    const long double k1 = scale * (half[1] - z2 * half[0]) / (6 * z4);
    const long double k2 =
        scale * ((6 * z6 + 2 * z4) * half[0] + (2 * z4 - 5 * z2) * half[1] + (1 - 2 * z2) * half[2]) / (72 * z6 * z) -
        scale * whole[1] / (36 * z2 * z);
    const long double k3 = scale *
                               ((5 - 30 * z2) * half[3] + (212 * z4 - 60 * z2) * half[2] +
                                (135 * z4 - 96 * z6) * half[1] - (30 * z6 + 90 * z8) * half[0]) /
                               (6480 * z8 * z2) +
                           scale * (3 * z2 * whole[1] - whole[2]) / (216 * z6);
    return static_cast<double>(k0 + (k1 + (k2 + k3 / root) / root) / root);
}

bool IsForMatrix(double size, double difference) {
    constexpr double kSmall = 140;
    constexpr double kLargest = 100000;
    constexpr double kSteepest = 1.4;
    return size <= kSmall || (size <= kLargest && size * std::pow(difference, 1.5) <= kSteepest);
}

}  // namespace

double KolmogorovLimitUpperTail(long double z) {
    if (std::isnan(z)) return kNaN;
    if (z < kSmallestZ) return 1;
    long double sum = 0;
    if (z < kLimitTurn) {
        for (long double odd = 1;; odd += 2) {
            const long double term = std::exp(-odd * odd * kPi * kPi / (8 * z * z));
            sum += term;
            if (term < kLastTerm) break;
        }
        return static_cast<double>(1 - std::sqrt(2 * kPi) / z * sum);
    }
    long double sign = 2;
    for (long double k = 1;; ++k, sign = -sign) {
        const long double term = std::exp(-2 * k * k * z * z);
        sum += sign * term;
        if (term <= kLastTerm * sum) break;
    }
    return static_cast<double>(sum);
}

double KolmogorovUpperTail(double size, double difference) {
    if (!(size >= 1) || std::isnan(difference)) return kNaN;
    if (difference >= 1) return 0;
    if (2 * size * difference <= 1) return 1;
    constexpr double kSmallSize = 140;
    constexpr double kTailOfSmall = 4;
    constexpr double kTailOfLarge = 2.2;
    const double squared = size * difference * difference;
    const bool isTail = 2 * difference >= 1 || squared > (size <= kSmallSize ? kTailOfSmall : kTailOfLarge);
    if (isTail) return std::min(1.0, 2 * OneSidedUpperTail(size, difference));
    const double lower = IsForMatrix(size, difference) ? LowerTailByMatrix(static_cast<std::size_t>(size), difference)
                                                       : LowerTailByPelzGood(size, difference);
    return std::clamp(1 - lower, 0.0, 1.0);
}

double KolmogorovOneSidedUpperTail(double size, double difference) {
    if (!(size >= 1) || std::isnan(difference)) return kNaN;
    if (difference >= 1) return 0;
    if (difference <= 0) return 1;
    return std::min(1.0, OneSidedUpperTail(size, difference));
}

}  // namespace tarn
