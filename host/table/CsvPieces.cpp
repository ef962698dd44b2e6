#include "host/table/CsvPieces.h"

#include <algorithm>

#include "host/InputError.h"
#include "host/table/CsvReader.h"

namespace tarn {

namespace {

/// How many bytes of `text` are whole rows; 0 if there is no end of a row.
std::size_t WholeRows(std::string_view text) {
    // From the end on, so that a plain text is looked at only there.
    bool isQuoted = text.find('"') != std::string_view::npos && std::ranges::count(text, '"') % 2 != 0;
    for (std::size_t size = text.size(); size > 0; --size) {
        if (text[size - 1] == '"') isQuoted = !isQuoted;
        if (text[size - 1] == '\n' && !isQuoted) return size;
    }
    return 0;
}

/// Whether a double quote in `text`, which begins with a row, neither begins nor ends a cell nor is one of two within
/// quotes.
bool HasMisplacedQuote(std::string_view text, char delimiter) {
    constexpr std::size_t kNone = std::string_view::npos;
    std::size_t quote = text.find('"');
    while (quote != kNone) {
        if (quote > 0 && text[quote - 1] != delimiter && text[quote - 1] != '\n') return true;
        std::size_t closing = text.find('"', quote + 1);
        while (closing != kNone && text.substr(closing + 1).starts_with('"')) closing = text.find('"', closing + 2);
        if (closing == kNone) return false;
        const std::string_view behind = text.substr(closing + 1);
        const bool isBorder = behind.empty() || behind.starts_with(delimiter) || behind.starts_with('\n') ||
                              behind.starts_with("\r\n") || behind == "\r";
        if (!isBorder) return true;
        quote = text.find('"', closing + 1);
    }
    return false;
}

}  // namespace

CsvPieces::CsvPieces(ByteSource& source, std::string_view rest, bool isComplete, std::size_t pieceSize, char delimiter)
    : source_(source),
      pieceSize_(std::max<std::size_t>(pieceSize, 1)),
      delimiter_(delimiter),
      rest_(rest),
      isComplete_(isComplete) {}

void CsvPieces::Fill(CsvPiece& piece, std::size_t wanted) {
    piece.Reserve(wanted);
    while (piece.size_ < wanted && !isComplete_) {
        std::size_t count = 0;
        try {
            count = source_.Read(piece.bytes_.data() + piece.size_, wanted - piece.size_);
        } catch (const InputError&) {
            failure_ = std::current_exception();
        }
        piece.size_ += count;
        isComplete_ = count == 0;
    }
}

bool CsvPieces::Next(CsvPiece& piece) {
    // The first piece is what is there: it shows soon, and to one thread, of what kind the columns are.
    std::size_t wanted = isFirst_ && !rest_.empty() ? rest_.size() : std::max(pieceSize_, rest_.size() + 1);
    isFirst_ = false;
    piece.Reserve(rest_.size());
    std::ranges::copy(rest_, piece.bytes_.begin());
    piece.size_ = rest_.size();
    rest_.clear();

    std::size_t cut = 0;
    for (;; wanted = std::max(2 * wanted, pieceSize_)) {
        Fill(piece, wanted);
        const bool isLong = piece.size_ >= CsvReader::kLongestRow;
        if (isComplete_ && !isLong) break;
        cut = WholeRows(piece.Text());
        if (cut > 0) break;
        // Before the whole input is read for the end of a cell in quotes, the quotes are looked at; and whether it is a
        // text at all.
        if (HasMisplacedQuote(piece.Text(), delimiter_) || piece.Text().find('\0') != std::string_view::npos) {
            isComplete_ = true;
            break;
        }
        if (isLong) {
            failure_ = std::make_exception_ptr(InputError(source_.Name() + ": " + CsvReader::kRowTooLong));
            isComplete_ = true;
            break;
        }
    }
    if (failure_) piece.size_ = WholeRows(piece.Text());
    if (cut > 0) {
        rest_.assign(piece.bytes_.data() + cut, piece.size_ - cut);
        piece.size_ = cut;
    }
    if (piece.size_ == 0) return false;
    piece.hasAddedLineFeed_ = piece.bytes_[piece.size_ - 1] != '\n';
    if (piece.hasAddedLineFeed_) piece.bytes_[piece.size_] = '\n';
    std::fill_n(piece.bytes_.begin() + (piece.End() - piece.Begin()), CsvPiece::kPadding, ' ');
    piece.number_ = nextNumber_++;
    return true;
}

}  // namespace tarn
