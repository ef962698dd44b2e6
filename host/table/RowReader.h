#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/ByteSource.h"
#include "host/table/CsvReader.h"
#include "host/table/TableShape.h"

namespace tarn {

/// Reads a table row by row: a header with the names of the fields, then rows of as many cells. Empty lines are passed
/// over unless the table has one column. Throws an `InputError` for anything else.
class RowReader {
 public:
    /// Reads what comes before the first row. Borrows both, and `source` is read on from where it stands.
    RowReader(ByteSource& source, std::size_t blockSize, const TableShape& shape);
    /// Reads on in the middle of a table with these names and that header, on that line.
    RowReader(ByteSource& source, std::vector<std::string> names, const TableShape& shape, std::string header,
              std::size_t firstLine);

    /// The names of the fields, unique and not empty; behind them empty ones for cells at the end that are no fields.
    const std::vector<std::string>& Names() const { return names_; }
    /// The header as it stands if it may stand there again, where it is no row; else empty.
    const std::string& RepeatedHeader() const { return header_; }
    /// Goes to the next row; false at the end of the table.
    bool Next();
    /// The cells of the row, one for each name. The texts that they view are valid until the next call of `Next`.
    std::span<const std::string_view> Cells() const { return csv_.Cells(); }
    /// The number of the line on which the row starts, from 1.
    std::size_t Line() const { return csv_.Line(); }
    /// The place of the row, as the front of a message.
    std::string Position() const;
    /// What was read behind the row.
    const CsvReader& Csv() const { return csv_; }

 private:
    void ReadHeader();
    void CheckNames() const;
    bool IsPassedOver() const;
    void CheckWidth() const;
    std::string LikelyCause() const;

    const ByteSource& source_;
    const TableShape& shape_;
    CsvReader csv_;
    std::vector<std::string> names_;
    std::string header_;
};

}  // namespace tarn
