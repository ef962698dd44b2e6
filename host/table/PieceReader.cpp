#include "host/table/PieceReader.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "host/Utf8.h"
#include "runtime/common/PlainDecimal.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarn {

namespace {

/// The first delimiter, line feed or double quote from `text` on, in front of which there is a line feed at the latest.
template <char kDelimiter>
const char* FindStructure(const char* text) {
#if defined(__SSE2__)
    static_assert(sizeof(__m128i) <= CsvPiece::kPadding);
    for (;; text += sizeof(__m128i)) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
        const __m128i found = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(kDelimiter)), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'))),
            _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (bits != 0) return text + std::countr_zero(bits);
    }
#else
    while (*text != kDelimiter && *text != '"' && *text != '\n') ++text;
    return text;
#endif
}

/// A cell in quotes without them, in which a double quote stands twice.
std::string Unescaped(std::string_view text) {
    std::string unescaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unescaped += text[i];
        if (text[i] == '"') ++i;
    }
    return unescaped;
}

}  // namespace

PieceReader::Outcome PieceReader::Read(const CsvPiece& piece, const std::vector<ColumnReader>& columns,
                                       const RowForm& form) {
    Prepare(piece, columns);
    const std::string_view whole = piece.Text();
    const char* const last = whole.data() + whole.size();
    if (FindInvalidUtf8(whole.data(), last) != last) return Outcome::kMistake;
    if (!ReadRowsOf(form, piece.Begin(), columns)) return Outcome::kMistake;
    if (!textColumns_.empty()) return Outcome::kTexts;
    NoteNumbers();
    return Outcome::kRead;
}

/// Reads rows of that form, each by loops of its own for what its cells are made of.
bool PieceReader::ReadRowsOf(const RowForm& form, const char* text, const std::vector<ColumnReader>& columns) {
    const bool hasComma = form.decimal == ',';
    switch (form.delimiter) {
        case ';':
            return hasComma ? ReadRows<';', ','>(text, columns, form.repeatedHeader)
                            : ReadRows<';', '.'>(text, columns, form.repeatedHeader);
        case '\t':
            return hasComma ? ReadRows<'\t', ','>(text, columns, form.repeatedHeader)
                            : ReadRows<'\t', '.'>(text, columns, form.repeatedHeader);
        case '|':
            return hasComma ? ReadRows<'|', ','>(text, columns, form.repeatedHeader)
                            : ReadRows<'|', '.'>(text, columns, form.repeatedHeader);
        default:  // decimal commas stand in quotes there, so that none is in the way
            return ReadRows<',', '.'>(text, columns, form.repeatedHeader);
    }
}

/// Reads all rows; false for a mistake.
template <char kDelimiter, char kDecimal>
bool PieceReader::ReadRows(const char* text, const std::vector<ColumnReader>& columns, const std::string& header) {
    while (text != end_) {
        // An empty line is a row of a table with one column, and else none.
        const char* next = columns.size() == 1 ? nullptr : BehindLineBreak(text);
        if (next == nullptr && !header.empty() && *text == header.front()) {
            next = BehindHeader(text, header);
            if (next != nullptr) ++repeatedHeaders_;
        }
        text = next != nullptr ? next : ReadRow<kDelimiter, kDecimal>(text, columns);
        if (text == nullptr) return false;
        ++lineCount_;
    }
    return true;
}

/// What is behind the header that stands at `text` again; null where there is another row.
[[gnu::noinline]] const char* PieceReader::BehindHeader(const char* text, const std::string& header) const {
    if (static_cast<std::size_t>(end_ - text) <= header.size()) return nullptr;
    if (!std::equal(header.begin(), header.end(), text)) return nullptr;
    return BehindLineBreak(text + header.size());
}

/// What `ColumnReader` would have noted of the cells of plain numbers.
void PieceReader::NoteNumbers() {
    for (std::size_t i = 0; i < kinds_.size(); ++i) {
        if ((kinds_[i] != Kind::kNumber && kinds_[i] != Kind::kAnyNumber) || codes_[i].hasNumbers) continue;
        const double* value = values_.get() + i;
        for (std::size_t row = 0; row < rowCount_ && !codes_[i].hasNumbers; ++row, value += kinds_.size()) {
            codes_[i].hasNumbers = *value != kMissingNumber;
        }
    }
}

void PieceReader::Prepare(const CsvPiece& piece, const std::vector<ColumnReader>& columns) {
    const std::size_t width = columns.size();
    kinds_.clear();
    for (const ColumnReader& reader : columns) {
        kinds_.push_back(reader.TakesAnyNumbers()     ? Kind::kAnyNumber
                         : reader.TakesPlainNumbers() ? Kind::kNumber
                         : reader.TakesDecimals()     ? Kind::kDecimal
                                                      : Kind::kOther);
    }
    hasMissing_.assign(width, 0);
    alike_.assign(width, 1);
    for (std::size_t i = width - 1; i-- > 0;) {
        if (kinds_[i] == kinds_[i + 1]) alike_[i] = alike_[i + 1] + 1;
    }
    end_ = piece.End();
    addedLineFeed_ = piece.AddedLineFeed();
    lineCount_ = 0;
    rowCount_ = 0;
    repeatedHeaders_ = 0;
    // Behind each cell stands a comma or a line break, and memory that isn't written to takes none.
    const auto mostCells = static_cast<std::size_t>(end_ - piece.Begin());
    if (mostCells > capacity_) {
        values_ = std::make_unique_for_overwrite<double[]>(mostCells);
        capacity_ = mostCells;
    }
    codes_.resize(width);
    for (CellCodes& codes : codes_) codes.Clear();
    textColumns_.clear();
    hasText_.assign(width, 0);
    unescaped_.clear();
}

/// What is behind the line break at `text`; null where there is none.
inline const char* PieceReader::BehindLineBreak(const char* text) const {
    if (*text == '\n') return text + 1;
    // A carriage return is data but in front of a line feed of the input.
    if (*text == '\r' && text[1] == '\n' && text + 1 != addedLineFeed_) return text + 2;
    return nullptr;
}

/// What is behind the delimiter at `text`, or behind the line break where the cell in front is the last of its row;
/// null where there is none.
template <char kDelimiter>
inline const char* PieceReader::BehindBorder(const char* text, bool isLast) const {
    if (isLast) return BehindLineBreak(text);
    return *text == kDelimiter ? text + 1 : nullptr;
}

/// Reads a row and returns what is behind it; null for a mistake.
template <char kDelimiter, char kDecimal>
const char* PieceReader::ReadRow(const char* text, const std::vector<ColumnReader>& columns) {
    const std::size_t width = kinds_.size();
    double* const values = values_.get() + rowCount_ * width;
    std::size_t tried = 0;  // numbers that nobody reads are looked for from here on
    for (std::size_t i = 0; i < width; ++i) {
        if (kinds_[i] == Kind::kAnyNumber && i >= tried) {
            tried = i + alike_[i];
            if (const char* const next = SkipNumbers<kDelimiter, kDecimal>(text, i)) {
                std::fill(values + i, values + tried, 0);
                text = next;
                i = tried - 1;
                continue;
            }
        }
        const bool isLast = i + 1 == width;
        const char* border = ReadDecimal<kDelimiter, kDecimal>(text, i, columns, values[i]);
        const char* next = border != nullptr ? BehindBorder<kDelimiter>(border, isLast) : nullptr;
        if (next == nullptr) {
            border = ReadAnyCell<kDelimiter>(text, columns[i], codes_[i], values[i], i);
            next = border != nullptr ? BehindBorder<kDelimiter>(border, isLast) : nullptr;
            if (next == nullptr) return nullptr;
        }
        if (kinds_[i] == Kind::kAnyNumber) NotePresence(values[i], i);
        text = next;
    }
    ++rowCount_;
    return text;
}

/// Of a number that nobody reads no more is left than that it is there.
inline void PieceReader::NotePresence(double& value, std::size_t column) {
    if (value == kMissingNumber) {
        hasMissing_[column] = 1;
    } else {
        value = 0;
    }
}

/// Goes over the cells of columns whose numbers nobody reads, from that column on, and returns what is behind them;
/// null where any is no plain number.
template <char kDelimiter, char kDecimal>
inline const char* PieceReader::SkipNumbers(const char* text, std::size_t column) const {
    static_assert(plain_decimal::kSkipWidth <= CsvPiece::kPadding);
    const char* const end = plain_decimal::SkipNumbers(text, alike_[column], kDelimiter, kDecimal);
    return end != nullptr ? BehindBorder<kDelimiter>(end, column + alike_[column] == kinds_.size()) : nullptr;
}

/// Reads a cell that is a decimal number in the usual spelling, as nearly all are, and returns the end of the number,
/// which is not always that of the cell; null where the cell is none.
template <char kDelimiter, char kDecimal>
inline const char* PieceReader::ReadDecimal(const char* text, std::size_t column,
                                            const std::vector<ColumnReader>& columns, double& value) {
    if (kinds_[column] <= Kind::kAnyNumber) return plain_decimal::Read(text, end_, value, kDecimal);
    if (kinds_[column] != Kind::kDecimal) return nullptr;
    double number = 0;
    const char* const border = plain_decimal::Read(text, end_, number, kDecimal);
    if (border != nullptr && (*border == kDelimiter || BehindLineBreak(border) != nullptr)) {
        columns[column].ReadNumber(number, codes_[column], value);
    }
    return border;
}

/// Reads a cell and returns its border; null for a mistake. Apart from `ReadRow`, whose loop is for numbers.
template <char kDelimiter>
[[gnu::noinline]] const char* PieceReader::ReadAnyCell(const char* text, const ColumnReader& reader, CellCodes& codes,
                                                       double& value, std::size_t column) {
    Cell cell{};
    if (!FindCell<kDelimiter>(text, cell)) return nullptr;
    if (reader.Read(cell.text, codes, value)) return cell.border;
    if (!reader.MayBecomeText()) return nullptr;
    if (!std::exchange(hasText_[column], char{1})) textColumns_.push_back(column);
    return cell.border;
}

template <char kDelimiter>
bool PieceReader::FindCell(const char* text, Cell& cell) {
    if (*text == '"') return FindQuotedCell<kDelimiter>(text, cell);
    const char* const border = FindStructure<kDelimiter>(text);
    if (*border == '"') return false;
    const bool hasCarriageReturn =
        *border == '\n' && border != text && border[-1] == '\r' && BehindLineBreak(border - 1) != nullptr;
    cell.border = border - (hasCarriageReturn ? 1 : 0);
    cell.text = {text, cell.border};
    return true;
}

template <char kDelimiter>
bool PieceReader::FindQuotedCell(const char* quote, Cell& cell) {
    const char* const first = quote + 1;
    bool isEscaped = false;
    const char* closing = std::find(first, end_, '"');
    while (closing != end_ && closing[1] == '"') {
        isEscaped = true;
        closing = std::find(closing + 2, end_, '"');
    }
    if (closing == end_) return false;
    cell.text = {first, closing};
    cell.border = closing + 1;
    lineCount_ += static_cast<std::size_t>(std::count(first, closing, '\n'));
    if (isEscaped) cell.text = unescaped_.emplace_back(Unescaped(cell.text));
    return *cell.border == kDelimiter || BehindLineBreak(cell.border) != nullptr;
}

}  // namespace tarn
