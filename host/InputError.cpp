#include "host/InputError.h"

#include <algorithm>

namespace tarn {

namespace {

constexpr std::size_t kMaxAlternatives = 12;

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

bool IsContinuationByte(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

std::string WithoutControls(std::string line) {
    std::replace_if(line.begin(), line.end(), IsControl, '?');
    return line;
}

}  // namespace

InputError::InputError(const std::string& line) : std::runtime_error(WithoutControls(line)) {}

std::string Quoted(std::string_view text, std::size_t maxLength) {
    std::size_t length = text.size();
    if (length > maxLength) {
        length = maxLength;
        while (length > 0 && IsContinuationByte(text[length])) --length;
    }
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
