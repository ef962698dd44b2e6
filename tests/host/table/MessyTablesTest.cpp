// Tables as programs of several kinds and countries write them: read as the script that made them says, with what is
// unusual said in a note, or refused with one line. The script names for each what it imitates.

#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>
#include <cctype>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "host/table/TableReading.h"
#include "tests/harness/Command.h"

namespace tarn {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFolder = "tests/host/table/messy/";

std::vector<Json> Cases() {
    const Json cases = Json::parse(harness::ReadFile(harness::SourcePath(std::string(kFolder) + "cases.json")));
    return {cases.begin(), cases.end()};
}

ReadingOptions OptionsOf(const Json& options) {
    ReadingOptions reading;
    if (options.contains("decimal")) reading.decimal = options["decimal"].get<std::string>().front();
    if (options.contains("na")) reading.missingTexts = options["na"].get<std::vector<std::string>>();
    for (const auto& [name, encoding] : kEncodings) {
        if (options.contains("encoding") && options["encoding"] == name) reading.encoding = encoding;
    }
    return reading;
}

/// The table with all of its fields named, as an analysis of all of them reads it.
Table Read(const Json& expected, unsigned threads) {
    std::filesystem::current_path(harness::SourcePath(kFolder));
    LoadOptions load;
    load.threads = threads;
    load.isRead = [](const std::string&, std::size_t) { return true; };
    return ReadTable(ByteSource(expected["file"].get<std::string>()), {}, load, OptionsOf(expected["options"]));
}

Json CellOf(const Table& table, std::size_t column, std::size_t row) {
    const double cell = table.Cells(column)[row];
    const Column& described = table.Columns()[column];
    if (!described.IsCategorical()) return cell == kMissingNumber ? Json() : Json(cell);
    return cell == kMissingCategory ? Json() : Json(described.categories[static_cast<std::size_t>(cell)].text);
}

void ExpectTheTable(const Table& table, const Json& expected) {
    EXPECT_EQ(Json(table.Notes()), expected["notes"]);
    Json names = Json::array();
    for (const Column& column : table.Columns()) names.push_back(column.name);
    ASSERT_EQ(names, expected["fields"]);
    Json rows = Json::array();
    for (std::size_t row = 0; row < table.RowCount(); ++row) {
        Json cells = Json::array();
        for (std::size_t column = 0; column < table.ColumnCount(); ++column)
            cells.push_back(CellOf(table, column, row));
        rows.push_back(cells);
    }
    EXPECT_EQ(rows, expected["rows"]);
    if (!expected.contains("missing")) return;
    for (const auto& [field, counts] : expected["missing"].items()) {
        Json found = Json::object();
        for (const MissingText& text :
             table.Columns()[static_cast<std::size_t>(table.FindColumn(field))].missingTexts) {
            found[text.text] = text.count;
        }
        EXPECT_EQ(nlohmann::json(found), nlohmann::json(counts));
    }
}

class MessyTables : public testing::TestWithParam<Json> {};

TEST_P(MessyTables, AreReadRightOrRefused) {
    const Json& expected = GetParam();
    SCOPED_TRACE(expected["imitates"].get<std::string>());
    for (const unsigned threads : {1U, 2U}) {
        try {
            const Table table = Read(expected, threads);
            ASSERT_FALSE(expected.contains("error")) << "read as if nothing were wrong";
            ExpectTheTable(table, expected);
        } catch (const InputError& error) {
            ASSERT_TRUE(expected.contains("error")) << error.what();
            EXPECT_EQ(error.what(), expected["error"].get<std::string>());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, MessyTables, testing::ValuesIn(Cases()), [](const auto& test) {
    std::string name = test.param["file"].template get<std::string>() + "_" + std::to_string(test.index);
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
});

/// All that a reader sees of a table, or why it is refused.
std::string OutcomeOf(const std::string& bytes, const ReadingOptions& reading, unsigned threads,
                      std::size_t blockSize) {
    LoadOptions load;
    load.threads = threads;
    load.blockSize = blockSize;
    load.isRead = [](const std::string&, std::size_t) { return true; };
    try {
        const Table table = ReadTable(ByteSource::FromMemory("data.csv", bytes), {}, load, reading);
        Json all = {{"notes", table.Notes()}, {"rows", table.RowCount()}};
        for (std::size_t column = 0; column < table.ColumnCount(); ++column) {
            Json& cells = all["columns"][table.Columns()[column].name];
            for (const MissingText& missing : table.Columns()[column].missingTexts) {
                cells.push_back({missing.text, missing.count});
            }
            for (std::size_t row = 0; row < table.RowCount(); ++row) cells.push_back(CellOf(table, column, row));
        }
        return all.dump();
    } catch (const InputError& error) {
        return error.what();
    }
}

/// What is read, or told, doesn't depend on how many threads read nor on where the text is cut, also of a table that is
/// damaged: in other bytes here and there, or cut off.
RC_GTEST_PROP(MessyTables, AreReadAlikeByAnyNumberOfThreadsHoweverDamaged, ()) {
    static const std::vector<Json> cases = Cases();
    const Json& one = cases[*rc::gen::inRange<std::size_t>(0, cases.size())];
    std::string bytes = harness::ReadFile(harness::SourcePath(kFolder + one["file"].get<std::string>()));
    static const std::string bits = std::string("\n\r\",;|\t .-'%\x80\xff#1a\0", 19);
    const int damages = *rc::gen::inRange(0, 4);
    for (int i = 0; i < damages; ++i) {
        const std::size_t place = *rc::gen::inRange<std::size_t>(0, bytes.size());
        const char bit = *rc::gen::elementOf(bits);
        if (*rc::gen::arbitrary<bool>()) {
            bytes[place] = bit;
        } else {
            bytes.insert(place, 1, bit);
        }
    }
    if (*rc::gen::inRange(0, 4) == 0) bytes.resize(*rc::gen::inRange<std::size_t>(0, bytes.size() + 1));
    ReadingOptions reading = OptionsOf(one["options"]);
    reading.keepsPlainTables = *rc::gen::inRange(0, 4) == 0;
    const std::string expected = OutcomeOf(bytes, reading, 1, CsvReader::kDefaultBlockSize);
    for (const std::size_t blockSize : {1, 5, 64}) {
        for (const unsigned threads : {1U, 2U}) RC_ASSERT(OutcomeOf(bytes, reading, threads, blockSize) == expected);
    }
}

}  // namespace
}  // namespace tarn
