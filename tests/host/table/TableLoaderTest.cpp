#include "host/table/TableLoader.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <span>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/InputErrorOf.h"
#include "tests/host/StandardInput.h"

namespace tarn {
namespace {

constexpr double kNone = kMissingNumber;
using Cells = std::vector<double>;
using Texts = std::vector<std::string>;

Table Load(const std::string& csv, const std::string& fields = "{}", const LoadOptions& options = {}) {
    ByteSource descriptor = ByteSource::FromMemory("fields.json", fields);
    ByteSource data = ByteSource::FromMemory("data.csv", csv);
    return LoadTable(data, ReadTableDescriptor(descriptor), options);
}

std::string ErrorOf(const std::string& csv, const std::string& fields = "{}", const LoadOptions& options = {}) {
    return InputErrorOf([&] { Load(csv, fields, options); });
}

// A table with the field "x" alone, which the descriptor describes by `keys`.
Table LoadX(const std::string& cells, const std::string& keys, const LoadOptions& options = {}) {
    return Load("x\n" + cells, R"({"fields": [{"name": "x", )" + keys + "}]}", options);
}

Cells CellsOf(const Table& table, std::size_t column = 0) {
    const std::span<const double> cells = table.Cells(column);
    return Cells(cells.begin(), cells.end());
}

Cells NumbersOf(const Table& table, std::size_t column = 0) {
    Cells numbers;
    for (const Category& category : table.Columns()[column].categories) numbers.push_back(category.number);
    return numbers;
}

Texts TextsOf(const Table& table, std::size_t column = 0) {
    Texts texts;
    for (const Category& category : table.Columns()[column].categories) texts.push_back(category.text);
    return texts;
}

const LoadOptions kExclude = [] {
    LoadOptions options;
    options.excludeUserMissing = true;
    return options;
}();

TEST(TableLoader, InfersNumbersAndTexts) {
    const Table table = Load("a,b,c,d\n1,x,NA,\"2\"\n-2.5e1,y,,3\n,x,NA,y\n");
    ASSERT_EQ(table.RowCount(), 3u);
    ASSERT_EQ(table.ColumnCount(), 4u);
    const std::vector<Column>& columns = table.Columns();
    EXPECT_EQ(columns[0].type, FieldType::kNumber);
    EXPECT_EQ(columns[0].level, FieldLevel::kContinuous);
    EXPECT_EQ(CellsOf(table, 0), (Cells{1, -25, kNone}));
    EXPECT_EQ(columns[1].type, FieldType::kString);
    EXPECT_EQ(columns[1].level, FieldLevel::kNominal);
    EXPECT_EQ(TextsOf(table, 1), (Texts{"x", "y"}));
    EXPECT_EQ(CellsOf(table, 1), (Cells{0, 1, 0}));
    // A column without any value.
    EXPECT_EQ(columns[2].type, FieldType::kNumber);
    EXPECT_EQ(columns[2].level, FieldLevel::kContinuous);
    EXPECT_EQ(CellsOf(table, 2), (Cells{kNone, kNone, kNone}));
    // Numbers that are texts after all.
    EXPECT_EQ(columns[3].type, FieldType::kString);
    EXPECT_EQ(TextsOf(table, 3), (Texts{"2", "3", "y"}));
    EXPECT_EQ(CellsOf(table, 3), (Cells{0, 1, 2}));
}

TEST(TableLoader, TakesNothingButDecimalNumbersForNumbers) {
    for (const char* text : {"inf", "nan", "0x10", "1,5", "1e999", "- 1", "1 2", "1\n"}) {
        const Table table = Load("a,b\n1,1\n\"" + std::string(text) + "\",1\n");
        EXPECT_EQ(table.Columns()[0].type, FieldType::kString) << text;
    }
    EXPECT_EQ(CellsOf(Load("a,b\n +1 ,1\n\"\t.5\",1\n")), (Cells{1, 0.5}));
}

TEST(TableLoader, CutsBlanksForMissingAndNumbersButNotForTexts) {
    const Table table = Load("a,b\n 1 , x \n \t,\" NA\"\n\"NA \",x\n,\"\"\n");
    EXPECT_EQ(CellsOf(table, 0), (Cells{1, kNone, kNone, kNone}));
    EXPECT_EQ(TextsOf(table, 1), (Texts{" x ", "x"}));
    EXPECT_EQ(CellsOf(table, 1), (Cells{0, -1, 1, -1}));
}

TEST(TableLoader, TakesTheMissingTextsOfTheDescriptorAlone) {
    const Table table = Load("a,b\n1,NA\n-99,\n?,x\n", R"({"missingValues": [-99, "?"]})");
    EXPECT_EQ(CellsOf(table, 0), (Cells{1, kNone, kNone}));
    EXPECT_EQ(TextsOf(table, 1), (Texts{"", "NA", "x"}));
    // They are texts: another spelling of the number is a value.
    EXPECT_EQ(CellsOf(Load("a,b\n-99.0,1\n", R"({"missingValues": [-99]})")), (Cells{-99}));
    EXPECT_EQ(CellsOf(Load("a,b\nNA,1\n", R"({"missingValues": [], "fields": [{"name": "a", "type": "string"}]})")),
              (Cells{0}));
}

TEST(TableLoader, SkipsEmptyLinesUnlessThereIsOneColumn) {
    EXPECT_EQ(CellsOf(Load("\n\na,b\n\n1,2\r\n\r\n\n3,4\n\n")), (Cells{1, 3}));
    EXPECT_EQ(CellsOf(Load("a\n1\n\n\r\n2\n")), (Cells{1, kNone, kNone, 2}));
    EXPECT_EQ(CellsOf(Load("a\n\n")), (Cells{kNone}));
    EXPECT_EQ(CellsOf(Load("a\n")), Cells{});
    EXPECT_EQ(Load("a,b").RowCount(), 0u);
}

TEST(TableLoader, TellsWhatIsWrongWithTheHeader) {
    EXPECT_EQ(ErrorOf(""), "data.csv: no header; expected a row with the names of the fields");
    EXPECT_EQ(ErrorOf("\n\n"), "data.csv: no header; expected a row with the names of the fields");
    EXPECT_EQ(ErrorOf("\n\na\n1\n"), "data.csv:1: an empty line; expected the name of the field");
    EXPECT_EQ(ErrorOf("a,,b\n"), "data.csv:1: column 2: an empty name; expected the name of the field");
    EXPECT_EQ(ErrorOf("\"\"\n"), "data.csv:1: column 1: an empty name; expected the name of the field");
    EXPECT_EQ(ErrorOf("a,w\001\n"),
              "data.csv:1: column 2: name \"w?\" with a control character; expected a name that a document can hold");
    EXPECT_EQ(ErrorOf("\na,b,\"a\"\n"), "data.csv:2: column 3: name \"a\" as in column 1; expected unique names");
}

TEST(TableLoader, TellsTheLineOfARowOfAnotherWidth) {
    EXPECT_EQ(ErrorOf("a,b\n1,2\n3\n"),
              "data.csv:3: 1 cell; expected 2 as in the header (a line that is no row of the table, or a line break "
              "inside a text without quotes?)");
    EXPECT_EQ(ErrorOf("a,b\n\"1\n\",2\n\n1,2,3\n"),
              "data.csv:5: 3 cells; expected 2 as in the header (a comma inside a number or a text without quotes?)");
    EXPECT_EQ(ErrorOf("a\n1,2\n"),
              "data.csv:2: 2 cells; expected 1 as in the header (a comma inside a number or a text without quotes?)");
    EXPECT_EQ(ErrorOf("a,b\n\"\"\n"),
              "data.csv:2: 1 cell; expected 2 as in the header (a line that is no row of the table, or a line break "
              "inside a text without quotes?)");
    EXPECT_EQ(ErrorOf("a,b\n \n"),
              "data.csv:2: 1 cell; expected 2 as in the header (a line that is no row of the table, or a line break "
              "inside a text without quotes?)");
}

TEST(TableLoader, ReadsTheDescribedTypes) {
    EXPECT_EQ(CellsOf(LoadX("1.5\n2\n", R"("type": "integer")")), (Cells{1.5, 2}));
    EXPECT_EQ(CellsOf(LoadX(" 1970-01-02\nNA\n", R"("type": "date")")), (Cells{1, kNone}));
    EXPECT_EQ(CellsOf(LoadX("01:00\n", R"("type": "time")")), (Cells{3600}));
    EXPECT_EQ(CellsOf(LoadX("1970-01-01T01:00Z\n", R"("type": "datetime")")), (Cells{3600}));
    const Table booleans = LoadX("true\n0\nNA\nFALSE\n", R"("type": "boolean")");
    EXPECT_EQ(booleans.Columns()[0].level, FieldLevel::kNominal);
    EXPECT_EQ(NumbersOf(booleans), (Cells{0, 1}));
    EXPECT_EQ(CellsOf(booleans), (Cells{1, 0, -1, 0}));
    const Table texts = LoadX("2\n1\n", R"("type": "string", "title": "X!")");
    EXPECT_EQ(texts.Columns()[0].title, "X!");
    EXPECT_EQ(TextsOf(texts), (Texts{"1", "2"}));
    EXPECT_EQ(CellsOf(texts), (Cells{1, 0}));
}

// Blocks are parsed while the cells of the block before are still read, so that what is told must not depend on which
// of two mistakes is met first.
TEST(TableLoader, TellsTheFirstMistakeWhateverTheBlockSize) {
    const std::string fields = R"({"fields": [{"name": "a", "type": "number"}]})";
    LoadOptions options;
    for (options.blockSize = 1; options.blockSize < 40; ++options.blockSize) {
        EXPECT_EQ(ErrorOf("a,b\n1,2\nx,2\n3\n", fields, options),
                  R"(data.csv:3: column "a": "x"; expected a decimal number)");
        EXPECT_EQ(ErrorOf("a,b\n1,2\n3\nx,2\n", fields, options),
                  "data.csv:3: 1 cell; expected 2 as in the header (a line that is no row of the table, or a line "
                  "break inside a text without quotes?)");
    }
}

// Enough cells for several pieces, of different sizes.
TEST(TableLoader, ReadsManyNumbersInTheirPlaces) {
    constexpr int kRows = 60000;
    std::string csv = "a,b,c\n";
    for (int row = 0; row < kRows; ++row) {
        csv += std::to_string(row) + ",";
        csv += row % 1000 == 999 ? "NA" : std::to_string(row) + ".5";
        csv += ",-" + std::to_string(row) + "e-3\n";
    }
    for (const std::size_t blockSize : {std::size_t{1} << 17, std::size_t{1} << 20}) {
        LoadOptions options;
        options.blockSize = blockSize;
        const Table table = Load(csv, "{}", options);
        ASSERT_EQ(table.RowCount(), static_cast<std::size_t>(kRows));
        for (int row = 0; row < kRows; ++row) {
            const auto at = static_cast<std::size_t>(row);
            ASSERT_EQ(table.Cells(0)[at], row);
            ASSERT_EQ(table.Cells(1)[at], row % 1000 == 999 ? kNone : row + 0.5);
            ASSERT_EQ(table.Cells(2)[at], -row / 1000.0);
        }
    }
}

/// A table as text, to compare two of them as a whole.
std::string Shown(const Table& table) {
    std::ostringstream text;
    text.precision(17);
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        const Column& column = table.Columns()[i];
        text << column.name << ' ' << static_cast<int>(column.type) << static_cast<int>(column.level);
        for (const Category& category : column.categories)
            text << " [" << category.number << ',' << category.text << ']';
        for (const double cell : table.Cells(i)) text << ' ' << cell;
        text << '\n';
    }
    return text.str();
}

/// The table of a text or why it is none.
std::string ShownOrError(const std::string& csv, const LoadOptions& options) {
    std::string shown;
    const std::string error = InputErrorOf([&] { shown = Shown(Load(csv, "{}", options)); });
    return error.empty() ? shown : error;
}

// Numbers, texts in quotes and bare, late texts, line breaks within quotes, missing cells, and sometimes a mistake.
TEST(TableLoader, TheTableIsTheSameForAnyNumberOfThreadsAndAnyPieces) {
    EXPECT_TRUE(rc::check([] {
        const auto cell = rc::gen::weightedElement<std::string>({{60, "1"},
                                                                 {60, "2.5"},
                                                                 {20, "-0.0012345678901234567"},
                                                                 {20, "NA"},
                                                                 {20, ""},
                                                                 {5, "1e3"},
                                                                 {5, " 7 "},
                                                                 {5, "\"8\""},
                                                                 {2, "x"},
                                                                 {2, "\"a\nb\""},
                                                                 {2, "\"\"\"\""},
                                                                 {1, "\xc3\xa9"},
                                                                 {1, "a longer text"}});
        const auto lineBreak = rc::gen::weightedElement<std::string>({{30, "\n"}, {10, "\r\n"}, {2, "\n\n"}});
        const auto rows = *rc::gen::resize(
            200, rc::gen::container<std::vector<std::pair<std::pair<std::string, std::string>, std::string>>>(
                     rc::gen::pair(rc::gen::pair(cell, cell), lineBreak)));
        const std::string mistake = *rc::gen::weightedElement<std::string>(
            {{10, ""}, {1, "1\n"}, {1, "1,2,3\n"}, {1, "a\"b,1\n"}, {1, "1,\"open\n"}, {1, "\xff,1\n"}});
        const std::size_t place = *rc::gen::inRange<std::size_t>(0, rows.size() + 1);
        std::string csv = "a,b\n";
        for (std::size_t row = 0; row <= rows.size(); ++row) {
            if (row == place) csv += mistake;
            if (row < rows.size()) csv += rows[row].first.first + "," + rows[row].first.second + rows[row].second;
        }
        LoadOptions options;
        options.threads = 1;
        const std::string whole = ShownOrError(csv, options);
        RC_ASSERT(mistake.empty() == (whole.find("expected") == std::string::npos));
        for (const std::size_t blockSize : {1, 13, 50, 200}) {
            for (options.threads = 1; options.threads <= 3; ++options.threads) {
                options.blockSize = blockSize;
                RC_ASSERT(ShownOrError(csv, options) == whole);
            }
        }
    }));
}

/// The table of a text or why it is none, where the numbers of continuous fields but "a" show as 1.
std::string ShownWithoutNumbers(const std::string& csv, const LoadOptions& options) {
    std::string shown;
    const std::string error = InputErrorOf([&] {
        Table table = Load(csv, R"({"fields": [{"name": "d", "type": "number"}]})", options);
        for (std::size_t i = 1; i < table.ColumnCount(); ++i) {
            if (table.Columns()[i].level != FieldLevel::kContinuous) continue;
            std::ranges::replace_if(
                table.Cells(i), [](double cell) { return cell != kNone; }, 1);
        }
        shown = Shown(table);
    });
    return error.empty() ? shown : error;
}

// Columns, kinds, categories, missing cells and mistakes are those of a table whose numbers are all read.
TEST(TableLoader, OfFieldsThatNobodyReadsTheNumbersAloneAreLost) {
    EXPECT_TRUE(rc::check([] {
        const auto cell =
            rc::gen::weightedElement<std::string>({{90, "2.5"},
                                                   {60, "-0.0012345678901234567"},
                                                   {20, "NA"},
                                                   {20, ""},
                                                   {5, "1e-5"},
                                                   {5, "123456789012345678901234567890.123456789012345678901234567890"},
                                                   {5, " 7 "},
                                                   {5, "\"8\""},
                                                   {5, "-1.7976931348623157e308"},  // as good as missing
                                                   {1, "1.2.3"},
                                                   {1, "2024-01-01"},
                                                   {1, "."},
                                                   {1, "-"},
                                                   {1, "1-"}});
        const auto lineBreak = rc::gen::weightedElement<std::string>({{30, "\n"}, {10, "\r\n"}, {2, "\n\n"}});
        const auto described = rc::gen::weightedElement<std::string>({{60, "1"}, {5, "NA"}, {1, "x"}});
        const int rows = *rc::gen::inRange(1, 120);
        const bool isPlain = *rc::gen::arbitrary<bool>();  // columns of numbers for the most part
        std::string csv = "a,b,c,d,e\n";
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < 5; ++column) {
                const bool isAny = !isPlain || *rc::gen::inRange(0, 20) == 0;
                csv += column == 3 ? *described : isAny ? *cell : "0.25";
                csv += column < 4 ? "," : *lineBreak;
            }
        }
        csv += *rc::gen::weightedElement<std::string>(
            {{10, ""}, {1, "1,2,3,4\n"}, {1, "1,2,3,4,5,6\n"}, {1, "1,2,3,4,5"}});
        LoadOptions options;
        options.threads = 1;
        const std::string whole = ShownWithoutNumbers(csv, options);
        options.isRead = [](const std::string& field, std::size_t) { return field == "a"; };
        for (const std::size_t blockSize : {13, 200, 100000}) {
            for (options.threads = 1; options.threads <= 2; ++options.threads) {
                options.blockSize = blockSize;
                RC_ASSERT(ShownWithoutNumbers(csv, options) == whole);
            }
        }
    }));
}

// So many rows that cells which nobody sets are 0 from some row on.
TEST(TableLoader, KnowsWhatALargeTableMissesInFieldsThatNobodyReads) {
    constexpr std::size_t kRows = 400000;
    const auto misses = [](std::size_t row) { return row % 30000 == 29999 || row < 3; };
    std::string csv = "a,b,c\n";
    for (std::size_t row = 0; row < kRows; ++row) csv += misses(row) ? "5,NA,7\n" : "5,6.5,7\n";
    LoadOptions options;
    options.isRead = [](const std::string& field, std::size_t) { return field == "a"; };
    for (options.threads = 1; options.threads <= 2; ++options.threads) {
        const Table table = Load(csv, "{}", options);
        ASSERT_EQ(table.RowCount(), kRows);
        for (std::size_t row = 0; row < kRows; ++row) {
            ASSERT_EQ(table.Cells(0)[row], 5);
            ASSERT_EQ(table.Cells(1)[row] == kNone, misses(row)) << row;
            ASSERT_NE(table.Cells(2)[row], kNone) << row;
        }
    }
}

TEST(TableLoader, ReadsTheWeightWhetherOrNotItIsAskedFor) {
    LoadOptions options;
    options.weightField = "w";
    options.isRead = [](const std::string& field, std::size_t) { return field == "a"; };
    EXPECT_EQ(CellsOf(Load("a,w\n1,2\n3,4\n", "{}", options), 1), (Cells{2, 4}));
}

TEST(TableLoader, EndsWhereItIsToldTo) {
    std::string csv = "a\n";
    for (int i = 0; i < 10000; ++i) csv += "1\n";
    LoadOptions options;
    options.blockSize = 1000;
    int questions = 0;
    options.isCancelled = [&questions] { return ++questions > 3; };
    for (const unsigned threads : {1U, 2U}) {
        options.threads = threads;
        questions = 0;
        EXPECT_THROW(Load(csv, "{}", options), LoadCancelled) << threads;
    }
    options.isCancelled = [] { return false; };
    EXPECT_EQ(Load(csv, "{}", options).RowCount(), 10000u);
}

TEST(TableLoader, TellsTheCellThatIsNoneOfItsType) {
    const auto errorOf = [](const std::string& cell, const std::string& type) {
        return InputErrorOf([&] { LoadX("NA\n" + cell + "\n", R"("type": ")" + type + '"'); });
    };
    EXPECT_EQ(errorOf("abc", "number"), R"(data.csv:3: column "x": "abc"; expected a decimal number)");
    EXPECT_EQ(errorOf("abc", "integer"), R"(data.csv:3: column "x": "abc"; expected a decimal number)");
    EXPECT_EQ(errorOf("yes", "boolean"), R"(data.csv:3: column "x": "yes"; expected true or false)");
    EXPECT_EQ(errorOf("1.1.1970", "date"), R"(data.csv:3: column "x": "1.1.1970"; expected a date YYYY-MM-DD)");
    EXPECT_EQ(errorOf("1pm", "time"), R"(data.csv:3: column "x": "1pm"; expected a time hh:mm:ss)");
    EXPECT_EQ(errorOf("1970-01-01", "datetime"),
              R"(data.csv:3: column "x": "1970-01-01"; expected a date and time YYYY-MM-DDThh:mm:ss)");
    EXPECT_EQ(errorOf("\"a\n\"\"b\"\"\"", "number"), R"(data.csv:3: column "x": "a\n"b""; expected a decimal number)");
    EXPECT_EQ(errorOf(std::string(100, 'x'), "number"),
              "data.csv:3: column \"x\": \"" + std::string(40, 'x') + "...\"; expected a decimal number");
}

TEST(TableLoader, FollowsTheRulesOfLevels) {
    const auto levelOf = [](const std::string& cells, const std::string& keys, const LoadOptions& options = {}) {
        return LoadX(cells, keys, options).Columns()[0].level;
    };
    EXPECT_EQ(levelOf("1\n", R"("type": "number")"), FieldLevel::kContinuous);
    EXPECT_EQ(levelOf("1\n", R"("level": "nominal")"), FieldLevel::kNominal);
    EXPECT_EQ(levelOf("a\n", R"("level": "ordinal")"), FieldLevel::kOrdinal);
    EXPECT_EQ(levelOf("1\n", R"("categoriesOrdered": true)"), FieldLevel::kOrdinal);
    EXPECT_EQ(levelOf("1\n", R"("categories": [1], "categoriesOrdered": true)"), FieldLevel::kOrdinal);
    EXPECT_EQ(levelOf("1\n", R"("categories": [1], "categoriesOrdered": false)"), FieldLevel::kNominal);
    EXPECT_EQ(levelOf("1\n", R"("categories": [])"), FieldLevel::kNominal);
    EXPECT_EQ(levelOf("1\n", R"("categories": [1], "level": "continuous")"), FieldLevel::kContinuous);
    EXPECT_EQ(levelOf("true\n", R"("type": "boolean", "level": "continuous")"), FieldLevel::kContinuous);
    EXPECT_EQ(levelOf("1970-01-01\n", R"("type": "date")"), FieldLevel::kContinuous);
    EXPECT_EQ(levelOf("1970-01-01\n", R"("type": "date", "level": "ordinal")"), FieldLevel::kOrdinal);
    LoadOptions options;
    options.nominal = {"x", "x"};
    EXPECT_EQ(levelOf("1\n", R"("level": "continuous")", options), FieldLevel::kNominal);
    options = {};
    options.ordinal = {"x"};
    EXPECT_EQ(levelOf("1\n", R"("type": "number")", options), FieldLevel::kOrdinal);
    EXPECT_EQ(levelOf("NA\n", R"("type": "number")", options), FieldLevel::kOrdinal);
    options = {};
    options.continuous = {"x"};
    EXPECT_EQ(levelOf("1\n", R"("categories": [1])", options), FieldLevel::kContinuous);
}

TEST(TableLoader, KnowsAFieldThatIsNominalByDefault) {
    LoadOptions options;
    options.nominalByDefault = "x";
    const auto levelOf = [&](const std::string& keys) { return LoadX("1\n", keys, options).Columns()[0].level; };
    EXPECT_EQ(Load("x\n1\n", "{}", options).Columns()[0].level, FieldLevel::kNominal);
    EXPECT_EQ(levelOf(R"("title": "X")"), FieldLevel::kNominal);
    EXPECT_EQ(levelOf(R"("type": "integer")"), FieldLevel::kNominal);
    EXPECT_EQ(levelOf(R"("level": "continuous")"), FieldLevel::kContinuous);
    EXPECT_EQ(levelOf(R"("categoriesOrdered": true)"), FieldLevel::kOrdinal);
    options.continuous = {"x"};
    EXPECT_EQ(Load("x\n1\n", "{}", options).Columns()[0].level, FieldLevel::kContinuous);
    options = {};
    options.nominalByDefault = "not there";
    EXPECT_EQ(Load("x\n1\n", "{}", options).Columns()[0].level, FieldLevel::kContinuous);
}

TEST(TableLoader, RefusesTextsAsContinuous) {
    EXPECT_EQ(InputErrorOf([] { LoadX("a\n", R"("type": "string", "level": "continuous")"); }),
              "data.csv: column \"x\": a string field as continuous; expected a field with numbers");
    EXPECT_EQ(InputErrorOf([] { LoadX("1\n", R"("categories": ["a"], "level": "continuous")"); }),
              "data.csv: column \"x\": a string field as continuous; expected a field with numbers");
    EXPECT_EQ(InputErrorOf([] { LoadX("1\na\n", R"("level": "continuous")"); }),
              "data.csv:3: column \"x\": \"a\"; expected a decimal number");
    LoadOptions options;
    options.continuous = {"x"};
    EXPECT_EQ(ErrorOf("x\n1\na\n", "{}", options), "data.csv:3: column \"x\": \"a\"; expected a decimal number");
}

TEST(TableLoader, OrdersCategories) {
    const Table numbers = LoadX("10\n9\n-0.0\n1e1\n0\n-3\n", R"("level": "nominal")");
    EXPECT_EQ(NumbersOf(numbers), (Cells{-3, 0, 9, 10}));
    EXPECT_FALSE(std::signbit(NumbersOf(numbers)[1]));
    EXPECT_EQ(CellsOf(numbers), (Cells{3, 2, 1, 3, 1, 0}));
    // By bytes: capitals first, digits as characters, what is not ASCII last.
    const Table texts = LoadX("b\na\nB\n10\n9\n\xc3\xa9\nz\n", R"("type": "string")");
    EXPECT_EQ(TextsOf(texts), (Texts{"10", "9", "B", "a", "b", "z", "\xc3\xa9"}));
    EXPECT_EQ(CellsOf(texts), (Cells{4, 3, 2, 0, 1, 6, 5}));
}

TEST(TableLoader, PutsListedCategoriesFirst) {
    const Table numbers =
        LoadX("5\n1\n2\n4\n2.0\n", R"("type": "number", "categories": [{"value": 4, "label": "four"}, "2", 7])");
    const std::vector<Category> expected = {{4, "", "four"}, {2, "", ""}, {7, "", ""}, {1, "", ""}, {5, "", ""}};
    EXPECT_EQ(numbers.Columns()[0].categories, expected);
    EXPECT_EQ(CellsOf(numbers), (Cells{4, 3, 1, 0, 1}));
    const Table texts = LoadX("b\nc\na\n", R"("categories": ["d", {"value": "c", "label": "C"}])");
    EXPECT_EQ(texts.Columns()[0].type, FieldType::kString);
    const std::vector<Category> expectedTexts = {{0, "d", ""}, {0, "c", "C"}, {0, "a", ""}, {0, "b", ""}};
    EXPECT_EQ(texts.Columns()[0].categories, expectedTexts);
    EXPECT_EQ(CellsOf(texts), (Cells{3, 1, 2}));
    const Table dates = LoadX("1970-01-03\n1970-01-01\n",
                              R"("type": "date", "level": "ordinal", "categories": ["1970-01-03", "1970-01-02"])");
    EXPECT_EQ(NumbersOf(dates), (Cells{2, 1, 0}));
}

TEST(TableLoader, InfersTheTypeOfListedCategories) {
    const Table numbers = LoadX("2\n1\n", R"("categories": ["1", 3])");
    EXPECT_EQ(numbers.Columns()[0].type, FieldType::kNumber);
    EXPECT_EQ(NumbersOf(numbers), (Cells{1, 3, 2}));
    const Table becomesText = LoadX("2\n1\nx\n", R"("categories": ["1", 3])");
    EXPECT_EQ(becomesText.Columns()[0].type, FieldType::kString);
    EXPECT_EQ(TextsOf(becomesText), (Texts{"1", "3", "2", "x"}));
    const Table textsFromTheStart = LoadX("2\n1.0\n", R"("categories": ["low"])");
    EXPECT_EQ(TextsOf(textsFromTheStart), (Texts{"low", "1.0", "2"}));
    const Table withoutRows = LoadX("", R"("categories": [2, 1])");
    EXPECT_EQ(NumbersOf(withoutRows), (Cells{2, 1}));
}

TEST(TableLoader, TellsTheCategoryThatCannotBe) {
    const auto errorOf = [](const std::string& keys) { return InputErrorOf([&] { LoadX("1\n", keys); }); };
    EXPECT_EQ(errorOf(R"("type": "number", "categories": [1, "low"])"),
              R"(fields.json: field "x": category "low"; expected a decimal number)");
    EXPECT_EQ(errorOf(R"("type": "date", "categories": ["today"])"),
              R"(fields.json: field "x": category "today"; expected a date YYYY-MM-DD)");
    EXPECT_EQ(errorOf(R"("type": "number", "categories": [1, "1.0"])"),
              R"(fields.json: field "x": category "1.0" stands twice; expected once)");
    EXPECT_EQ(errorOf(R"("categories": [0, "-0.0"])"),
              R"(fields.json: field "x": category "-0.0" stands twice; expected once)");
    EXPECT_EQ(errorOf(R"("type": "string", "categories": ["a", {"value": "a", "label": "b"}])"),
              R"(fields.json: field "x": category "a" stands twice; expected once)");
    EXPECT_EQ(TextsOf(LoadX("a\n", R"("type": "string", "categories": ["1", "1.0"])")), (Texts{"1", "1.0", "a"}));
}

TEST(TableLoader, ReadsUserMissingNumbersBothWays) {
    const std::string keys = R"("type": "number", "missingValues": [9, "-1.0"])";
    EXPECT_EQ(CellsOf(LoadX("1\n9.0\n-1\n", keys)), (Cells{1, 9, -1}));
    EXPECT_EQ(CellsOf(LoadX("1\n9.0\n-1\n", keys, kExclude)), (Cells{1, kNone, kNone}));

    const std::string nominal = keys + R"(, "categories": [9, {"value": 2, "label": "two"}])";
    EXPECT_EQ(NumbersOf(LoadX("1\n9\n", nominal)), (Cells{9, 2, 1}));
    const Table excluded = LoadX("1\n9\n2\n", nominal, kExclude);
    EXPECT_EQ(excluded.Columns()[0].categories, (std::vector<Category>{{2, "", "two"}, {1, "", ""}}));
    EXPECT_EQ(CellsOf(excluded), (Cells{1, -1, 0}));
}

TEST(TableLoader, ReadsUserMissingTextsBothWays) {
    const std::string keys = R"("type": "string", "missingValues": ["none", 9], "categories": ["none", "b"])";
    const Table included = LoadX("a\nnone\n9\n9.0\nNONE\n", keys);
    EXPECT_EQ(TextsOf(included), (Texts{"none", "b", "9", "9.0", "NONE", "a"}));
    const Table excluded = LoadX("a\nnone\n9\n9.0\nNONE\n", keys, kExclude);
    EXPECT_EQ(TextsOf(excluded), (Texts{"b", "9.0", "NONE", "a"}));
    EXPECT_EQ(CellsOf(excluded), (Cells{3, -1, -1, 1, 2}));
}

TEST(TableLoader, ReadsTextsThatAreUserMissingAmongNumbers) {
    const std::string keys = R"("type": "number", "missingValues": ["refused"])";
    EXPECT_EQ(CellsOf(LoadX("1\n refused \n", keys, kExclude)), (Cells{1, kNone}));
    EXPECT_EQ(InputErrorOf([&] { LoadX("1\nrefused\n", keys); }),
              "data.csv:3: column \"x\": \"refused\"; expected a decimal number");
    // A missing cell says nothing about the type of a column, a value does.
    const std::string untyped = R"("missingValues": ["refused"])";
    EXPECT_EQ(CellsOf(LoadX("1\nrefused\n", untyped, kExclude)), (Cells{1, kNone}));
    EXPECT_EQ(TextsOf(LoadX("1\nrefused\n", untyped)), (Texts{"1", "refused"}));
}

TEST(TableLoader, ReadsTheWeightAsContinuous) {
    LoadOptions options;
    EXPECT_EQ(Load("n,x\n1,2\n").WeightIndex(), Table::kNoColumn);
    const Table described =
        Load("x,n\n1,2\n", R"({"weightField": "n", "fields": [{"name": "n", "level": "nominal"}]})");
    EXPECT_EQ(described.WeightIndex(), 1);
    EXPECT_EQ(described.Columns()[1].level, FieldLevel::kContinuous);
    EXPECT_EQ(CellsOf(described, 1), (Cells{2}));
    options.weightField = "x";
    options.nominal = {"x"};
    options.nominalByDefault = "x";
    const Table overridden = Load("x,n\n1,2\n", R"({"weightField": "gone"})", options);
    EXPECT_EQ(overridden.WeightIndex(), 0);
    EXPECT_EQ(overridden.Columns()[0].level, FieldLevel::kContinuous);
    EXPECT_EQ(ErrorOf("x\n1\na\n", "{}", options), "data.csv:3: column \"x\": \"a\"; expected a decimal number");
    EXPECT_EQ(ErrorOf("x\n1\n", R"({"fields": [{"name": "x", "type": "string"}]})", options),
              "data.csv: column \"x\": a string field as weight; expected a field with numbers");
}

TEST(TableLoader, TellsTheNamesThatTheTableLacks) {
    EXPECT_EQ(ErrorOf("a,b\n", R"({"fields": [{"name": "a"}, {"name": "A"}]})"),
              R"(fields.json: fields[1].name: "A"; expected a field of data.csv; did you mean a?)");
    EXPECT_EQ(ErrorOf("a,b\n", R"({"weightField": "n"})"),
              R"(fields.json: weightField: "n"; expected a field of data.csv: "a" or "b")");
    LoadOptions options;
    options.weightField = "n";
    EXPECT_EQ(ErrorOf("a\n", "{}", options), R"(--weight: "n"; expected a field of data.csv: "a")");
    options = {};
    options.nominal = {"n"};
    EXPECT_EQ(ErrorOf("a\n", "{}", options), R"(--nominal: "n"; expected a field of data.csv: "a")");
    options = {};
    options.ordinal = {"n"};
    EXPECT_EQ(ErrorOf("a\n", "{}", options), R"(--ordinal: "n"; expected a field of data.csv: "a")");
    options = {};
    options.continuous = {"n"};
    EXPECT_EQ(
        ErrorOf("1,2,3,4,5,6,7,8,9,10,11,12,13,14\n", "{}", options),
        "--continuous: \"n\"; expected a field of data.csv: \"1\", \"2\", \"3\", \"4\", \"5\", \"6\", \"7\", \"8\", "
        "\"9\", \"10\", \"11\", \"12\" or one of 2 more");
    options = {};
    options.nominal = {"a"};
    options.ordinal = {"b", "a"};
    EXPECT_EQ(ErrorOf("a,b\n", "{}", options), R"(--ordinal: "a" is in --nominal too; expected one level for a field)");
}

// Ten thousand numbers whose spellings differ, and then a text.
std::string TableWithALateText() {
    std::string csv = "id,x,y\n";
    for (int i = 0; i < 10000; ++i) {
        csv += std::to_string(i) + (i % 2 == 0 ? ",1," : ",1.0,") + (i == 5000 ? "late" : i % 3 == 0 ? "" : "7") + "\n";
    }
    return csv + "10000,x,7\n\n10001,NA,7\n10002,1,8\n";
}

void ExpectTheLateText(const Table& table) {
    ASSERT_EQ(table.RowCount(), 10003u);
    EXPECT_EQ(table.Columns()[0].type, FieldType::kNumber);
    EXPECT_EQ(TextsOf(table, 1), (Texts{"1", "1.0", "x"}));
    EXPECT_EQ(TextsOf(table, 2), (Texts{"7", "8", "late"}));
    for (std::size_t row = 0; row < 10000; ++row) {
        ASSERT_EQ(table.Cells(0)[row], static_cast<double>(row));
        ASSERT_EQ(table.Cells(1)[row], row % 2 == 0 ? 0 : 1) << row;
        ASSERT_EQ(table.Cells(2)[row], row == 5000 ? 2 : row % 3 == 0 ? -1 : 0) << row;
    }
    EXPECT_EQ(table.Cells(1)[10000], 2);
    EXPECT_EQ(table.Cells(1)[10001], kMissingCategory);
    EXPECT_EQ(table.Cells(1)[10002], 0);
}

TEST(TableLoader, TurnsToTextAfterManyNumbers) {
    ExpectTheLateText(Load(TableWithALateText()));
    LoadOptions options;
    options.nominal = {"x"};
    options.ordinal = {"y"};
    options.blockSize = 100;
    ExpectTheLateText(Load(TableWithALateText(), "{}", options));
}

TEST(TableLoader, TurnsToTextFromAFile) {
    const std::string path = testing::TempDir() + "late_text.csv";
    std::ofstream(path) << TableWithALateText();
    ByteSource source(path);
    ExpectTheLateText(LoadTable(source, {}, {}));
}

TEST(TableLoader, TurnsToTextFromAPipe) {
    const StandardInput pipe(TableWithALateText());
    ByteSource source("-");
    ExpectTheLateText(LoadTable(source, {}, {}));
}

TEST(TableLoader, TurnsToTextAfterMissingValuesAlone) {
    const Table table = LoadX("NA\n9\n\nx\n", R"("missingValues": [9], "level": "ordinal")", kExclude);
    EXPECT_EQ(TextsOf(table), (Texts{"x"}));
    EXPECT_EQ(CellsOf(table), (Cells{-1, -1, -1, 0}));
    // 9.0 is the missing number 9, but another text than "9".
    EXPECT_EQ(TextsOf(LoadX("9.0\n9\nx\n", R"("missingValues": [9])", kExclude)), (Texts{"9.0", "x"}));
}

TEST(TableLoader, TellsAnErrorOfStandardInputByItsName) {
    const StandardInput pipe("a,b\n1\n");
    ByteSource source("-");
    EXPECT_EQ(InputErrorOf([&] { LoadTable(source, {}, {}); }),
              "standard input:2: 1 cell; expected 2 as in the header (a line that is no row of the table, or a line "
              "break inside a text without quotes?)");
}

TEST(Table, KeepsItsCellsWhileItGrows) {
    struct Size {
        std::size_t width;
        std::size_t rows;
    };
    // Columns of 16 MB and of 8 MB, each a mapping of its own in the end, and more columns than a process has mappings.
    for (const auto& [width, rowCount] : {Size{1, 2'100'000}, Size{3, 1'100'000}, Size{70'001, 40}}) {
        std::vector<Column> columns(width);
        for (std::size_t i = 0; i < width; ++i) columns[i].name = std::to_string(i);
        Table table(std::move(columns));
        for (std::size_t first = 0; first < rowCount;) {
            const std::size_t last = std::min(rowCount, first + 1 + first / 7);
            table.Resize(last);
            for (const std::size_t column : {std::size_t{0}, width - 1}) {
                const std::span<double> cells = table.Cells(column);
                for (std::size_t row = first; row < last; ++row) cells[row] = static_cast<double>(row + column);
            }
            first = last;
        }
        table.Trim();
        ASSERT_EQ(table.RowCount(), rowCount);
        for (const std::size_t column : {std::size_t{0}, width - 1}) {
            const std::span<const double> cells = table.Cells(column);
            for (std::size_t row = 0; row < rowCount; ++row) {  // millions of times, so without the macros
                if (cells[row] != static_cast<double>(row + column)) FAIL() << width << " wide, row " << row;
            }
        }
    }
}

TEST(Table, FindsColumnsByName) {
    const Table table = Load("b,a\n");
    EXPECT_EQ(table.FindColumn("b"), 0);
    EXPECT_EQ(table.FindColumn("a"), 1);
    EXPECT_EQ(table.FindColumn("c"), Table::kNoColumn);
}

// Every cell of a text column comes back through its category, and categories ascend, whatever the order of the rows.
TEST(TableLoader, GivesBackEveryTextByItsCategory) {
    EXPECT_TRUE(rc::check([] {
        const Texts texts = *rc::gen::nonEmpty(rc::gen::container<Texts>(
            rc::gen::element<std::string>("1", "1.0", "01", "x", "y", "Z", " x", "NA", "", "2e0", "-0")));
        const bool isText = *rc::gen::arbitrary<bool>();
        std::string csv = "x,y\n";
        for (const std::string& text : texts) csv += text + ",0\n";
        if (isText) csv += "letters,0\n";
        const Table table = Load(csv);
        RC_ASSERT(!isText || table.Columns()[0].type == FieldType::kString);
        if (!table.Columns()[0].IsText()) return;
        const Texts categories = TextsOf(table);
        RC_ASSERT(std::ranges::is_sorted(categories));
        RC_ASSERT(std::ranges::adjacent_find(categories) == categories.end());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const double cell = table.Cells(0)[i];
            const bool isMissing = texts[i].empty() || texts[i] == "NA";
            RC_ASSERT(isMissing == (cell == kMissingCategory));
            if (!isMissing) RC_ASSERT(categories[static_cast<std::size_t>(cell)] == texts[i]);
        }
    }));
}

}  // namespace
}  // namespace tarn
