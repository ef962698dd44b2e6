#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/ByteSource.h"
#include "host/table/CsvScanner.h"

namespace tarn {

/// Reads comma-separated values (RFC 4180), or values with another character in the comma's place, row by row: fields
/// in double quotes or bare, "" for a quote within quotes, LF or CRLF at the end of a row, UTF-8 with or without a byte
/// order mark. Any other CR is data.
///
/// Reads on from where `source` stands, block by block, and borrows it. The cells of a row are views into the block;
/// none is copied. Throws an `InputError` with the line for what breaks these rules, for a NUL byte, for what is not
/// UTF-8 and for a row that never ends.
class CsvReader {
 public:
    static constexpr std::size_t kDefaultBlockSize = std::size_t{1} << 19;
    /// A row has at most so many bytes, since an input may never end one.
    static constexpr std::size_t kLongestRow = std::size_t{64} << 20;

    static constexpr const char* kRowTooLong = "a row of 64 MiB or more; expected its end, or that of a cell in quotes";

    /// `blockSize`: bytes that are read at a time, at least 1. A longer row makes the reader's block grow. `firstLine`:
    /// the number of the line on which the source stands. The first line of all may begin with a byte order mark.
    explicit CsvReader(ByteSource& source, std::size_t blockSize = kDefaultBlockSize, std::size_t firstLine = 1,
                       char delimiter = ',');

    /// Goes over lines as they stand, before the first row is read; those that are not there are no mistake.
    void SkipLines(std::size_t count);

    /// Goes to the next row; false at the end of the input.
    bool Next();

    /// The cells of the row without their quotes, at least one. Valid until the next call.
    std::span<const std::string_view> Cells() const { return cells_; }
    /// Whether the row is an empty line, which `Cells` shows as one empty cell.
    bool IsEmptyLine() const { return isEmptyLine_; }
    /// The number of the line on which the row starts, from 1.
    std::size_t Line() const { return line_; }

    /// The row as it stands in the input, without what ends it, if no cell holds "". Valid until the next call.
    std::string_view RawRow() const {
        std::string_view row(row_, begin_);
        if (row.ends_with('\n')) row.remove_suffix(1);
        if (row.ends_with('\r')) row.remove_suffix(1);
        return row;
    }

    /// What was read of the source behind the row, and whether that is all there is. Valid until the next call.
    std::string_view Rest() const { return {begin_, end_}; }
    bool IsRestComplete() const { return isComplete_; }
    /// The number of the line on which the rest begins.
    std::size_t NextLine() const { return nextLine_; }

 private:
    // A row that the block holds only in part is parsed anew once more bytes are there.
    enum class Outcome { kRow, kNeedsBytes };
    // What ends a cell.
    enum class Border { kDelimiter, kRowEnd, kNeedsBytes };

    void SkipByteOrderMark();
    void Fill();
    void CheckLongRow() const;
    Outcome ParseRow();
    Border ParseQuoted(const char* quote);
    Border ParseBorder(const char* closingQuote);
    void FinishRow();
    void UnescapeCells();
    void CheckEncoding(const char* last) const;
    std::size_t LineOf(const char* position) const;
    [[noreturn]] void Fail(const char* position, const std::string& what) const;

    ByteSource& source_;
    char delimiter_;
    std::vector<char> buffer_;   // followed by the padding of the scanner
    const char* row_ = nullptr;  // where the row that was parsed last begins
    const char* begin_;          // of the row to be parsed next
    const char* end_;            // of the bytes that were read
    bool isComplete_ = false;    // whether end_ is the end of the input
    CsvScanner scanner_;         // stands at begin_ between two rows

    std::vector<std::string_view> cells_;
    std::vector<std::size_t> escapedCells_;  // those that hold ""
    const char* next_ = nullptr;             // where the cell or row after the parsed one begins
    bool hasQuotedCell_ = false;
    bool isEmptyLine_ = false;
    std::size_t line_ = 0;
    std::size_t nextLine_;
};

}  // namespace tarn
