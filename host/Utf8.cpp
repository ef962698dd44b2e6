#include "host/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tarn {

namespace {

bool IsBetween(char c, unsigned low, unsigned high) {
    const unsigned byte = static_cast<unsigned char>(c);
    return byte >= low && byte <= high;
}

// The length of the character at `first`, 0 for none. The second byte's range excludes the longer forms of shorter
// characters, the surrogates and what is above U+10FFFF (The Unicode Standard, table 3-7).
std::size_t CharacterLength(const char* first, const char* last) {
    const unsigned lead = static_cast<unsigned char>(*first);
    std::size_t length = 0;
    unsigned secondLow = 0x80;
    unsigned secondHigh = 0xbf;
    if (lead >= 0x01 && lead <= 0x7f) return 1;
    if (lead >= 0xc2 && lead <= 0xdf) {
        length = 2;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        length = 3;
        if (lead == 0xe0) secondLow = 0xa0;
        if (lead == 0xed) secondHigh = 0x9f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        length = 4;
        if (lead == 0xf0) secondLow = 0x90;
        if (lead == 0xf4) secondHigh = 0x8f;
    } else {
        return 0;
    }
    if (static_cast<std::size_t>(last - first) < length || !IsBetween(first[1], secondLow, secondHigh)) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if (!IsBetween(first[i], 0x80, 0xbf)) return 0;
    }
    return length;
}

// Whether all of 32 bytes are ASCII and none is a NUL: no upper bit is set, nor becomes so where 1 is taken away.
bool ArePlain(const char* bytes) {
    std::uint64_t seen = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + 8 * i, sizeof word);
        seen |= word | (word - 0x0101010101010101);
    }
    return (seen & 0x8080808080808080) == 0;
}

}  // namespace

const char* FindInvalidUtf8(const char* first, const char* last) {
    while (first != last) {
        while (last - first >= 32 && ArePlain(first)) first += 32;
        if (first == last) break;
        const std::size_t length = CharacterLength(first, last);
        if (length == 0) return first;
        first += length;
    }
    return last;
}

bool IsUtf8(std::string_view text) {
    const char* const last = text.data() + text.size();
    return FindInvalidUtf8(text.data(), last) == last;
}

}  // namespace tarn
