#include "host/report/AdjustedPValues.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numeric>

namespace tarn {

namespace {

/// The positions of the significances, the smallest first.
std::vector<std::size_t> Ascending(const std::vector<double>& pValues) {
    std::vector<std::size_t> order(pValues.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return pValues[i]; });
    return order;
}

/// From the largest significance on downwards: the smallest so far of each times its factor, which is a function of its
/// rank in ascending order. 1 at most.
template <typename Factor>
std::vector<double> SteppedUp(const std::vector<double>& pValues, const Factor& factorOfRank) {
    std::vector<double> adjusted(pValues.size());
    std::vector<std::size_t> order = Ascending(pValues);
    std::ranges::reverse(order);
    double smallest = 1;
    auto rank = static_cast<double>(pValues.size());
    for (const std::size_t i : order) {
        smallest = std::min(smallest, factorOfRank(rank) * pValues[i]);
        adjusted[i] = smallest;
        --rank;
    }
    return adjusted;
}

std::vector<double> HochbergAdjusted(const std::vector<double>& pValues) {
    const auto count = static_cast<double>(pValues.size());
    return SteppedUp(pValues, [count](double rank) { return count + 1 - rank; });
}

std::vector<double> BenjaminiYekutieliAdjusted(const std::vector<double>& pValues) {
    const auto count = static_cast<double>(pValues.size());
    double harmonic = 0;
    for (double i = count; i >= 1; --i) harmonic += 1 / i;
    return SteppedUp(pValues, [=](double rank) { return harmonic * count / rank; });
}

std::vector<double> BonferroniAdjusted(std::vector<double> pValues) {
    const auto count = static_cast<double>(pValues.size());
    for (double& p : pValues) p = std::min(1.0, count * p);
    return pValues;
}

// ---- Hommel ----

/// The lower convex hull of the points (rank, significance) of the largest significances, which grows to the left.
class LowerHull {
 public:
    explicit LowerHull(const std::vector<double>& ascending) : ascending_(ascending) {}

    /// Adds the point of a position, one below all others so far.
    void Add(std::size_t position) {
        while (corners_.size() > 1 && !IsConvex(position, corners_.back(), corners_[corners_.size() - 2])) {
            corners_.pop_back();
        }
        corners_.push_back(position);
    }

    /// Of all points that with the smallest significance for its distance from a position left of them, on the axis.
    std::size_t Lowest(std::size_t from) const {
        // The last corner is the leftmost one; along the hull the ratio falls and then rises.
        std::size_t low = 0;
        std::size_t high = corners_.size() - 1;
        while (low < high) {
            const std::size_t middle = (low + high) / 2;
            const std::size_t right = corners_[middle];
            const std::size_t left = corners_[middle + 1];
            const bool isLeftLower = Value(left) * Distance(from, right) < Value(right) * Distance(from, left);
            (isLeftLower ? low : high) = isLeftLower ? middle + 1 : middle;
        }
        return corners_[low];
    }

 private:
    long double Value(std::size_t position) const { return ascending_[position]; }
    /// Ranks are one above positions, so that no distance from `from`, which stands for a rank, is 0.
    static long double Distance(std::size_t from, std::size_t position) {
        return static_cast<long double>(position + 1 - from);
    }
    bool IsConvex(std::size_t left, std::size_t middle, std::size_t right) const {
        return (Value(middle) - Value(left)) * static_cast<long double>(right - left) <
               (Value(right) - Value(left)) * static_cast<long double>(middle - left);
    }

    const std::vector<double>& ascending_;
    std::vector<std::size_t> corners_;
};

/// For j = 1, 2, ...: the significance of Simes' test of the j largest significances together, and then the largest of
/// it and of all behind it.
std::vector<double> SimesFromBehind(const std::vector<double>& ascending) {
    const std::size_t count = ascending.size();
    std::vector<double> simes(count);
    LowerHull hull(ascending);
    for (std::size_t j = 1; j <= count; ++j) {
        const std::size_t from = count - j;
        hull.Add(from);
        const std::size_t lowest = hull.Lowest(from);
        simes[j - 1] = static_cast<double>(j) * ascending[lowest] / static_cast<double>(lowest + 1 - from);
    }
    for (std::size_t j = count - 1; j > 0; --j) simes[j - 1] = std::max(simes[j - 1], simes[j]);
    return simes;
}

/// A hypothesis is rejected by the closed test of Simes' tests if the worst set that holds it is. The worst set of j
/// is made of it and the largest others, so that its significance is the smaller one of j p and Simes' of the j
/// largest, and the adjusted one is the largest of these over all j. j p rises with j, and Simes' largest from j on
/// falls: they meet where the maximum is.
std::vector<double> HommelAdjusted(const std::vector<double>& pValues) {
    if (pValues.empty()) return {};
    const std::vector<std::size_t> order = Ascending(pValues);
    std::vector<double> ascending;
    for (const std::size_t i : order) ascending.push_back(pValues[i]);
    const std::vector<double> simes = SimesFromBehind(ascending);
    std::vector<double> adjusted(pValues.size());
    for (std::size_t i = 0; i < pValues.size(); ++i) {
        const double p = pValues[i];
        std::size_t below = 0;  // for so many j, j p lies below Simes'
        std::size_t end = simes.size();
        while (below < end) {
            const std::size_t middle = (below + end) / 2;
            const bool isBelow = static_cast<double>(middle + 1) * p < simes[middle];
            (isBelow ? below : end) = isBelow ? middle + 1 : middle;
        }
        const double before = static_cast<double>(below) * p;
        const double behind = below < simes.size() ? simes[below] : 0;
        adjusted[i] = std::min(1.0, std::max({p, before, behind}));
    }
    return adjusted;
}

// ---- All of them ----

struct AdjustmentWords {
    Adjustment adjustment;
    std::string_view name;
    std::string_view title;
};

constexpr std::array kAdjustments{
    AdjustmentWords{Adjustment::kHolm, "holm", "Holm"},
    AdjustmentWords{Adjustment::kHochberg, "hochberg", "Hochberg"},
    AdjustmentWords{Adjustment::kHommel, "hommel", "Hommel"},
    AdjustmentWords{Adjustment::kBonferroni, "bonferroni", "Bonferroni"},
    AdjustmentWords{Adjustment::kBenjaminiHochberg, "bh", "Benjamini-Hochberg"},
    AdjustmentWords{Adjustment::kBenjaminiYekutieli, "by", "Benjamini-Yekutieli"},
    AdjustmentWords{Adjustment::kNone, "none", "none"},
};

const AdjustmentWords& WordsOf(Adjustment adjustment) {
    return *std::ranges::find(kAdjustments, adjustment, &AdjustmentWords::adjustment);
}

std::vector<double> AdjustedNumbers(const std::vector<double>& pValues, Adjustment adjustment) {
    switch (adjustment) {
        case Adjustment::kHolm:
            return HolmAdjusted(pValues);
        case Adjustment::kHochberg:
            return HochbergAdjusted(pValues);
        case Adjustment::kHommel:
            return HommelAdjusted(pValues);
        case Adjustment::kBonferroni:
            return BonferroniAdjusted(pValues);
        case Adjustment::kBenjaminiHochberg:
            return BenjaminiHochbergAdjusted(pValues);
        case Adjustment::kBenjaminiYekutieli:
            return BenjaminiYekutieliAdjusted(pValues);
        case Adjustment::kNone:
            break;
    }
    return pValues;
}

/// The number on which a test's decision rests.
std::optional<double> DecidingP(const TestReading& reading) {
    const StatisticSet* const set = reading.Leading();
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    const double value = p == nullptr ? 0 : p->value.value;
    const bool isKnown = p != nullptr && p->decides && !std::isnan(value);
    const bool isTrusted = !reading.HasError() && !reading.IsBeyondRange(Quantity::kPValue);
    return isKnown && isTrusted ? std::optional(value) : std::nullopt;
}

}  // namespace

std::vector<double> HolmAdjusted(const std::vector<double>& pValues) {
    std::vector<double> adjusted(pValues.size());
    double largest = 0;
    auto left = static_cast<double>(pValues.size());
    for (const std::size_t i : Ascending(pValues)) {
        largest = std::max(largest, std::min(1.0, left * pValues[i]));
        adjusted[i] = largest;
        --left;
    }
    return adjusted;
}

std::vector<double> BenjaminiHochbergAdjusted(const std::vector<double>& pValues) {
    const auto count = static_cast<double>(pValues.size());
    return SteppedUp(pValues, [count](double rank) { return count / rank; });
}

std::optional<Adjustment> AdjustmentOf(std::string_view name) {
    const auto found = std::ranges::find(kAdjustments, name, &AdjustmentWords::name);
    return found == kAdjustments.end() ? std::nullopt : std::optional(found->adjustment);
}

std::string_view NameOf(Adjustment adjustment) {
    return WordsOf(adjustment).name;
}

std::string_view TitleOf(Adjustment adjustment) {
    return WordsOf(adjustment).title;
}

std::vector<double> Adjusted(const std::vector<double>& pValues, Adjustment adjustment) {
    std::vector<double> known;
    std::ranges::copy_if(pValues, std::back_inserter(known), [](double p) { return !std::isnan(p); });
    const std::vector<double> numbers = AdjustedNumbers(known, adjustment);
    std::vector<double> adjusted = pValues;
    auto next = numbers.begin();
    for (double& p : adjusted) {
        if (!std::isnan(p)) p = *next++;
    }
    return adjusted;
}

TestFamilyPValues AdjustTogether(const std::vector<TestReading>& readings) {
    TestFamilyPValues family;
    std::vector<double> pValues;
    std::vector<std::size_t> positions;
    family.tests.resize(readings.size());
    for (std::size_t i = 0; i < readings.size(); ++i) {
        if (const std::optional<double> p = DecidingP(readings[i])) {
            pValues.push_back(*p);
            positions.push_back(i);
        }
    }
    const std::vector<double> holm = HolmAdjusted(pValues);
    const std::vector<double> benjaminiHochberg = BenjaminiHochbergAdjusted(pValues);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        family.tests[positions[i]] = {pValues[i], holm[i], benjaminiHochberg[i]};
    }
    family.count = pValues.size();
    return family;
}

}  // namespace tarn
