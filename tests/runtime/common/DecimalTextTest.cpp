#include "runtime/common/DecimalText.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace {

std::string Written(double value) {
    char text[kDecimalTextRoom];
    return {text, WriteDecimal(value, text)};
}

/// The definition: what printf writes.
std::string Printed(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", value);
    return text;
}

/// Numbers around one at which something changes.
void ExpectAllNear(double value) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    double below = value;
    double above = value;
    for (int i = 0; i < 4; ++i) {
        for (const double near : {below, above, -below, -above}) {
            ASSERT_EQ(Written(near), Printed(near));
        }
        below = std::nextafter(below, 0.0);
        above = std::nextafter(above, kLargest);
    }
}

TEST(DecimalText, WhatIsNoFiniteNumber) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Written(kNan), "nan");
    EXPECT_EQ(Written(-kNan), "nan");
    EXPECT_EQ(Written(kInfinity), "inf");
    EXPECT_EQ(Written(-kInfinity), "-inf");
}

TEST(DecimalText, TheFormsOfANumber) {
    EXPECT_EQ(Written(0.0), "0");
    EXPECT_EQ(Written(-0.0), "-0");
    EXPECT_EQ(Written(100), "100");
    EXPECT_EQ(Written(-12.5), "-12.5");
    EXPECT_EQ(Written(1.0 / 3), "0.333333333333333");
    EXPECT_EQ(Written(0.00012), "0.00012");
    EXPECT_EQ(Written(0.000012), "1.2e-05");
    EXPECT_EQ(Written(1e15), "1e+15");
    EXPECT_EQ(Written(1.25e100), "1.25e+100");
    EXPECT_EQ(Written(999999999999999), "999999999999999");
}

TEST(DecimalText, ATieGoesToTheEvenDigit) {
    // A half behind the 15th digit, which a double holds.
    EXPECT_EQ(Written(100000000000000.5), "100000000000000");
    EXPECT_EQ(Written(100000000000001.5), "100000000000002");
    EXPECT_EQ(Written(0.5000000000000000), "0.5");
    EXPECT_EQ(Written(999999999999999.5), "1e+15");
    EXPECT_EQ(Written(1000000000000025.0), "1.00000000000002e+15");
    EXPECT_EQ(Written(1000000000000035.0), "1.00000000000004e+15");
}

TEST(DecimalText, PowersOfTenAndOfTwoAndTheirNeighbours) {
    for (int power = -323; power <= 308; ++power) ExpectAllNear(std::pow(10.0, power));
    for (int power = -1074; power < 1024; ++power) ExpectAllNear(std::ldexp(1.0, power));
    ExpectAllNear(std::numeric_limits<double>::max());
}

TEST(DecimalText, NumbersOfAllSizesAreWrittenAsPrintfDoes) {
    std::mt19937_64 random(15);
    std::normal_distribution<double> normal;
    for (int i = 0; i < 150000; ++i) {
        const std::uint64_t bits = random();
        const int small = static_cast<int>(random() % 128);
        for (const double value : {
                 std::bit_cast<double>(bits & 0x7fefffffffffffff),                             // any finite number
                 std::bit_cast<double>(bits & 0x000fffffffffffff),                             // a subnormal one
                 normal(random),                                                               // what statistics are
                 static_cast<double>(bits % 2000001) / 1000 - 1000,                            // data of three decimals
                 static_cast<double>(bits >> (bits % 64)),                                     // whole numbers
                 static_cast<double>(bits >> 14) + 0.5,                                        // halves
                 std::ldexp(static_cast<double>(bits >> 11), -small),                          // binary fractions
                 static_cast<double>(bits % 100000000000000000) / std::pow(10.0, small % 23),  // decimal ones
                 -std::exp(-static_cast<double>(bits % 100000) / 100),                         // significances
             }) {
            ASSERT_EQ(Written(value), Printed(value));
        }
    }
}

TEST(DecimalText, NumbersNearATieAreWrittenAsPrintfDoes) {
    std::mt19937_64 random(16);
    for (int i = 0; i < 100000; ++i) {
        // 15 digits and a half, moved to all places: the nearest double lies on either side, or is a tie.
        const double digits = static_cast<double>(100000000000000 + random() % 900000000000000) + 0.5;
        const double value = digits * std::pow(10.0, static_cast<int>(random() % 80) - 60);
        for (const double near : {value, std::nextafter(value, 0.0), std::nextafter(value, 2 * value)}) {
            ASSERT_EQ(Written(near), Printed(near));
        }
    }
}

}  // namespace
