#include "host/words/WordScanner.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr std::size_t kShownText = 60;
constexpr std::array<std::string_view, 7> kLongSigns{"<=", ">=", "==", "!=", "<>", "&&", "||"};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool BeginsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool IsOfName(char c) {
    return BeginsName(c) || IsDigit(c) || c == '.';
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

}  // namespace

WordScanner::WordScanner(std::string what, std::string text, bool patterns)
    : what_(std::move(what)), text_(std::move(text)) {
    Scan(patterns);
}

Word WordScanner::Take() {
    Word word = words_[place_];
    if (place_ + 1 < words_.size()) ++place_;
    return word;
}

bool WordScanner::Skip(std::string_view sign) {
    if (!Next().Is(sign)) return false;
    Take();
    return true;
}

bool WordScanner::SkipWord(std::string_view word) {
    if (!Next().IsWord(word)) return false;
    Take();
    return true;
}

void WordScanner::Fail(const Word& at, const std::string& mistake) const {
    throw InputError(what_ + " " + Quoted(text_, kShownText) + ": at column " + std::to_string(at.column) + ": " +
                     mistake);
}

std::string WordScanner::Shown(const Word& word) {
    return word.kind == WordKind::kEnd ? "the end" : Quoted(word.text);
}

void WordScanner::Scan(bool patterns) {
    const auto columnOf = [&](std::size_t place) {
        const auto characters = std::count_if(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(place),
                                              [](char c) { return !IsContinuation(c); });
        return static_cast<std::size_t>(characters) + 1;
    };
    const auto isPattern = [&](char c) { return patterns && (c == '*' || c == '?'); };
    std::size_t place = 0;
    const auto takeWhile = [&](auto isPart) {
        const std::size_t begin = place;
        while (place < text_.size() && isPart(text_[place])) ++place;
        return text_.substr(begin, place - begin);
    };
    while (place < text_.size()) {
        const char c = text_[place];
        if (IsBlank(c)) {
            ++place;
            continue;
        }
        Word word;
        word.column = columnOf(place);
        const bool isFraction = c == '.' && place + 1 < text_.size() && IsDigit(text_[place + 1]);
        if (c == '"' || c == '\'' || c == '`') {
            const std::size_t close = text_.find(c, place + 1);
            if (close == std::string::npos) Fail(word, std::string("the quote ") + c + " is not closed");
            word.kind = c == '`' ? WordKind::kName : WordKind::kText;
            word.isBackticked = c == '`';
            word.text = text_.substr(place + 1, close - place - 1);
            place = close + 1;
        } else if (IsDigit(c) || isFraction) {
            word.kind = WordKind::kNumber;
            word.text = takeWhile([](char d) { return IsDigit(d) || d == '.'; });
            if (place < text_.size() && (text_[place] == 'e' || text_[place] == 'E')) {
                word.text += text_[place++];
                if (place < text_.size() && (text_[place] == '-' || text_[place] == '+')) word.text += text_[place++];
                word.text += takeWhile(IsDigit);
            }
            // "2nd" is no number with a name behind it.
            if (place < text_.size() && IsOfName(text_[place])) {
                word.kind = WordKind::kName;
                word.text += takeWhile(IsOfName);
            }
        } else if (BeginsName(c) || isPattern(c)) {
            word.kind = WordKind::kName;
            word.text = takeWhile([&](char d) { return IsOfName(d) || isPattern(d); });
        } else {
            word.kind = WordKind::kSign;
            const bool isLong =
                std::ranges::find(kLongSigns, std::string_view(text_).substr(place, 2)) != kLongSigns.end();
            const std::size_t length = isLong ? 2 : 1;
            word.text = text_.substr(place, length);
            place += length;
        }
        word.end = columnOf(place);
        words_.push_back(std::move(word));
    }
    Word end;
    end.column = end.end = columnOf(text_.size());
    words_.push_back(std::move(end));
}

std::string ForShell(const std::string& argument) {
    const auto isPlain = [](char c) {
        return IsOfName(c) || c == '-' || c == ',' || c == '=' || c == '/' || c == ':' || c == '+' || c == '%';
    };
    if (!argument.empty() && std::ranges::all_of(argument, isPlain)) return argument;
    std::string quoted = "'";
    for (const char c : argument) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string ForWords(const std::string& field) {
    const bool isName = !field.empty() && BeginsName(field.front()) && std::ranges::all_of(field, IsOfName);
    return isName ? field : "`" + field + "`";
}

}  // namespace tarn
