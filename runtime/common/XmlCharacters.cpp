#include "runtime/common/XmlCharacters.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool IsXmlCharacter(std::uint32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

/// The length of the UTF-8 character at `position` if XML can hold it, else 0.
std::size_t XmlCharacterLength(std::string_view text, std::size_t position) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(position);
    if (lead < 0x80) return IsXmlCharacter(lead) ? 1 : 0;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || position + length > text.size()) return 0;
    std::uint32_t character = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(position + i) & 0xC0) != 0x80) return 0;
        character = character << 6 | (byteAt(position + i) & 0x3Fu);
    }
    constexpr std::uint32_t kSmallestOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
    return character >= kSmallestOfLength[length] && IsXmlCharacter(character) ? length : 0;
}

// Whether eight bytes stand in any place of a document as they are: printable characters of ASCII without markup.
bool ArePlain(const char* text) {
    constexpr std::uint64_t kEach = 0x0101010101010101;
    constexpr std::uint64_t kFirstBits = 0x80 * kEach;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    // The first bit of some byte is set where one of the bytes is below the limit, which is at most 0x80.
    const auto belowLimit = [](std::uint64_t all, std::uint64_t limit) { return (all - limit * kEach) & ~all; };
    const auto among = [&](char character) {
        return belowLimit(bytes ^ (static_cast<unsigned char>(character) * kEach), 1);
    };
    return ((bytes | belowLimit(bytes, 0x20) | among('&') | among('<') | among('>') | among('"')) & kFirstBits) == 0;
}

// What stands for the character of a line end, a tab, or of markup; null for a character that stands for itself. In a
// text a reader keeps tabs and line feeds; in an attribute it would take them for blanks.
const char* EscapeOf(char character, bool isAttribute) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return isAttribute ? nullptr : "&gt;";
        case '"':
            return isAttribute ? "&quot;" : nullptr;
        case '\t':
            return isAttribute ? "&#09;" : nullptr;
        case '\n':
            return isAttribute ? "&#10;" : nullptr;
        case '\r':
            return isAttribute ? "&#13;" : nullptr;
        default:
            return nullptr;
    }
}

void AppendEscaped(std::string& document, std::string_view text, bool isAttribute) {
    std::size_t written = 0;
    std::size_t position = 0;
    const auto replace = [&](std::size_t length, std::string_view replacement) {
        document.append(text, written, position - written);
        document += replacement;
        position += length;
        written = position;
    };
    while (position < text.size()) {
        if (text.size() - position >= 8 && ArePlain(text.data() + position)) {
            position += 8;
        } else if (const char* const escape = EscapeOf(text[position], isAttribute)) {
            replace(1, escape);
        } else if (const std::size_t length = XmlCharacterLength(text, position)) {
            position += length;
        } else {
            replace(1, kReplacement);
        }
    }
    document.append(text, written);
}

}  // namespace

std::string WithXmlCharactersOnly(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = XmlCharacterLength(text, position);
        clean += length > 0 ? text.substr(position, length) : kReplacement;
        position += length > 0 ? length : 1;
    }
    return clean;
}

void AppendXmlText(std::string& document, std::string_view text) {
    AppendEscaped(document, text, false);
}

void AppendXmlAttribute(std::string& document, std::string_view value) {
    AppendEscaped(document, value, true);
}
