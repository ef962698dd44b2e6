#include "host/report/plot/TextWidth.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>

namespace tarn {

namespace {

constexpr char32_t kFirstInTable = U' ';
/// In thousandths of the size, from the blank to the tilde: of DejaVu Sans and Liberation Sans the wider one.
constexpr std::array<int, 95> kWidths{318,  401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361, 318, 337,
                                      636,  636, 636, 636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 556,
                                      1015, 684, 686, 722, 770, 667, 611, 778, 752, 295, 500, 667, 557, 863, 748, 787,
                                      667,  787, 722, 667, 611, 732, 684, 989, 685, 667, 685, 390, 337, 390, 838, 556,
                                      500,  613, 635, 550, 635, 615, 352, 635, 634, 278, 278, 579, 278, 974, 634, 612,
                                      635,  635, 411, 521, 392, 634, 592, 818, 592, 592, 525, 636, 337, 636, 838};

/// Letters of a range of characters, which ends before `end`.
struct RangeWidth {
    char32_t end;
    int width;
};
constexpr std::array kRanges{
    RangeWidth{0x0300, 720},    // Latin with marks
    RangeWidth{0x0370, 0},      // marks that stand above another letter
    RangeWidth{0x0400, 780},    // Greek
    RangeWidth{0x0530, 850},    // Cyrillic
    RangeWidth{0x0E00, 900},    // Hebrew, Arabic, the scripts of India
    RangeWidth{0x2000, 950},    // Thai and others
    RangeWidth{0x2010, 500},    // blanks and marks of direction
    RangeWidth{0x2030, 1000},   // dashes, quotes, the ellipsis
    RangeWidth{0x1F000, 1050},  // signs, and the scripts of East Asia
    RangeWidth{0x110000, 1400}  // emoji
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

/// Of a character in UTF-8 any byte but the first.
bool IsWithinCharacter(char byte) {
    constexpr unsigned char kMask = 0xC0;
    constexpr unsigned char kContinued = 0x80;
    return (static_cast<unsigned char>(byte) & kMask) == kContinued;
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

/// How many bytes all texts have in common at their beginning, or at their end; never a part of a character.
std::size_t CommonBegin(const std::set<std::string>& texts) {
    std::size_t length = texts.begin()->size();
    for (const std::string& text : texts) {
        const auto ends = std::mismatch(text.begin(), text.end(), texts.begin()->begin(), texts.begin()->end());
        length = std::min(length, static_cast<std::size_t>(ends.first - text.begin()));
    }
    while (length > 0 && length < texts.begin()->size() && IsWithinCharacter((*texts.begin())[length])) --length;
    return length;
}

std::size_t CommonEnd(const std::set<std::string>& texts) {
    const std::string& one = *texts.begin();
    std::size_t length = one.size();
    for (const std::string& text : texts) {
        const auto ends = std::mismatch(text.rbegin(), text.rend(), one.rbegin(), one.rend());
        length = std::min(length, static_cast<std::size_t>(ends.first - text.rbegin()));
    }
    while (length > 0 && IsWithinCharacter(one[one.size() - length])) --length;
    return length;
}

/// What of a text lies between both, with as much of its beginning as there is room for.
std::string Distinguished(const std::string& text, std::size_t begin, std::size_t end, double width, double fontSize) {
    const std::size_t tail = std::max(text.size() - std::min(end, text.size()), begin);
    const std::string after = tail < text.size() ? std::string(kEllipsis) : "";
    std::size_t from = begin;
    const auto shown = [&](std::size_t first) {
        return (first > 0 ? std::string(kEllipsis) : "") + text.substr(first, tail - first) + after;
    };
    if (TextWidth(shown(from), fontSize) > width) return FittedText(shown(from), width, fontSize);
    while (from > 0) {
        std::size_t next = from - 1;
        while (next > 0 && IsWithinCharacter(text[next])) --next;
        if (TextWidth(shown(next), fontSize) > width) break;
        from = next;
    }
    return shown(from);
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

std::vector<std::string> FittedNames(const std::vector<std::string>& names, double width, double fontSize) {
    std::vector<std::string> fitted;
    for (const std::string& name : names) fitted.push_back(FittedText(name, width, fontSize));
    const std::set<std::string> different(names.begin(), names.end());
    const std::set<std::string> look(fitted.begin(), fitted.end());
    if (look.size() == different.size() || different.size() < 2) return fitted;
    const std::size_t begin = CommonBegin(different);
    const std::size_t end = CommonEnd(different);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (fitted[i] != names[i]) fitted[i] = Distinguished(names[i], begin, end, width, fontSize);
    }
    return fitted;
}

}  // namespace tarn
