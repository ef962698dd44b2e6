#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace tarn {

/// Rows of a table that are in memory together, with the rows of doubles that they are read into.
class RowBatch {
 public:
    explicit RowBatch(std::size_t width) : width_(width) {}

    void Clear() {
        cells_.clear();
        lines_.clear();
        targets_.clear();
    }
    /// `cells` are copied as views; `target` has room for as many values and is borrowed.
    void Add(std::span<const std::string_view> cells, std::size_t line, double* target) {
        cells_.insert(cells_.end(), cells.begin(), cells.end());
        lines_.push_back(line);
        targets_.push_back(target);
    }

    std::size_t RowCount() const { return lines_.size(); }
    std::size_t CellCount() const { return cells_.size(); }
    std::span<const std::string_view> Cells(std::size_t row) const { return {cells_.data() + row * width_, width_}; }
    /// The line on which the row starts.
    std::size_t Line(std::size_t row) const { return lines_[row]; }
    double* Target(std::size_t row) const { return targets_[row]; }

 private:
    std::size_t width_;
    std::vector<std::string_view> cells_;
    std::vector<std::size_t> lines_;
    std::vector<double*> targets_;
};

/// Reads the cells of the columns marked in `isPlain` that are decimal numbers into their targets, and puts a NaN for
/// every other cell of these columns. A large batch is shared with a second thread, as the numbers are most of the
/// work of reading a table.
void ReadPlainNumbers(const RowBatch& batch, const std::vector<bool>& isPlain);

}  // namespace tarn
