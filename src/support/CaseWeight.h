#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/common/Record.h"
#include "platform/common/Truncation.h"

/// The weight of a record as every counter takes it: the value of the weight field truncated towards zero to 32 bits,
/// so that a fraction is lost and a weight below 1 adds nothing. 1 where there is no weight field (a negative index).
inline std::int32_t CaseWeight(const Record& record, int weightIndex) {
    return weightIndex < 0 ? 1 : TruncateToInt32(record[static_cast<std::size_t>(weightIndex)]);
}

/// The sum of many truncated weights, and that of their magnitudes. `weights`: null: each is 1.
inline std::int64_t SumOfWeights(const std::int32_t* weights, std::size_t count) {
    if (weights == nullptr) return static_cast<std::int64_t>(count);
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += weights[i];
    return sum;
}
inline std::int64_t SumOfMagnitudes(const std::int32_t* weights, std::size_t count) {
    if (weights == nullptr) return static_cast<std::int64_t>(count);
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += std::abs(std::int64_t{weights[i]});
    return sum;
}
