#include "host/table/CellValue.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn {
namespace {

using Parser = std::optional<double> (*)(std::string_view);

struct Known {
    std::string text;
    double value;
};

template <std::size_t count>
void ExpectValues(Parser parse, const Known (&known)[count]) {
    for (const Known& test : known) {
        const std::optional<double> value = parse(test.text);
        ASSERT_TRUE(value) << test.text;
        EXPECT_EQ(*value, test.value) << test.text;
    }
}

template <std::size_t count>
void ExpectNone(Parser parse, const char* const (&texts)[count]) {
    for (const char* text : texts) EXPECT_FALSE(parse(text)) << text;
}

TEST(CellValue, TrimsBlanksAndTabsAlone) {
    EXPECT_EQ(TrimBlanks(" \ta b\t "), "a b");
    EXPECT_EQ(TrimBlanks(" \t "), "");
    EXPECT_EQ(TrimBlanks(""), "");
    EXPECT_EQ(TrimBlanks("\na\r"), "\na\r");
}

TEST(CellValue, ReadsBooleans) {
    ExpectValues(ParseBoolean,
                 {{"true", 1}, {"True", 1}, {"TRUE", 1}, {"1", 1}, {"false", 0}, {"False", 0}, {"FALSE", 0}, {"0", 0}});
    ExpectNone(ParseBoolean, {"", "yes", "no", "t", "tRUE", "2", "1.0", "true "});
}

// Day numbers: date -u -d DATE +%s, divided by 86400.
TEST(CellValue, ReadsDates) {
    ExpectValues(ParseDate, {{"1970-01-01", 0},
                             {"1970-01-02", 1},
                             {"1969-12-31", -1},
                             {"2000-02-29", 11016},
                             {"2000-03-01", 11017},
                             {"2024-12-31", 20088},
                             {"1900-03-01", -25508},
                             {"1582-10-15", -141427},
                             {"1582-10-14", -141428},
                             {"0001-01-01", -719162},
                             {"0000-03-01", -719468},
                             {"9999-12-31", 2932896}});
    ExpectNone(ParseDate, {"", "2023-02-29", "1900-02-29", "2023-04-31", "2023-00-10", "2023-13-01", "2023-01-00",
                           "2023-1-1", "23-01-01", "12023-01-01", "-2023-01-01", "2023/01/01", "20230101",
                           "2023-01-01 ", "2023-01-01T00:00", "2023-01", "2023-01-0x"});
}

TEST(CellValue, ReadsTimes) {
    ExpectValues(ParseTime, {{"00:00", 0},
                             {"00:01", 60},
                             {"13:45", 49500},
                             {"13:45:07", 49507},
                             {"23:59:59", 86399},
                             {"00:00:00.5", 0.5},
                             {"12:00:01.250", 43201.25},
                             {"23:59:59.999", 86399.999}});
    ExpectNone(ParseTime,
               {"", "1:00", "24:00", "12:60", "12:00:60", "12", "12:", "12:0", "12:00:", "12:00:0", "12:00:00.",
                "12:00:00.x", "12:00:00.5e3", "12:00:00,5", "12:00:00Z", "12.00", "12:00 ", "12:00:00:00"});
}

// Seconds: date -u -d TEXT +%s.
TEST(CellValue, ReadsDatesWithTimes) {
    ExpectValues(ParseDateTime, {{"1970-01-01T00:00", 0},
                                 {"1970-01-01 00:00:01", 1},
                                 {"1970-01-01T00:00:00Z", 0},
                                 {"2001-09-09T01:46:40Z", 1e9},
                                 {"2001-09-09 03:46:40+02:00", 1e9},
                                 {"2001-09-08T22:16:40-03:30", 1e9},
                                 {"2001-09-09T01:46Z", 999999960},
                                 {"2001-09-09T01:46:40.125Z", 1000000000.125},
                                 {"1969-12-31T23:59:59.5", -0.5},
                                 {"1969-12-31T23:59:59.5-00:00", -0.5},
                                 {"0001-01-01T00:00", -62135596800}});
    ExpectNone(ParseDateTime, {"", "2001-09-09", "2001-09-09T", "2001-09-09_01:46", "2001-09-09t01:46", "T01:46",
                               "2001-09-09T01:46:40z", "2001-09-09T01:46:40+2:00", "2001-09-09T01:46:40+0200",
                               "2001-09-09T01:46:40+24:00", "2001-09-09T01:46:40+", "2001-09-09T01:46:40Z+01:00",
                               "2001-09-09T01:46:40 Z", "2001-02-30T01:46", "2001-09-09T25:00", "2001-09-09  01:46"});
}

TEST(CellValue, ReadsACellByItsType) {
    EXPECT_EQ(ParseCell(FieldType::kNumber, "1.5"), 1.5);
    EXPECT_EQ(ParseCell(FieldType::kInteger, "1.5"), 1.5);
    EXPECT_EQ(ParseCell(FieldType::kBoolean, "true"), 1);
    EXPECT_EQ(ParseCell(FieldType::kDate, "1970-01-03"), 2);
    EXPECT_EQ(ParseCell(FieldType::kTime, "00:02"), 120);
    EXPECT_EQ(ParseCell(FieldType::kDateTime, "1970-01-01T00:02"), 120);
    EXPECT_EQ(ParseCell(FieldType::kNumber, "true"), std::nullopt);
    EXPECT_EQ(ParseCell(FieldType::kDate, "2"), std::nullopt);
}

}  // namespace
}  // namespace tarn
