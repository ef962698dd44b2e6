#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

/// Counts by row and column, as many of the one as of the other. Of many categories nearly all cells are empty, so that
/// a large table keeps those alone in which something was counted: its memory grows with the different pairs.
class SquareTable {
 public:
    /// Above it a table is large: the cells of a smaller one take 8 MB, and are quicker to count in.
    static constexpr std::size_t kLargestDense = 1024;

    /// An empty table. `skipsEmpty`: false where every cell is to be walked whatever the size.
    void Clear(std::size_t size, bool skipsEmpty) {
        size_ = size;
        isSparse_ = skipsEmpty && size > kLargestDense;
        dense_.assign(isSparse_ ? 0 : size * size, 0);
        sparse_.clear();
    }
    bool IsSparse() const { return isSparse_; }

    /// Where counts of a cell are added; a reference to it, of a table that is dense or of one that is sparse.
    std::int64_t& Dense(std::size_t row, std::size_t column) { return dense_[row * size_ + column]; }
    std::int64_t& Sparse(std::size_t row, std::size_t column) { return sparse_[row * size_ + column]; }

    /// Calls `visit` with the row, the column and the count of each cell, row by row; of a sparse table with those
    /// alone in which something was counted.
    template <typename Visit>
    void ForEach(Visit visit) const {
        if (isSparse_) {
            for (const auto& [place, count] : sparse_) visit(place / size_, place % size_, count);
            return;
        }
        std::size_t place = 0;
        for (std::size_t row = 0; row < size_; ++row) {
            for (std::size_t column = 0; column < size_; ++column) visit(row, column, dense_[place++]);
        }
    }

    /// The counts of a row.
    std::vector<std::int64_t> Row(std::size_t row) const {
        const auto first = row * size_;
        if (!isSparse_) {
            const auto begin = dense_.begin() + static_cast<std::ptrdiff_t>(first);
            return {begin, begin + static_cast<std::ptrdiff_t>(size_)};
        }
        std::vector<std::int64_t> counts(size_, 0);
        const auto end = sparse_.lower_bound(first + size_);
        for (auto cell = sparse_.lower_bound(first); cell != end; ++cell) counts[cell->first - first] = cell->second;
        return counts;
    }

 private:
    std::size_t size_ = 0;
    bool isSparse_ = false;
    std::vector<std::int64_t> dense_;
    std::map<std::size_t, std::int64_t> sparse_;  // by the place of the cell, row by row
};
