#include "host/table/BlankRuns.h"

#include <cstddef>

#include "host/BlockFilter.h"

namespace tarn {

namespace {

/// What is known at one place of the text; it goes on from block to block.
class BlankRuns {
 public:
    /// Takes the next bytes and puts into `made` what becomes of them.
    void Take(std::string_view bytes, std::string& made) {
        // A tab for blanks of the block before may come first.
        made.resize(bytes.size() + 1);
        char* to = made.data();
        for (const char byte : bytes) to = Take(byte, to);
        made.resize(static_cast<std::size_t>(to - made.data()));
    }

 private:
    /// The same of one byte, at `to`. Returns the place behind.
    char* Take(char byte, char* to) {
        const bool isBlank = byte == ' ' || byte == '\t';
        if (isQuoted_ || !isBlank) {
            const bool isEnd = byte == '\n' || byte == '\r';
            const bool isAtCell = !isQuoted_ && (isAtLine_ || hasBlank_);
            if (hasBlank_ && !isAtLine_ && !isEnd) *to++ = '\t';
            const bool isQuote = byte == '"' && (isQuoted_ || isAtCell || isClosed_);
            isClosed_ = isQuote && isQuoted_;
            if (isQuote) isQuoted_ = !isQuoted_;
            hasBlank_ = false;
            isAtLine_ = !isQuoted_ && (isEnd || (isAtLine_ && IsOfMark(byte)));
            *to++ = byte;
        } else {
            hasBlank_ = true;
            isClosed_ = false;
        }
        return to;
    }

    /// The mark of UTF-8 in front of the first line is no part of its first cell.
    static bool IsOfMark(char byte) { return byte == '\xef' || byte == '\xbb' || byte == '\xbf'; }

    bool isAtLine_ = true;   // nothing but blanks since a line began
    bool hasBlank_ = false;  // that was not put anywhere yet
    bool isQuoted_ = false;
    bool isClosed_ = false;  // right behind a closing quote, which another one makes a quote in the text
};

class TabFilter : public BlockFilter {
 public:
    void Restart() override {
        BlockFilter::Restart();
        runs_ = BlankRuns();
    }

 private:
    void Convert(std::string_view bytes, std::string& made, const ByteSource&) override { runs_.Take(bytes, made); }

    BlankRuns runs_;
};

}  // namespace

std::unique_ptr<ByteFilter> TabsForBlanks() {
    return std::make_unique<TabFilter>();
}

std::string WithTabsForBlanks(std::string_view text) {
    std::string made;
    BlankRuns().Take(text, made);
    return made;
}

}  // namespace tarn
