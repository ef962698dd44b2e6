#include "host/report/plot/TextWidth.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarn {

namespace {

constexpr char32_t kFirstInTable = U' ';
/// In thousandths of the size, from the blank to the tilde: of DejaVu Sans and Liberation Sans the wider one.
constexpr std::array<int, 95> kWidths{
    318, 401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361, 318, 337, 636, 636, 636, 636, 636, 636, 636, 636,
    636, 636, 337, 337, 838, 838, 838, 556, 1015, 684, 686, 722, 770, 667, 611, 778, 752, 295, 500, 667, 557, 863, 748, 787,
    667, 787, 722, 667, 611, 732, 684, 989, 685, 667, 685, 390, 337, 390, 838, 556, 500, 613, 635, 550, 635, 615, 352, 635,
    634, 278, 278, 579, 278, 974, 634, 612, 635, 635, 411, 521, 392, 634, 592, 818, 592, 592, 525, 636, 337, 636, 838};

/// Letters of a range of characters, which ends before `end`.
struct RangeWidth {
    char32_t end;
    int width;
};
constexpr std::array kRanges{
    RangeWidth{0x0300, 720},   // Latin with marks
    RangeWidth{0x0370, 0},     // marks that stand above another letter
    RangeWidth{0x0400, 780},   // Greek
    RangeWidth{0x0530, 850},   // Cyrillic
    RangeWidth{0x0E00, 900},   // Hebrew, Arabic, the scripts of India
    RangeWidth{0x2000, 950},   // Thai and others
    RangeWidth{0x2010, 500},   // blanks and marks of direction
    RangeWidth{0x2030, 1000},  // dashes, quotes, the ellipsis
    RangeWidth{0x1F000, 1050}, // signs, and the scripts of East Asia
    RangeWidth{0x110000, 1400} // emoji
};
constexpr double kPerSize = 1000;
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

int WidthOf(char32_t character) {
    if (character < kFirstInTable) return 0;
    if (character < kFirstInTable + kWidths.size()) return kWidths[character - kFirstInTable];
    for (const RangeWidth& range : kRanges) {
        if (character < range.end) return range.width;
    }
    return kRanges.back().width;
}

struct Letter {
    std::size_t begin = 0;
    double width = 0;
};

std::size_t LengthOf(unsigned char first) {
    constexpr unsigned char kTwo = 0xC0;
    constexpr unsigned char kThree = 0xE0;
    constexpr unsigned char kFour = 0xF0;
    return first >= kFour ? 4 : first >= kThree ? 3 : first >= kTwo ? 2 : 1;
}

/// The characters of a text in UTF-8.
std::vector<Letter> LettersOf(std::string_view text, double fontSize) {
    constexpr unsigned kBits = 6;
    constexpr unsigned kLowBits = 0x3F;
    std::vector<Letter> letters;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t length = std::min(LengthOf(first), text.size() - i);
        char32_t character = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t k = 1; k < length; ++k) {
            character = character << kBits | (static_cast<unsigned char>(text[i + k]) & kLowBits);
        }
        letters.push_back({i, WidthOf(character) * fontSize / kPerSize});
        i += length;
    }
    return letters;
}

}  // namespace

double TextWidth(std::string_view text, double fontSize) {
    double width = 0;
    for (const Letter& letter : LettersOf(text, fontSize)) width += letter.width;
    return width;
}

std::string FittedText(std::string_view text, double width, double fontSize) {
    constexpr double kSlack = 1e-6;  // of a room that was made as wide as the text
    if (TextWidth(text, fontSize) <= width + kSlack) return std::string(text);
    const std::vector<Letter> letters = LettersOf(text, fontSize);
    double left = width - TextWidth(kEllipsis, fontSize);
    std::size_t head = 0;
    std::size_t tail = letters.size();
    // Head and tail grow in turn, so that both ends of the name are seen.
    while (head < tail) {
        const bool isHead = head <= letters.size() - tail;
        const double next = isHead ? letters[head].width : letters[tail - 1].width;
        if (next > left) break;
        left -= next;
        head += isHead ? 1 : 0;
        tail -= isHead ? 0 : 1;
    }
    const std::size_t headEnd = head < letters.size() ? letters[head].begin : text.size();
    const std::size_t tailBegin = tail < letters.size() ? letters[tail].begin : text.size();
    return std::string(text.substr(0, headEnd)) + std::string(kEllipsis) + std::string(text.substr(tailBegin));
}

}  // namespace tarn
