#include "host/report/AdjustedPValues.h"

#include <algorithm>
#include <cmath>
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
    std::vector<double> adjusted(pValues.size());
    const auto count = static_cast<double>(pValues.size());
    std::vector<std::size_t> order = Ascending(pValues);
    std::ranges::reverse(order);
    double smallest = 1;
    double rank = count;
    for (const std::size_t i : order) {
        smallest = std::min(smallest, count / rank * pValues[i]);
        adjusted[i] = smallest;
        --rank;
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
