#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "host/table/Table.h"

namespace tarn {

/// What becomes of frequency weights: rounded to the nearest whole number on the way of a request, cut towards zero by
/// the engine itself on that of a plan.
enum class WeightRule { kRounded, kCut };

/// The frequency weights of a table, and what becomes of them.
struct WeightCounts {
    std::string field;
    WeightRule rule = WeightRule::kRounded;
    std::size_t changed = 0;   ///< records whose weight becomes another whole number above or below 0
    std::size_t vanished = 0;  ///< records whose weight becomes 0
    std::size_t zero = 0;      ///< records whose weight is 0
    std::size_t negative = 0;  ///< records with one below 0, left out where weights are rounded, else subtracted
    std::size_t missing = 0;   ///< records without one, left out where weights are rounded
    double before = 0;         ///< sum of the weights that there are
    double after = 0;          ///< sum of those that count
};

/// Counts them; nothing for a table without weights.
std::optional<WeightCounts> CountWeights(const Table& table, WeightRule rule);

/// Whether a record of that weight counts for anything: its weight is there and not 0 as a whole number, and above 0
/// where weights are rounded.
bool Counts(double weight, WeightRule rule);

}  // namespace tarn
