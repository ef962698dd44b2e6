#pragma once

#include <string>
#include <vector>

#include "host/report/ResultDocument.h"

namespace tarn {

/// A table of counts, of two classes or of two fields. That of two fields with thousands of categories has millions of
/// cells, nearly all of them 0, so that each row stays the text of the document until somebody asks for its cells.
struct CountTable {
    std::string corner;  ///< what the rows and the columns are; "" where that is plain
    std::vector<std::string> columnTitles;
    std::vector<std::string> rowTitles;
    std::vector<std::string> lines;  ///< a row each, its cells joined as the document joins them

    std::size_t RowCount() const { return lines.size(); }
    std::vector<std::string> CellsOf(std::size_t row) const { return SplitList(lines[row]); }
    /// Of the longest row.
    std::size_t ColumnCount() const;
    /// Whether it has more columns than a reader could follow: more than 200.
    bool IsWide() const;
    /// The same counts as a list: a row for each cell that isn't 0, named by its row and its column as the corner is,
    /// with one column of cases.
    CountTable Listed() const;
};

/// The one that a test shows; empty for a test without.
CountTable ReadCounts(const TestResult& test, const ResultDocument& document);

}  // namespace tarn
