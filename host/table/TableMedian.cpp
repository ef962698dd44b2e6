#include "host/table/TableMedian.h"

#include <algorithm>
#include <cmath>

namespace tarn {

std::optional<double> MedianOf(const Table& table, int column, const std::vector<int>& fields, bool listwise) {
    struct Weighted {
        double value;
        double weight;
    };
    const auto cellsOf = [&](int field) { return table.Cells(static_cast<std::size_t>(field)); };
    const auto isMissing = [&](std::size_t row, int field) {
        const bool categorical = table.Columns()[static_cast<std::size_t>(field)].IsCategorical();
        return cellsOf(field)[row] == (categorical ? kMissingCategory : kMissingNumber);
    };
    std::vector<Weighted> values;
    double total = 0;
    for (std::size_t i = 0; i < table.RowCount(); ++i) {
        const double weight = table.WeightIndex() == Table::kNoColumn ? 1 : std::round(cellsOf(table.WeightIndex())[i]);
        const bool isDropped = listwise && std::ranges::any_of(fields, [&](int field) { return isMissing(i, field); });
        if (isDropped || !(weight > 0) || isMissing(i, column)) continue;
        values.push_back({cellsOf(column)[i], weight});
        total += weight;
    }
    if (values.empty()) return std::nullopt;
    std::ranges::sort(values, {}, &Weighted::value);

    // The value at a place among the values repeated as often as their weights say, from 1.
    const auto valueAt = [&](double place) {
        double reached = 0;
        for (const Weighted& entry : values) {
            reached += entry.weight;
            if (reached >= place) return entry.value;
        }
        return values.back().value;
    };
    return (valueAt(std::floor((total + 1) / 2)) + valueAt(std::ceil((total + 1) / 2))) / 2;
}

}  // namespace tarn
