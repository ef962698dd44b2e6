// Tables as programs of several kinds and countries write them: read as the script that made them says, with what is
// unusual said in a note, or refused with one line. The script names for each what it imitates.

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tarn
