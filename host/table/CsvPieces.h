#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "host/ByteSource.h"

namespace tarn {

/// Some whole rows of delimited values, as they stand in the input.
class CsvPiece {
 public:
    /// How many bytes after the end of the text may be looked at.
    static constexpr std::size_t kPadding = 64;

    std::string_view Text() const { return {bytes_.data(), size_}; }
    /// The text of `Text` with a line feed at its end, which the last row of an input may lack.
    const char* Begin() const { return bytes_.data(); }
    const char* End() const { return bytes_.data() + size_ + (hasAddedLineFeed_ ? 1 : 0); }
    /// Where a line feed stands that the input lacks; null if it lacks none.
    const char* AddedLineFeed() const { return hasAddedLineFeed_ ? bytes_.data() + size_ : nullptr; }
    /// The place of the piece among all, from 0.
    std::size_t Number() const { return number_; }

 private:
    friend class CsvPieces;

    /// Makes room for a text of so many bytes.
    void Reserve(std::size_t size) {
        const std::size_t needed = size + 1 + kPadding;
        if (bytes_.size() < needed) bytes_.resize(needed);
    }

    std::vector<char> bytes_;  // longer than the text
    std::size_t size_ = 0;
    bool hasAddedLineFeed_ = false;
    std::size_t number_ = 0;
};

/// Cuts an input into pieces that can be read by themselves: each begins and ends at the border of a row. A line break
/// within quotes is none, so that of the text in front of a cut every double quote has its partner.
///
/// Where quotes stand as they must not, the cuts don't matter any more: the piece with the first of them is cut as it
/// comes, and whoever reads the pieces in their order meets the mistake there.
class CsvPieces {
 public:
    /// Borrows `source`, of which `rest` was read already; `isComplete`: the rest is all there is. A piece has about
    /// `pieceSize` bytes, and more where a row has.
    CsvPieces(ByteSource& source, std::string_view rest, bool isComplete, std::size_t pieceSize, char delimiter = ',');

    /// Gives the next piece, whose memory is used again; false at the end. Not to be called by two threads at a time.
    /// A source that can't be read any more is at its end, too.
    bool Next(CsvPiece& piece);
    /// Why the source couldn't be read to its end; null if it could.
    std::exception_ptr Failure() const { return failure_; }

 private:
    void Fill(CsvPiece& piece, std::size_t wanted);

    ByteSource& source_;
    std::size_t pieceSize_;
    char delimiter_;
    std::string rest_;  // read behind the last cut
    bool isComplete_;   // the source is read to its end
    bool isFirst_ = true;
    std::size_t nextNumber_ = 0;
    std::exception_ptr failure_;
};

}  // namespace tarn
