#pragma once

#include <optional>
#include <vector>

#include "host/table/Table.h"

namespace tarn {

/// The median of a column over the records whose weight is above 0 and, `listwise`, that miss none of `fields`: the
/// middle value, or the mean of the two in the middle. None without a record.
std::optional<double> MedianOf(const Table& table, int column, const std::vector<int>& fields, bool listwise);

}  // namespace tarn
