#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarn {

/// Scores of the cases of a block design: a row for each block, the treatments side by side. The doubled ranks within
/// the rows for Friedman's test, 0 and 1 for Cochran's.
struct ScoreRows {
    std::size_t columns = 0;
    std::vector<std::int64_t> scores;  ///< row by row

    std::size_t RowCount() const { return columns == 0 ? 0 : scores.size() / columns; }
    std::int64_t At(std::size_t row, std::size_t column) const { return scores[row * columns + column]; }
};

}  // namespace tarn
