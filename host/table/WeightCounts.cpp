#include "host/table/WeightCounts.h"

#include <cmath>

namespace tarn {

namespace {

/// A run is refused for a larger one.
constexpr double kLargestWeight = 2147483647;

double AsUsed(double weight, WeightRule rule) {
    return rule == WeightRule::kRounded ? std::round(weight) : std::trunc(weight);
}

}  // namespace

std::optional<WeightCounts> CountWeights(const Table& table, WeightRule rule) {
    if (table.WeightIndex() == Table::kNoColumn) return std::nullopt;
    const auto column = static_cast<std::size_t>(table.WeightIndex());
    WeightCounts counts;
    counts.field = table.Columns()[column].name;
    counts.rule = rule;
    for (const double weight : table.Cells(column)) {
        if (weight == kMissingNumber) {
            ++counts.missing;
            continue;
        }
        counts.before += weight;
        if (weight < 0) ++counts.negative;
        if (weight < 0 && rule == WeightRule::kRounded) continue;
        const double used = AsUsed(weight, rule);
        counts.after += used <= kLargestWeight ? used : 0;
        if (weight == 0) ++counts.zero;
        if (used == weight) continue;
        ++(used == 0 ? counts.vanished : counts.changed);
    }
    return counts;
}

bool Counts(double weight, WeightRule rule) {
    if (weight == kMissingNumber || (rule == WeightRule::kRounded && weight < 0)) return false;
    return AsUsed(weight, rule) != 0;
}

}  // namespace tarn
