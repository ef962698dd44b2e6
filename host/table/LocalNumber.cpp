#include "host/table/LocalNumber.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "host/table/CellValue.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

constexpr std::size_t kGroup = 3;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t DigitsInFront(std::string_view text) {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count])) ++count;
    return count;
}

/// Takes the digits of a whole number with its marks from the front of `rest`; false where the groups are none.
bool TakeGroups(std::string_view& rest, char mark, std::string& plain) {
    std::size_t count = DigitsInFront(rest);
    plain += rest.substr(0, count);
    rest.remove_prefix(count);
    if (mark == '\0') return true;
    for (bool isFirst = true;; isFirst = false) {
        const ThousandsMark found = ThousandsMarkOf(rest);
        if (found.mark != mark) return true;
        if (isFirst && (count == 0 || count > kGroup)) return false;
        rest.remove_prefix(found.size);
        count = DigitsInFront(rest);
        if (count != kGroup) return false;
        plain += rest.substr(0, count);
        rest.remove_prefix(count);
    }
}

/// Takes the sign of a currency from the front; false where there is none.
bool TakeCurrency(std::string_view& rest, std::string_view currency) {
    if (currency.empty() || !rest.starts_with(currency)) return false;
    rest = TrimBlanks(rest.substr(currency.size()));
    return true;
}

}  // namespace

std::string_view CurrencySignOf(std::string_view text) {
    static constexpr std::string_view kSigns[] = {
        "$", "\xe2\x82\xac", "\xc2\xa3", "\xc2\xa5", "\xe2\x82\xb9", "\xe2\x82\xa9", "\xe2\x82\xba", "\xe2\x82\xbd"};
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    for (const std::string_view sign : kSigns) {
        if (text.starts_with(sign) || text.ends_with(sign)) return sign;
    }
    return {};
}

ThousandsMark ThousandsMarkOf(std::string_view text) {
    static constexpr std::pair<std::string_view, char> kMarks[] = {
        {".", '.'}, {",", ','},        {"'", '\''},           {"\xe2\x80\x99", '\''},
        {" ", ' '}, {"\xc2\xa0", ' '}, {"\xe2\x80\xaf", ' '}, {"\xe2\x80\x89", ' '},
    };
    for (const auto& [spelling, mark] : kMarks) {
        if (text.starts_with(spelling)) return {mark, spelling.size()};
    }
    return {};
}

std::optional<double> ParseNumber(std::string_view text, const NumberStyle& style) {
    if (style.IsPlain()) return ParseDecimal(text);
    if (style.hasPercent && text.ends_with('%')) text = TrimBlanks(text.substr(0, text.size() - 1));
    std::string plain;
    plain.reserve(text.size());
    std::string_view rest = text;
    bool hasCurrency = TakeCurrency(rest, style.currency);
    if (rest.starts_with('-') || rest.starts_with('+')) {
        plain += rest.front();
        rest.remove_prefix(1);
        hasCurrency = hasCurrency || TakeCurrency(rest, style.currency);
    }
    if (!hasCurrency && !style.currency.empty() && rest.ends_with(style.currency)) {
        rest = TrimBlanks(rest.substr(0, rest.size() - style.currency.size()));
    }
    if (!TakeGroups(rest, style.thousands, plain)) return std::nullopt;
    if (rest.starts_with(style.decimal)) {
        plain += '.';
        rest.remove_prefix(1);
    }
    // What is left are the digits of a fraction and an exponent, where the other mark has no place.
    if (rest.find_first_of(".,") != std::string_view::npos) return std::nullopt;
    plain += rest;
    return ParseDecimal(plain);
}

}  // namespace tarn
