#include "host/InputError.h"

#include <algorithm>

#include "host/Utf8.h"

namespace tarn {

namespace {

constexpr std::size_t kMaxAlternatives = 12;
constexpr std::size_t kLongestLine = 8000;
constexpr std::size_t kLongestWord = 1000;

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

bool IsContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

/// The longest part that ends with a character and has at most so many bytes.
std::string_view Cut(std::string_view text, std::size_t most) {
    if (text.size() <= most) return text;
    while (most > 0 && IsContinuationByte(text[most])) --most;
    return text.substr(0, most);
}

/// A byte that is no part of a character as "\xFF", so that a message is text whatever a word or a name is made of.
std::string AsText(std::string_view line) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    const char* next = line.data();
    const char* const end = next + line.size();
    while (next < end) {
        const char* const odd = FindInvalidUtf8(next, end);
        text.append(next, odd);
        if (odd == end) break;
        const auto byte = static_cast<unsigned char>(*odd);
        if (byte == 0) {
            text += '?';
        } else {
            text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
        }
        next = odd + 1;
    }
    std::replace_if(text.begin(), text.end(), IsControl, '?');
    return text;
}

/// What stands before and behind a word that is far longer than any name is the message.
std::string WithShortWords(std::string_view line) {
    std::string text;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find(' '), line.size());
        text += Cut(line.substr(0, end), kLongestWord);
        if (end > kLongestWord) text += "...";
        const std::size_t next = std::min(line.find_first_not_of(' ', end), line.size());
        text += line.substr(end, next - end);
        line.remove_prefix(next);
    }
    return text;
}

std::string Shown(const std::string& line) {
    const std::string whole = WithShortWords(AsText(line));
    std::string shown(Cut(whole, kLongestLine));
    if (shown.size() < whole.size()) shown += "...";
    return shown;
}

}  // namespace

InputError::InputError(const std::string& line) : std::runtime_error(Shown(line)) {}

std::string Quoted(std::string_view text, std::size_t maxLength) {
    const std::size_t length = Cut(text, maxLength).size();
    std::string quoted = "\"";
    for (const char c : text.substr(0, length)) {
        switch (c) {
            case '\n':
                quoted += "\\n";
                break;
            case '\r':
                quoted += "\\r";
                break;
            case '\t':
                quoted += "\\t";
                break;
            default:
                quoted += c;
        }
    }
    if (length < text.size()) quoted += "...";
    return quoted + '"';
}

std::string Alternatives(std::span<const std::string_view> texts, std::string_view last) {
    const std::size_t count = std::min(texts.size(), kMaxAlternatives);
    std::string list;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) list += i + 1 == texts.size() ? last : ", ";
        list += Quoted(texts[i]);
    }
    if (count < texts.size()) {
        const bool isChoice = last == " or ";
        list += std::string(last) + (isChoice ? "one of " : "") + std::to_string(texts.size() - count) + " more";
    }
    return list;
}

}  // namespace tarn
