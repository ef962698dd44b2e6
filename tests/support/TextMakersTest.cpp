#include "support/TextMakers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <locale>
#include <string>
#include <vector>

namespace {

TEST(TextMakers, WholeNumbersAreDecimalWithoutGrouping) {
    EXPECT_EQ(IntToString(0), "0");
    EXPECT_EQ(IntToString(1234567), "1234567");
    EXPECT_EQ(IntToString(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(IntToString(2147483647), "2147483647");
    EXPECT_EQ(SizeToString(0), "0");
    EXPECT_EQ(SizeToString(18446744073709551615u), "18446744073709551615");
}

TEST(TextMakers, TruthValues) {
    EXPECT_EQ(BoolToString(true), "true");
    EXPECT_EQ(BoolToString(false), "false");
}

struct Spelling {
    double value;
    const char* text;
};

class Spellings : public testing::TestWithParam<Spelling> {};

TEST_P(Spellings, OfDoubles) {
    EXPECT_EQ(DoubleToString(GetParam().value), GetParam().text);
}

// By the rules of "%.15g"; NaN and infinities as they are defined for documents.
INSTANTIATE_TEST_SUITE_P(, Spellings,
                         testing::Values(Spelling{0.0, "0"}, Spelling{5.0, "5"}, Spelling{-5.0, "-5"},
                                         Spelling{0.1, "0.1"}, Spelling{0.1 + 0.2, "0.3"},
                                         Spelling{2.0 / 3, "0.666666666666667"}, Spelling{1e15, "1e+15"},
                                         Spelling{123456789012345.0, "123456789012345"},
                                         Spelling{1e14, "100000000000000"}, Spelling{0.0001, "0.0001"},
                                         Spelling{1e-5, "1e-05"}, Spelling{5e-324, "4.94065645841247e-324"},
                                         Spelling{-1.7976931348623157e308, "-1.79769313486232e+308"},
                                         Spelling{std::numeric_limits<double>::quiet_NaN(), "nan"},
                                         Spelling{-std::numeric_limits<double>::quiet_NaN(), "nan"},
                                         Spelling{std::numeric_limits<double>::infinity(), "inf"},
                                         Spelling{-std::numeric_limits<double>::infinity(), "-inf"}));

TEST(TextMakers, NumbersAreAppendedToATextAsTheyAreMade) {
    std::string text = "a";
    AppendInt(text, -2147483647 - 1);
    AppendDouble(text, -0.25);
    AppendDouble(text, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(text, "a-2147483648-0.25nan");
}

TEST(TextMakers, ListsAreJoinedWithoutASeparatorAtTheEnd) {
    EXPECT_EQ(JoinValues(std::vector<std::int64_t>{-9007199254740992, 0, 7}), "-9007199254740992;0;7");
    EXPECT_EQ(JoinValues(std::vector<double>{}), "");
    EXPECT_EQ(JoinValues(std::vector<double>{0.5}), "0.5");
    EXPECT_EQ(JoinValues(std::vector<double>{0.5, -1, 1.0 / 3}), "0.5;-1;0.333333333333333");
    EXPECT_EQ(JoinValues(std::vector<std::int32_t>{}), "");
    EXPECT_EQ(JoinValues(std::vector<std::int32_t>{7, 7, -1}), "7;7;-1");
}

/// Groups digits by "." and takes "," for the point, as a locale of the host may.
class ForeignNumbers : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(TextMakers, SpellNumbersAlikeWhateverTheLocaleOfStreams) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new ForeignNumbers));
    EXPECT_EQ(IntToString(1234567), "1234567");
    EXPECT_EQ(SizeToString(1234567), "1234567");
    EXPECT_EQ(DoubleToString(1234567.5), "1234567.5");
    std::locale::global(before);
}

}  // namespace
