#include "host/beyond/BlockRows.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tarn {

namespace {

/// Twice the ranks of a row, tied as the tests tie them.
void AppendDoubledRanks(std::vector<double> row, std::vector<std::int64_t>& scores) {
    std::vector<AscendingSample> cells(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) cells[i].values = {row[i]};
    TieTogether(cells);
    for (const AscendingSample& cell : cells) {
        std::int64_t doubled = 1;
        for (const AscendingSample& other : cells) {
            doubled += other.values[0] < cell.values[0] ? 2 : other.values[0] == cell.values[0] ? 1 : 0;
        }
        scores.push_back(doubled);
    }
}

/// Rows with a weight stand as often as it says.
template <typename Columns, typename Append>
ScoreRows RowsOf(const Columns& columns, const CompleteCases& cases, Append append) {
    ScoreRows rows;
    rows.columns = columns.size();
    std::vector<double> row(columns.size());
    for (std::size_t i = 0; i < columns.front().size(); ++i) {
        for (std::size_t j = 0; j < columns.size(); ++j) row[j] = columns[j][i];
        const std::size_t begin = rows.scores.size();
        append(row, rows.scores);
        const std::vector<std::int64_t> once(rows.scores.begin() + static_cast<std::ptrdiff_t>(begin),
                                             rows.scores.end());
        for (double copy = 1; copy < cases.WeightAt(i); ++copy) {
            rows.scores.insert(rows.scores.end(), once.begin(), once.end());
        }
    }
    return rows;
}

}  // namespace

ScoreRows RankedRowsOf(const CompleteCases& cases) {
    return RowsOf(cases.columns, cases,
                  [](const std::vector<double>& row, auto& scores) { AppendDoubledRanks(row, scores); });
}

ScoreRows SuccessRowsOf(const std::vector<std::vector<double>>& successes, const CompleteCases& cases) {
    return RowsOf(successes, cases, [](const std::vector<double>& row, auto& scores) {
        for (const double success : row) scores.push_back(static_cast<std::int64_t>(success));
    });
}

}  // namespace tarn
