#include "runtime/common/XmlCharacters.h"

#include <cstddef>
#include <cstdint>

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
