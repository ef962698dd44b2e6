#include "host/InputError.h"

#include <algorithm>

namespace tarn {

namespace {

constexpr std::size_t kMaxAlternatives = 12;
constexpr std::size_t kLongestLine = 8000;

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

std::string Shown(const std::string& line) {
    std::string shown(Cut(line, kLongestLine));
    std::replace_if(shown.begin(), shown.end(), IsControl, '?');
    if (shown.size() < line.size()) shown += "...";
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
