#include "host/table/CsvReader.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tests/host/InputErrorOf.h"

namespace tarn {
namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

constexpr std::size_t kSmallBlocks = 70;

Rows ReadRows(const std::string& text, std::size_t blockSize = CsvReader::kDefaultBlockSize) {
    ByteSource source = ByteSource::FromMemory("data.csv", text);
    CsvReader reader(source, blockSize);
    Rows rows;
    while (reader.Next()) rows.emplace_back(reader.Cells().begin(), reader.Cells().end());
    return rows;
}

struct Case {
    const char* name;
    std::string text;
    Rows rows;
};

const Case kCases[] = {
    {"Plain", "a,b\n1,2\n", {{"a", "b"}, {"1", "2"}}},
    {"NoLineBreakAtTheEnd", "a,b\n1,2", {{"a", "b"}, {"1", "2"}}},
    {"CarriageReturns", "a,b\r\n1,2\r\n", {{"a", "b"}, {"1", "2"}}},
    {"MixedLineBreaks", "a,b\r\n1,2\n3,4", {{"a", "b"}, {"1", "2"}, {"3", "4"}}},
    {"EmptyInput", "", {}},
    {"EmptyCells", ",\n,,\n", {{"", ""}, {"", "", ""}}},
    {"CommaAtTheEnd", "a,", {{"a", ""}}},
    {"EmptyLines", "\n\r\na\n\n", {{""}, {""}, {"a"}, {""}}},
    {"ByteOrderMark",
     "\xef\xbb\xbf"
     "a,b\n1,2\n",
     {{"a", "b"}, {"1", "2"}}},
    {"OnlyAByteOrderMark", "\xef\xbb\xbf", {}},
    {"ByteOrderMarkBeforeAQuote", "\xef\xbb\xbf\"a\",b\n", {{"a", "b"}}},
    {"ByteOrderMarkInTheMiddleIsData",
     "a\n\xef\xbb\xbf"
     "b\n",
     {{"a"},
      {"\xef\xbb\xbf"
       "b"}}},
    {"Quoted", "\"a\",\"b\"\n\"1\",2\n", {{"a", "b"}, {"1", "2"}}},
    {"QuotedAtTheEnd", "a,\"b\"", {{"a", "b"}}},
    {"QuotedBeforeCarriageReturn", "\"a\"\r\n\"b\"\r\n", {{"a"}, {"b"}}},
    {"QuotedComma", "\"a,b\",c\n", {{"a,b", "c"}}},
    {"QuotedLineBreaks", "\"a\nb\",\"c\r\nd\"\ne,f\n", {{"a\nb", "c\r\nd"}, {"e", "f"}}},
    {"QuotedQuotes", "\"say \"\"hi\"\"\",\"\"\"\"\n", {{"say \"hi\"", "\""}}},
    {"OnlyQuotes", "\"\"\"\"\"\",x\n\"\"\"a\"\"b\"\"\",y\n", {{"\"\"", "x"}, {"\"a\"b\"", "y"}}},
    {"QuotedEmpty", "\"\",\"\"\n\"\"\n", {{"", ""}, {""}}},
    {"QuotedEmptyAtTheEnd", "\"\"", {{""}}},
    {"BlanksAreData", " a , b \n", {{" a ", " b "}}},
    {"CarriageReturnWithinALineIsData", "a\rb,\r\n\rc,d\r\r\n", {{"a\rb", ""}, {"\rc", "d\r"}}},
    {"CarriageReturnAtTheEndIsData", "a,b\r", {{"a", "b\r"}}},
    {"Utf8",
     "\xc3\xa9t\xc3\xa9,\xe2\x82\xac\n\xf0\x9f\x98\x80,x\n",
     {{"\xc3\xa9t\xc3\xa9", "\xe2\x82\xac"}, {"\xf0\x9f\x98\x80", "x"}}},
    {"LongerThanAChunk",
     std::string(200, 'x') + ",\"" + std::string(100, 'y') + "\"\n",
     {{std::string(200, 'x'), std::string(100, 'y')}}},
};

TEST(CsvReader, ReadsRowsWhateverTheBlockSize) {
    for (const Case& test : kCases) {
        EXPECT_EQ(ReadRows(test.text), test.rows) << test.name;
        for (std::size_t size = 1; size <= kSmallBlocks; ++size) {
            EXPECT_EQ(ReadRows(test.text, size), test.rows) << test.name << ", blocks of " << size;
        }
    }
}

struct ErrorCase {
    std::string text;
    const char* error;
};

const ErrorCase kErrorCases[] = {
    {"a\n\"b\nc\n", "data.csv:2: a quoted cell that never ends; expected a closing double quote"},
    {"a\n\"b\n\n\",\"c", "data.csv:4: a quoted cell that never ends; expected a closing double quote"},
    {"\"", "data.csv:1: a quoted cell that never ends; expected a closing double quote"},
    {"a\n\"\"\"", "data.csv:2: a quoted cell that never ends; expected a closing double quote"},
    {"a\n\"b\"c\n", "data.csv:2: text after a closing double quote; expected a comma or the end of the line"},
    {"a\n\"b\" ,c\n", "data.csv:2: text after a closing double quote; expected a comma or the end of the line"},
    {"\"b\"\rc\n", "data.csv:1: text after a closing double quote; expected a comma or the end of the line"},
    {"\"b\"\r", "data.csv:1: text after a closing double quote; expected a comma or the end of the line"},
    {"\"a\nb\" c\n", "data.csv:2: text after a closing double quote; expected a comma or the end of the line"},
    {"a\n5\" pipe\n", "data.csv:2: a double quote inside a bare cell; expected all of the cell in quotes"},
    {"a\n \"b\"\n", "data.csv:2: a double quote inside a bare cell; expected all of the cell in quotes"},
    {"a,b\"\"\n", "data.csv:1: a double quote inside a bare cell; expected all of the cell in quotes"},
    {"a\nb\n\xff\n", "data.csv:3: byte 0xFF; expected text in UTF-8, or its encoding told: --encoding windows-1252"},
    {"a\n\"b\n\xc3(\"\n",
     "data.csv:3: byte 0xC3; expected text in UTF-8, or its encoding told: --encoding windows-1252"},
    {"a\n\xe2\x82", "data.csv:2: byte 0xE2; expected text in UTF-8, or its encoding told: --encoding windows-1252"},
    {"a\nM\xfcller \"x\"\n",
     "data.csv:2: byte 0xFC; expected text in UTF-8, or its encoding told: --encoding windows-1252"},
    {"\xff\xfe"
     "a",
     "data.csv:1: byte 0xFF; expected text in UTF-8, or its encoding told: --encoding windows-1252"},
    {std::string("a\nb\0c\n", 6),
     "data.csv:2: byte 0x00; expected text in UTF-8, or its encoding told: --encoding utf-16le"},
    {std::string("a\n1\n\0", 5),
     "data.csv:3: byte 0x00; expected text in UTF-8, or its encoding told: --encoding utf-16le"},
};

TEST(CsvReader, TellsTheLineOfWhatItCannotRead) {
    for (const ErrorCase& test : kErrorCases) {
        for (std::size_t size = 1; size <= kSmallBlocks; ++size) {
            EXPECT_EQ(InputErrorOf([&] { ReadRows(test.text, size); }), test.error)
                << testing::PrintToString(test.text) << ", blocks of " << size;
        }
    }
}

TEST(CsvReader, DeliversTheRowsBeforeAnError) {
    ByteSource source = ByteSource::FromMemory("data.csv", "a\nb\n\xff\n");
    CsvReader reader(source);
    EXPECT_TRUE(reader.Next());
    EXPECT_TRUE(reader.Next());
    EXPECT_THROW(reader.Next(), InputError);
}

TEST(CsvReader, DeliversTheRowsBeforeANulWhateverTheBlockSize) {
    const std::string text(
        "\n\0\0\0\0"
        "1",
        6);
    for (std::size_t blockSize = 1; blockSize < kSmallBlocks; ++blockSize) {
        ByteSource source = ByteSource::FromMemory("data.csv", text);
        CsvReader reader(source, blockSize);
        ASSERT_TRUE(reader.Next()) << blockSize;
        EXPECT_TRUE(reader.IsEmptyLine()) << blockSize;
        EXPECT_EQ(InputErrorOf([&] { reader.Next(); }),
                  "data.csv:2: byte 0x00; expected text in UTF-8, or its encoding told: --encoding utf-16le")
            << blockSize;
    }
}

TEST(CsvReader, CountsTheLineBreaksInQuotes) {
    ByteSource source = ByteSource::FromMemory("data.csv", "a\n\"b\n\nc\",d\r\n\"e\"\n\nf");
    CsvReader reader(source, 3);
    std::vector<std::size_t> lines;
    while (reader.Next()) lines.push_back(reader.Line());
    EXPECT_EQ(lines, (std::vector<std::size_t>{1, 2, 5, 6, 7}));
}

TEST(CsvReader, TellsAnEmptyLineFromAnEmptyQuotedCell) {
    ByteSource source = ByteSource::FromMemory("data.csv", "\n\"\"\n\r\n,\n\r");
    CsvReader reader(source);
    std::vector<bool> areEmpty;
    while (reader.Next()) areEmpty.push_back(reader.IsEmptyLine());
    EXPECT_EQ(areEmpty, (std::vector<bool>{true, false, true, false, false}));
}

TEST(CsvReader, GivesWhatItReadBehindARow) {
    ByteSource source = ByteSource::FromMemory("data.csv", "\xef\xbb\xbf\"a\nb\"\r\n1,2\n3");
    CsvReader reader(source);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Rest(), "1,2\n3");
    EXPECT_EQ(reader.NextLine(), 3u);
    EXPECT_TRUE(reader.IsRestComplete());
    ByteSource sameSource = ByteSource::FromMemory("data.csv", "a\nb\nc\n");
    CsvReader shortReader(sameSource, 3);
    ASSERT_TRUE(shortReader.Next());
    EXPECT_EQ(shortReader.Rest(), "b");
    EXPECT_FALSE(shortReader.IsRestComplete());
}

TEST(CsvReader, ReadsOnInTheMiddle) {
    // Only the first line of all may begin with a byte order mark; anywhere else it is data.
    ByteSource source = ByteSource::FromMemory("data.csv",
                                               "\xef\xbb\xbf"
                                               "a\n\"\"x\n");
    CsvReader reader(source, 100, 7);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Cells().front(),
              "\xef\xbb\xbf"
              "a");
    EXPECT_EQ(reader.Line(), 7u);
    EXPECT_EQ(InputErrorOf([&] { reader.Next(); }),
              "data.csv:8: text after a closing double quote; expected a comma or the end of the line");
}

TEST(CsvReader, StaysAtTheEnd) {
    ByteSource source = ByteSource::FromMemory("data.csv", "a");
    CsvReader reader(source);
    EXPECT_TRUE(reader.Next());
    EXPECT_FALSE(reader.Next());
    EXPECT_FALSE(reader.Next());
}

// A cell as a spreadsheet may hold it, with everything that needs quotes.
rc::Gen<std::string> AnyCell() {
    const auto piece = rc::gen::element<std::string>("a", "1", "-", ".5", ",", "\"", "\n", "\r\n", "\r", " ",
                                                     "\xc3\xa9", "\xf0\x9f\x98\x80", "a longer piece of text");
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece),
                        [](const std::vector<std::string>& pieces) {
                            std::string cell;
                            for (const std::string& text : pieces) cell += text;
                            return cell;
                        });
}

std::string Escaped(const std::string& cell, bool mayStayBare) {
    if (mayStayBare && cell.find_first_of(",\"\r\n") == std::string::npos) return cell;
    std::string escaped = "\"";
    for (const char c : cell) escaped += c == '"' ? std::string(2, c) : std::string(1, c);
    return escaped + '"';
}

TEST(CsvReader, ReadsBackWhatWasWritten) {
    EXPECT_TRUE(rc::check([] {
        // Making texts takes far longer than reading them. So rows and cells are shorter than they could be, and each
        // text is read in many ways.
        const auto anyRow = rc::gen::scale(0.2, rc::gen::nonEmpty(rc::gen::container<Row>(AnyCell())));
        const Rows rows = *rc::gen::container<Rows>(anyRow);
        const bool mayStayBare = *rc::gen::arbitrary<bool>();
        const std::string lineBreak = *rc::gen::element<std::string>("\n", "\r\n");
        const auto blockSizes =
            *rc::gen::container<std::vector<std::size_t>>(10, rc::gen::inRange<std::size_t>(1, 300));
        std::string text;
        for (const Row& row : rows) {
            for (std::size_t i = 0; i < row.size(); ++i) text += (i > 0 ? "," : "") + Escaped(row[i], mayStayBare);
            text += lineBreak;
        }
        for (const std::size_t blockSize : blockSizes) RC_ASSERT(ReadRows(text, blockSize) == rows);
    }));
}

}  // namespace
}  // namespace tarn
