#include "host/beyond/BlockRows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace tarn {

namespace {

/// Twice the ranks of a row, tied as the tests tie them.
void AppendDoubledRanks(const std::vector<double>& row, std::vector<std::int64_t>& scores) {
    std::vector<double> ascending = row;
    std::ranges::sort(ascending);
    std::vector<AscendingSample> cells(1);
    cells[0].values = ascending;
    TieTogether(cells);
    const std::vector<double>& tied = cells[0].values;
    for (const double cell : row) {
        const auto place = std::ranges::lower_bound(ascending, cell) - ascending.begin();
        const auto [begin, end] = std::equal_range(tied.begin(), tied.end(), tied[static_cast<std::size_t>(place)]);
        scores.push_back((begin - tied.begin()) + (end - tied.begin()) + 1);
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
