#pragma once

#include <atomic>
#include <cstddef>
#include <future>
#include <span>
#include <string_view>
#include <vector>

#include "host/table/SecondThread.h"

namespace tarn {

/// Rows of a table that are in memory together, with the rows of doubles that they are read into.
class RowBatch {
 public:
    /// An empty batch of rows of `width` cells.
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

/// Reads the cells of some columns that are decimal numbers into their targets, and puts a NaN for every other cell of
/// these columns. Most of the work of reading a table is done here, so that of a large batch a second thread begins at
/// once, while the caller gets the next rows.
class NumberReading {
 public:
    /// Starts on `columns` of `batch`, which is borrowed until the end, as is the thread.
    NumberReading(const RowBatch& batch, std::vector<std::size_t> columns, SecondThread& thread);
    ~NumberReading();
    NumberReading(const NumberReading&) = delete;
    NumberReading& operator=(const NumberReading&) = delete;

    /// Does its part of what is left and returns when all cells are read: whether each was a number.
    bool Finish();

 private:
    void ReadChunks();

    const RowBatch& batch_;
    std::vector<std::size_t> columns_;
    std::atomic<std::size_t> nextRow_ = 0;
    std::atomic<bool> areAllNumbers_ = true;
    std::future<void> second_;
};

}  // namespace tarn
