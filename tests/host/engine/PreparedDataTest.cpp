// The records as the engine's requirements ask for them.

#include "host/engine/PreparedData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/InputErrorOf.h"

namespace tarn {
namespace {

Column OrdinalColumn(const std::string& name, std::vector<Category> categories) {
    Column column;
    column.name = name;
    column.level = FieldLevel::kOrdinal;
    column.categories = std::move(categories);
    return column;
}

Column ContinuousColumn(const std::string& name) {
    Column column;
    column.name = name;
    return column;
}

Table TableOf(std::vector<Column> columns, const std::vector<std::vector<double>>& rows) {
    Table table(std::move(columns));
    for (const std::vector<double>& row : rows) std::copy(row.begin(), row.end(), table.AppendRow());
    return table;
}

/// An ordinal field with its continuous copy, as the engine asks for both.
Requirements WithCopy(const std::string& field, const std::string& copy) {
    Requirements requirements;
    requirements.fields = {{field, FieldEncoding::kOrdinal, ""}, {field, FieldEncoding::kNone, copy}};
    return requirements;
}

TEST(PreparedData, ACopyHoldsTheNumbersOfTheCategories) {
    const Table table = TableOf({OrdinalColumn("o", {{3, "", ""}, {5, "", ""}})}, {{1}, {kMissingCategory}, {0}});
    const PreparedData data = PrepareData(table, WithCopy("o", "$_o"));
    EXPECT_EQ(data.values, (std::vector<double>{1, 5, kMissingCategory, kMissingNumber, 0, 3}));
}

TEST(PreparedData, ACopyOfAFieldWithoutAnyCategoryMissesAll) {
    const Table table = TableOf({OrdinalColumn("o", {})}, {{kMissingCategory}, {kMissingCategory}});
    const PreparedData data = PrepareData(table, WithCopy("o", "$_o"));
    EXPECT_EQ(data.values, (std::vector<double>{kMissingCategory, kMissingNumber, kMissingCategory, kMissingNumber}));
}

TEST(PreparedData, AFieldThatBearsTheNameOfACopyIsToldInOneLine) {
    const Table table = TableOf({ContinuousColumn("$_o"), OrdinalColumn("o", {{3, "", ""}})}, {{7, 0}});
    Requirements requirements = WithCopy("o", "$_o");
    EXPECT_EQ(PrepareData(table, requirements).values, (std::vector<double>{0, 3})) << "the column itself has no part";

    requirements.fields.push_back({"$_o", FieldEncoding::kNone, ""});
    EXPECT_EQ(InputErrorOf([&] { PrepareData(table, requirements); }),
              "the first column of the table, \"$_o\": the engine gives that name to the numbers of the ordinal field "
              "\"o\"; expected another name, or another column in front");
}

TEST(PreparedData, AContinuousFieldGoesOverAsItIs) {
    const Table table = TableOf({ContinuousColumn("x")}, {{-1}, {kMissingNumber}, {2.5}});
    Requirements requirements;
    requirements.fields = {{"x", FieldEncoding::kNone, ""}};
    EXPECT_EQ(PrepareData(table, requirements).values, (std::vector<double>{-1, kMissingNumber, 2.5}));
}

}  // namespace
}  // namespace tarn
