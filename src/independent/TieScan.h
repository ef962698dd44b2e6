#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "support/TARNRank.h"

/// Finds out whether ties are the same among all records as among any part of them. Values are tied with the one that
/// opened their run, so that what is tied depends on which values are there wherever small steps make a chain: then
/// every choice of groups has runs of its own. Elsewhere, and that is nearly always, its runs are the parts of the runs
/// of all records.
class TieScan {
 public:
    /// Takes the records of a group, 0 or above, in ascending order.
    void Add(const double* values, const std::int32_t* groups, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            if (groups[i] < 0) continue;
            if (!TARNRank::AreTied(values[i], opener_)) {
                // What is no finite number has no distance and is tied with nothing, not even with its like.
                areShared_ = areShared_ && !TARNRank::AreTied(values[i], previous_) && std::isfinite(values[i]);
                opener_ = values[i];
            }
            previous_ = values[i];
        }
    }
    bool AreShared() const { return areShared_; }

 private:
    double opener_ = std::numeric_limits<double>::quiet_NaN();
    double previous_ = std::numeric_limits<double>::quiet_NaN();
    bool areShared_ = true;
};
