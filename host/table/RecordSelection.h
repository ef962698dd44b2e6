#pragma once

#include <cstddef>
#include <optional>

namespace tarn {

/// How many records were left out on the way from a table to an analysis. What wasn't asked for left out none.
struct RecordSelection {
    std::size_t ofTable = 0;                 ///< records of the table that was read
    std::optional<std::size_t> byCondition;  ///< for which the condition isn't true
    std::optional<std::size_t> bySplit;      ///< of other parts, or without the field that splits
    std::optional<std::size_t> placeless;    ///< of repeated measures, without a subject or a condition
};

}  // namespace tarn
