#pragma once

#include <cstdint>

#include "platform/common/Record.h"
#include "platform/common/Truncation.h"

/// The weight of a record as every counter takes it: the value of the weight field truncated towards zero to 32 bits,
/// so that a fraction is lost and a weight below 1 adds nothing. 1 where there is no weight field (a negative index).
inline std::int32_t CaseWeight(const Record& record, int weightIndex) {
    return weightIndex < 0 ? 1 : TruncateToInt32(record[static_cast<std::size_t>(weightIndex)]);
}
