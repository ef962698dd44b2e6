// When a number agrees with one in print: its digits, its decimals, bounds and ties.

#include "host/verify/PrintedNumber.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "host/InputError.h"

namespace {

using tarn::Agreement;
using tarn::Compare;
using tarn::PrintedNumber;
using tarn::ReadPrintedNumber;

std::pair<int, int> DigitsAndDecimals(const std::string& text) {
    const PrintedNumber printed = ReadPrintedNumber(text, "here");
    return {printed.digits, printed.decimals};
}

Agreement Agree(const std::string& printed, const std::string& ours) {
    return Compare(ReadPrintedNumber(printed, "here"), ours);
}

TEST(PrintedNumber, HasTheDigitsThatAreWritten) {
    EXPECT_EQ(DigitsAndDecimals("0.0390"), (std::pair{3, 4}));
    EXPECT_EQ(DigitsAndDecimals("4.115e-05"), (std::pair{4, 8}));
    EXPECT_EQ(DigitsAndDecimals("-12.50"), (std::pair{4, 2}));
    EXPECT_EQ(DigitsAndDecimals("925"), (std::pair{3, 0}));
    EXPECT_EQ(DigitsAndDecimals("1.5e3"), (std::pair{2, -2}));
    EXPECT_EQ(DigitsAndDecimals("0.0000"), (std::pair{1, 4}));
    EXPECT_EQ(DigitsAndDecimals("< 2.2e-16"), (std::pair{2, 17}));
    EXPECT_TRUE(ReadPrintedNumber("< 2.2e-16", "here").isUpperBound);
}

TEST(PrintedNumber, IsRefusedWhereItIsNone) {
    for (const char* const text : {"", "p", "0.05*", "inf", "0x1", "1,5", "1.2.3", "<2", "< ", "."}) {
        try {
            ReadPrintedNumber(text, "cases[0].printed");
            ADD_FAILURE() << text;
        } catch (const tarn::InputError& mistake) {
            EXPECT_EQ(mistake.what(), "cases[0].printed: \"" + std::string(text) +
                                          "\"; expected a number as it is printed, like \"0.0390\"");
        }
    }
}

TEST(PrintedNumber, AgreesWhereOursRoundsToIt) {
    EXPECT_TRUE(Agree("0.0390", "0.03904999").agrees);
    EXPECT_TRUE(Agree("0.0390", "0.03895001").agrees);
    EXPECT_FALSE(Agree("0.0390", "0.03905001").agrees);
    EXPECT_FALSE(Agree("0.0390", "0.03894999").agrees);
    EXPECT_TRUE(Agree("925", "925.4").agrees);
    EXPECT_FALSE(Agree("925", "926").agrees);
    EXPECT_TRUE(Agree("4.115e-05", "4.11456228134595e-05").agrees);
    EXPECT_FALSE(Agree("4.115e-05", "4.1144e-05").agrees);
    EXPECT_FALSE(Agree("-1.5", "1.5").agrees);
    EXPECT_TRUE(Agree("0.0000", "0.00004").agrees);
}

TEST(PrintedNumber, AgreesWithBothRoundingsOfATie) {
    EXPECT_TRUE(Agree("0.0195", "0.01955").agrees);
    EXPECT_TRUE(Agree("0.0196", "0.01955").agrees);
    EXPECT_TRUE(Agree("-0.0195", "-0.01955").agrees);
    EXPECT_FALSE(Agree("0.0197", "0.01955").agrees);
}

TEST(PrintedNumber, CountsTheDigitsThatAgree) {
    EXPECT_EQ(Agree("0.3825", "0.3824915595748517").digits, 4);
    EXPECT_EQ(Agree("0.3825", "0.3836").digits, 2);
    EXPECT_EQ(Agree("0.3825", "0.5").digits, 0);
    EXPECT_EQ(Agree("17.356", "17.4").digits, 3);
}

TEST(PrintedNumber, OfABoundIsAgreedWithBelowIt) {
    EXPECT_TRUE(Agree("< 2.2e-16", "6.8e-23").agrees);
    EXPECT_FALSE(Agree("< 2.2e-16", "2.2e-16").agrees);
    EXPECT_FALSE(Agree("< 2.2e-16", "0.01").agrees);
}

TEST(PrintedNumber, CountsFifteenDigitsOfALongerOne) {
    EXPECT_TRUE(Agree("0.0031724568006762576", "0.00317245680067626").agrees);
    EXPECT_FALSE(Agree("0.0031724568006762576", "0.00317245680067628").agrees);
}

TEST(PrintedNumber, MayBeAllowedAnError) {
    EXPECT_FALSE(Agree("2.4e-20", "0").agrees);
    EXPECT_TRUE(Compare(ReadPrintedNumber("2.4e-20", "here"), "0", 2e-16).agrees);
    EXPECT_FALSE(Compare(ReadPrintedNumber("3.0e-16", "here"), "0", 2e-16).agrees);
}

TEST(PrintedNumber, AgreesWithNothingThatWasNeverComputed) {
    EXPECT_FALSE(Agree("0", "").agrees);
    EXPECT_FALSE(Agree("0", "nan").agrees);
    EXPECT_FALSE(Agree("< 1", "").agrees);
}

}  // namespace
