#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/table/ColumnReader.h"
#include "host/table/CsvPieces.h"

namespace tarn {

/// How the rows of a table are written.
struct RowForm {
    char delimiter = ',';
    char decimal = '.';
    std::string repeatedHeader;  ///< a row that is none, without its end; empty: there is no such thing
};

/// Reads the rows of a piece into values of its own, which stay in the cache until their place in the table is known.
/// Several pieces are read at a time, each by a reader of its own.
///
/// It knows everything that a right table may hold. What a table may not hold it only notices: where the piece and all
/// before it are at hand, `ThrowMistakeOf` tells what it is.
class PieceReader {
 public:
    enum class Outcome {
        kRead,
        kTexts,   ///< columns of numbers hold texts, and have to become columns of texts
        kMistake  ///< something that no table may hold
    };

    /// Reads a piece by the rules of the columns, of which there are `width`. Borrows the piece until the next one.
    Outcome Read(const CsvPiece& piece, const std::vector<ColumnReader>& columns, const RowForm& form);

    std::size_t RowCount() const { return rowCount_; }
    /// How many rows were the header again.
    std::size_t RepeatedHeaders() const { return repeatedHeaders_; }
    /// How many lines the piece has, once it is read.
    std::size_t LineCount() const { return lineCount_; }
    /// The values row by row, in which categories are codes of the piece.
    const double* Values() const { return values_.get(); }
    /// Whether all values of a column are 0, since they are numbers that nobody reads.
    bool AreAllZero(std::size_t column) const { return kinds_[column] == Kind::kAnyNumber && !hasMissing_[column]; }
    const CellCodes& Codes(std::size_t column) const { return codes_[column]; }
    /// After `kTexts`, the columns that hold texts.
    const std::vector<std::size_t>& TextColumns() const { return textColumns_; }

 private:
    /// A cell as it stands in the piece, and behind it the delimiter or the line break that ends it.
    struct Cell {
        std::string_view text;
        const char* border;
    };

    enum class Kind : unsigned char {
        kNumber,     ///< a decimal number is the value
        kAnyNumber,  ///< a decimal number is one that nobody reads: 0 stands for it
        kDecimal,    ///< a decimal number is what the column's reader makes of it
        kOther
    };

    void Prepare(const CsvPiece& piece, const std::vector<ColumnReader>& columns);
    void NoteNumbers();
    template <char kDelimiter, char kDecimal>
    bool ReadRows(const char* text, const std::vector<ColumnReader>& columns, const std::string& header);
    bool ReadRowsOf(const RowForm& form, const char* text, const std::vector<ColumnReader>& columns);
    const char* BehindHeader(const char* text, const std::string& header) const;
    template <char kDelimiter, char kDecimal>
    const char* ReadRow(const char* text, const std::vector<ColumnReader>& columns);
    void NotePresence(double& value, std::size_t column);
    template <char kDelimiter, char kDecimal>
    const char* SkipNumbers(const char* text, std::size_t column) const;
    template <char kDelimiter, char kDecimal>
    const char* ReadDecimal(const char* text, std::size_t column, const std::vector<ColumnReader>& columns,
                            double& value);
    template <char kDelimiter>
    const char* ReadAnyCell(const char* text, const ColumnReader& reader, CellCodes& codes, double& value,
                            std::size_t column);
    template <char kDelimiter>
    bool FindCell(const char* text, Cell& cell);
    template <char kDelimiter>
    bool FindQuotedCell(const char* text, Cell& cell);
    const char* BehindLineBreak(const char* text) const;
    template <char kDelimiter>
    const char* BehindBorder(const char* text, bool isLast) const;

    const char* end_ = nullptr;
    const char* addedLineFeed_ = nullptr;
    std::size_t lineCount_ = 0;
    std::size_t rowCount_ = 0;
    std::size_t repeatedHeaders_ = 0;
    std::size_t capacity_ = 0;
    std::unique_ptr<double[]> values_;  // `capacity_` of them at most
    std::vector<Kind> kinds_;           // of the columns
    std::vector<std::size_t> alike_;    // for each column how many of its kind stand together from there on
    std::vector<char> hasMissing_;      // for each column of numbers that nobody reads whether it misses any
    std::vector<CellCodes> codes_;
    std::vector<std::size_t> textColumns_;
    std::vector<char> hasText_;          // for each column whether it is among those
    std::deque<std::string> unescaped_;  // the texts of cells that hold ""
};

}  // namespace tarn
