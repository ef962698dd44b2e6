#include "host/table/CsvReader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "host/InputError.h"
#include "host/Utf8.h"
#include "host/table/TableShape.h"

namespace tarn {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

}  // namespace

CsvReader::CsvReader(ByteSource& source, std::size_t blockSize, std::size_t firstLine, char delimiter)
    : source_(source),
      delimiter_(delimiter),
      buffer_(std::max<std::size_t>(blockSize, 1) + CsvScanner::kPadding),
      scanner_(delimiter),
      nextLine_(firstLine) {
    begin_ = end_ = buffer_.data();
    if (firstLine == 1) SkipByteOrderMark();
}

void CsvReader::SkipByteOrderMark() {
    while (!isComplete_ && end_ - begin_ < std::ssize(kByteOrderMark)) Fill();
    if (std::string_view(begin_, end_).starts_with(kByteOrderMark)) begin_ += kByteOrderMark.size();
    scanner_.Seek(begin_, end_);
}

void CsvReader::SkipLines(std::size_t count) {
    while (count > 0) {
        const char* const lineFeed = std::find(begin_, end_, '\n');
        if (lineFeed != end_) {
            CheckEncoding(lineFeed);  // a note may show them
            begin_ = lineFeed + 1;
            ++nextLine_;
            --count;
        } else if (isComplete_) {
            CheckEncoding(end_);
            begin_ = end_;
            break;
        } else {
            Fill();
        }
    }
    scanner_.Seek(begin_, end_);
}

bool CsvReader::Next() {
    while (ParseRow() == Outcome::kNeedsBytes) {
        if (isComplete_) return false;
        Fill();
    }
    return true;
}

void CsvReader::Fill() {
    const std::size_t used = static_cast<std::size_t>(end_ - begin_);
    const bool isLong = 2 * used > buffer_.size() - CsvScanner::kPadding;
    // Fewer bytes may be all that is there of the first row while a byte order mark is looked for; rows that stand
    // before what is no text are delivered, also where a block holds a byte.
    if (isLong && used >= kByteOrderMark.size()) CheckLongRow();
    std::memmove(buffer_.data(), begin_, used);
    // Doubling keeps the work on a row that fills many blocks linear.
    if (isLong) buffer_.resize(2 * buffer_.size() - CsvScanner::kPadding);

    char* const first = buffer_.data();
    char* const limit = first + buffer_.size() - CsvScanner::kPadding;
    char* last = first + used;
    while (last != limit && !isComplete_) {
        const std::size_t count = source_.Read(last, static_cast<std::size_t>(limit - last));
        last += count;
        isComplete_ = count == 0;
    }
    std::fill_n(last, CsvScanner::kPadding, ' ');
    begin_ = first;
    end_ = last;
    scanner_.Seek(begin_, end_);
}

/// Before more memory is taken for a row: it may be none, and never end.
void CsvReader::CheckLongRow() const {
    if (const char* const nul = std::find(begin_, end_, '\0'); nul != end_) CheckEncoding(nul + 1);
    if (static_cast<std::size_t>(end_ - begin_) >= kLongestRow) {
        throw InputError(source_.Name() + ":" + std::to_string(nextLine_) + ": " + kRowTooLong);
    }
}

CsvReader::Outcome CsvReader::ParseRow() {
    if (begin_ == end_) return Outcome::kNeedsBytes;
    cells_.clear();
    escapedCells_.clear();
    hasQuotedCell_ = false;
    const char* cell = begin_;
    for (;;) {
        const char* const special = scanner_.Next();
        if (special == nullptr) {
            if (!isComplete_) return Outcome::kNeedsBytes;
            cells_.emplace_back(cell, end_);
            next_ = end_;
            break;
        }
        if (*special == delimiter_) {
            cells_.emplace_back(cell, special);
            cell = special + 1;
            continue;
        }
        if (*special == '\n') {
            const bool hasCarriageReturn = special != cell && special[-1] == '\r';
            cells_.emplace_back(cell, special - (hasCarriageReturn ? 1 : 0));
            next_ = special + 1;
            break;
        }
        if (special != cell) Fail(special, "a double quote inside a bare cell; expected all of the cell in quotes");
        const Border border = ParseQuoted(special);
        if (border == Border::kNeedsBytes) return Outcome::kNeedsBytes;
        if (border == Border::kRowEnd) break;
        cell = next_;
    }
    FinishRow();
    return Outcome::kRow;
}

CsvReader::Border CsvReader::ParseQuoted(const char* quote) {
    hasQuotedCell_ = true;
    bool isEscaped = false;
    for (;;) {
        const char* const special = scanner_.Next();
        if (special == nullptr) {
            if (!isComplete_) return Border::kNeedsBytes;
            CheckEncoding(end_);  // what is no text is told as such, as in a cell that fills many blocks
            Fail(quote, "a quoted cell that never ends; expected a closing double quote");
        }
        if (*special != '"') continue;
        if (special + 1 != end_ && special[1] == '"') {
            scanner_.Next();
            isEscaped = true;
            continue;
        }
        const Border border = ParseBorder(special);
        if (border == Border::kNeedsBytes) return border;
        if (isEscaped) escapedCells_.push_back(cells_.size());
        cells_.emplace_back(quote + 1, special);
        return border;
    }
}

CsvReader::Border CsvReader::ParseBorder(const char* closingQuote) {
    const std::string_view rest(closingQuote + 1, end_);
    if (!isComplete_ && (rest.empty() || rest == "\r")) return Border::kNeedsBytes;
    if (rest.empty()) {
        next_ = end_;
        return Border::kRowEnd;
    }
    if (rest.starts_with(delimiter_)) {
        next_ = scanner_.Next() + 1;
        return Border::kDelimiter;
    }
    if (rest.starts_with('\n') || rest.starts_with("\r\n")) {
        next_ = scanner_.Next() + 1;
        return Border::kRowEnd;
    }
    Fail(closingQuote, "text after a closing double quote; expected " + std::string(DelimiterName(delimiter_)) +
                           " or the end of the line");
}

void CsvReader::FinishRow() {
    if (scanner_.HasOddBytes()) CheckEncoding(next_);
    scanner_.ForgetOddBytes();
    isEmptyLine_ = cells_.size() == 1 && cells_.front().empty() && !hasQuotedCell_;
    line_ = nextLine_;
    nextLine_ += hasQuotedCell_ ? static_cast<std::size_t>(std::count(begin_, next_, '\n')) : 1;
    row_ = begin_;
    UnescapeCells();
    begin_ = next_;
}

void CsvReader::UnescapeCells() {
    for (const std::size_t index : escapedCells_) {
        std::string_view& cell = cells_[index];
        char* const first = buffer_.data() + (cell.data() - buffer_.data());
        char* const last = first + cell.size();
        // Within a quoted cell every quote is doubled, so that each pair is two equal neighbours and no pair overlaps.
        char* out = first;
        for (const char* in = first; in != last; ++in) {
            *out++ = *in;
            if (*in == '"') ++in;
        }
        cell = std::string_view(first, out);
    }
}

void CsvReader::CheckEncoding(const char* last) const {
    const char* const bad = FindInvalidUtf8(begin_, last);
    if (bad == last) return;
    char byte[8];
    std::snprintf(byte, sizeof byte, "0x%02X", static_cast<unsigned char>(*bad));
    throw InputError(source_.Name() + ":" + std::to_string(LineOf(bad)) + ": byte " + byte +
                     "; expected text in UTF-8, or its encoding told: --encoding " +
                     (*bad == '\0' ? "utf-16le" : "windows-1252"));
}

std::size_t CsvReader::LineOf(const char* position) const {
    return nextLine_ + static_cast<std::size_t>(std::count(begin_, position, '\n'));
}

void CsvReader::Fail(const char* position, const std::string& what) const {
    CheckEncoding(position);
    throw InputError(source_.Name() + ":" + std::to_string(LineOf(position)) + ": " + what);
}

}  // namespace tarn
