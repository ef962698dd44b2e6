#include "runtime/common/DecimalNumber.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <random>
#include <regex>
#include <string>
#include <string_view>

#include "runtime/common/PlainDecimal.h"

namespace {

// strtod of the C library is the independent route: it rounds correctly whatever the length of the text.
void ExpectNearestDouble(const std::string& text) {
    const std::optional<double> number = ParseDecimal(text);
    ASSERT_TRUE(number) << text;
    const double expected = std::strtod(text.c_str(), nullptr);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(*number), std::bit_cast<std::uint64_t>(expected)) << text;
}

class Digits {
 public:
    explicit Digits(std::uint64_t seed) : random_(seed) {}

    std::uint64_t Below(std::uint64_t limit) { return random_() % limit; }
    std::string Take(std::uint64_t count) {
        std::string digits;
        while (digits.size() < count) digits += static_cast<char>('0' + Below(10));
        return digits;
    }

 private:
    std::mt19937_64 random_;
};

TEST(DecimalNumber, IsTheNearestDoubleOfRandomTexts) {
    Digits digits(20240601);
    for (int i = 0; i < 100000; ++i) {
        std::string text = digits.Take(1 + digits.Below(22));
        if (digits.Below(4) != 0) text.insert(digits.Below(text.size() + 1), ".");
        if (digits.Below(3) == 0) text += "e" + std::to_string(static_cast<int>(digits.Below(640)) - 340);
        if (digits.Below(2) == 0) text.insert(0, "-");
        if (std::isinf(std::strtod(text.c_str(), nullptr))) {
            EXPECT_FALSE(ParseDecimal(text)) << text;
        } else {
            ExpectNearestDouble(text);
        }
    }
}

// Seventeen digits are what the usual writers of doubles give, and most such numbers lie beyond 2^53.
TEST(DecimalNumber, ReadsBackWhatSeventeenDigitsTell) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 100000; ++i) {
        const double written = std::ldexp(static_cast<double>(random() >> 11), -static_cast<int>(random() % 70));
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", written);
        ASSERT_EQ(ParseDecimal(text), written) << text;
    }
}

// Any string of the bytes that numbers are written with. The pattern says which of them are numbers, strtod which ones.
TEST(DecimalNumber, AcceptsWhatThePatternSaysAndNothingElse) {
    static const std::regex pattern(R"([+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?)");
    constexpr std::string_view kBytes = "0000123456789999..-+eE ,x";
    Digits digits(20240603);
    int numbers = 0;
    for (int i = 0; i < 60000; ++i) {
        std::string text;
        for (std::uint64_t length = digits.Below(12); text.size() < length;)
            text += kBytes[digits.Below(kBytes.size())];
        if (digits.Below(3) == 0) text = "0." + std::string(digits.Below(30), '0') + digits.Take(digits.Below(22));
        const bool isNumber = std::regex_match(text, pattern) && std::isfinite(std::strtod(text.c_str(), nullptr));
        ASSERT_EQ(ParseDecimal(text).has_value(), isNumber) << text;
        if (isNumber) ExpectNearestDouble(text);
        numbers += isNumber ? 1 : 0;
    }
    EXPECT_GT(numbers, 20000);
}

// A number is read where it stands: the same value, and the end in front of what doesn't belong to it.
TEST(DecimalNumber, IsReadAtItsPlace) {
    Digits digits(20240604);
    constexpr std::string_view kBehind[] = {",7", "\n1234567890", "\r\n", "", "e5", "x", " "};
    for (int i = 0; i < 60000; ++i) {
        std::string text = digits.Take(1 + digits.Below(20));
        if (digits.Below(4) != 0) text.insert(digits.Below(text.size() + 1), ".");
        if (digits.Below(2) == 0) text.insert(0, "-");
        const std::string line = text + std::string(kBehind[digits.Below(std::size(kBehind))]);
        double value = 0;
        const char* const end = plain_decimal::Read(line.data(), line.data() + line.size(), value);
        if (end == nullptr) continue;  // the other way knows better
        ASSERT_EQ(end, line.data() + text.size()) << line;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(std::strtod(text.c_str(), nullptr)))
            << text;
    }
    for (const std::string_view none : {"", "-", ".", "-.", ",1", "x", "+1", " 1"}) {
        double value = 0;
        EXPECT_EQ(plain_decimal::Read(none.data(), none.data() + none.size(), value), nullptr) << none;
    }
}

// Going over numbers ends where reading them one after the other does.
TEST(DecimalNumber, IsSkippedAsFarAsItIsRead) {
    Digits digits(20240605);
    int skipped = 0;
    for (int i = 0; i < 60000; ++i) {
        std::string line;
        const std::size_t count = 1 + digits.Below(8);
        for (std::size_t number = 0; number < count; ++number) {
            if (number > 0) line += digits.Below(100) == 0 ? ";" : ",";
            std::string text =
                digits.Take(digits.Below(60) == 0 ? 0 : 1 + digits.Below(digits.Below(50) == 0 ? 70 : 18));
            if (digits.Below(4) != 0) text.insert(digits.Below(text.size() + 1), ".");
            if (digits.Below(60) == 0) text.insert(digits.Below(text.size() + 1), digits.Below(2) == 0 ? "." : "-");
            line += (digits.Below(2) == 0 ? "-" : "") + text;
        }
        const std::size_t size = line.size();
        line += "\n" + std::string(plain_decimal::kSkipWidth, '0');
        const char* expected = line.c_str();
        for (std::size_t number = 0; expected != nullptr && number < count; ++number) {
            static const std::regex pattern("-?([0-9]+\\.?[0-9]*|\\.[0-9]+)");
            const bool isThere = number == 0 || *expected++ == ',';
            std::cmatch match;
            const bool isNumber = isThere && std::regex_search(expected, line.c_str() + size, match, pattern,
                                                               std::regex_constants::match_continuous);
            expected = isNumber && *match[0].second != '.' ? match[0].second : nullptr;
        }
        const char* const end = plain_decimal::SkipNumbers(line.data(), count);
        if (end == nullptr) continue;  // the other way knows better
        ASSERT_EQ(end - line.data(), expected - line.data()) << line;
        ++skipped;
    }
    EXPECT_GT(skipped, 20000);
}

// The middle between two doubles rounds to the even one; one digit more on either side decides otherwise.
TEST(DecimalNumber, DecidesTheMiddleBetweenTwoDoubles) {
    std::mt19937_64 random(11);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t odd = (random() >> 10 | std::uint64_t{1} << 53) | 1;  // 54 bits, of which a double has 53
        ExpectNearestDouble(std::to_string(odd));
        ExpectNearestDouble(std::to_string(odd) + ".0");
        ExpectNearestDouble(std::to_string(odd) + ".01");
        ExpectNearestDouble(std::to_string(odd - 1) + ".99");
    }
}

// Shifted to the upper end of 64 bits their products come within 2 of 2^63, which a whole number with a sign can't
// hold.
TEST(DecimalNumber, ReadsNumbersAtTheEndOfTheirBits) {
    for (unsigned bits = 54; bits <= 64; ++bits) {
        const std::uint64_t largest = ~std::uint64_t{0} >> (64 - bits);
        for (std::uint64_t below = 0; below < 5; ++below) {
            ExpectNearestDouble(std::to_string(largest - below));
            ExpectNearestDouble("-" + std::to_string(largest - below) + ".0");
        }
    }
}

TEST(DecimalNumber, AcceptsEverySpellingOfADecimalNumber) {
    const std::pair<const char*, double> spellings[] = {
        {"0", 0},
        {"-0", -0.0},
        {"+1", 1},
        {"1.", 1},
        {".5", 0.5},
        {"-.5", -0.5},
        {"+.5", 0.5},
        {"007", 7},
        {"1e3", 1000},
        {"1E+3", 1000},
        {"1.5e-3", 0.0015},
        {"12345678", 12345678},
        {"123456789.12345678", 123456789.12345678},
        {"9007199254740993", 9007199254740992},
        {"9999999999999999999", 1e19},
        {"18446744073709551616", 18446744073709551616.0},
        {"0.0000000000000000000000000000001", 1e-31},
        {"1.7976931348623157e308", std::numeric_limits<double>::max()},
        {"5e-324", 5e-324},
        {"1e-999", 0},
        {"0e999999999999", 0},
    };
    for (const auto& [text, expected] : spellings) {
        const std::optional<double> number = ParseDecimal(text);
        ASSERT_TRUE(number) << text;
        EXPECT_EQ(*number, expected) << text;
        EXPECT_EQ(std::signbit(*number), std::signbit(expected)) << text;
    }
}

TEST(DecimalNumber, RejectsEverythingElse) {
    for (const char* text : {"",
                             "-",
                             "+",
                             ".",
                             "-.",
                             "e5",
                             ".e5",
                             "1e",
                             "1e+",
                             "--1",
                             "+-1",
                             "-+1",
                             "++1",
                             "1-",
                             "1.2.3",
                             "1,5",
                             " 1",
                             "1 ",
                             "1 2",
                             "1_000",
                             "1'000",
                             "0x10",
                             "0x1p3",
                             "inf",
                             "-inf",
                             "+inf",
                             "infinity",
                             "nan",
                             "-nan",
                             "nan(1)",
                             "NA",
                             "1e999",
                             "-1e999",
                             "1.7976931348623159e308",
                             "1f",
                             "1e5.0",
                             "1234567a",
                             "12345678a",
                             "1234567812345678:",
                             "1234567/",
                             "\xd9\xa1"}) {
        EXPECT_FALSE(ParseDecimal(text)) << text;
    }
    EXPECT_FALSE(ParseDecimal(std::string_view("1\0", 2)));
    EXPECT_FALSE(ParseDecimal(std::string_view("1234567\0", 8)));
}

TEST(DecimalNumber, LeavesTheValueAloneWhereThereIsNone) {
    double value = 42;
    EXPECT_FALSE(ParseDecimal("x", value));
    EXPECT_FALSE(ParseDecimal("1e999", value));
    EXPECT_EQ(value, 42);
}

}  // namespace
