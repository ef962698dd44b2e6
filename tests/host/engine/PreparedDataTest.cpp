// The records as the engine's requirements ask for them.

#include "host/engine/PreparedData.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/InputErrorOf.h"
#include "tests/host/engine/TableOfRows.h"

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

/// The prepared values, record by record.
std::vector<double> ValuesOf(const PreparedData& data) {
    std::vector<double> values;
    for (std::size_t record = 0; record < data.recordCount; ++record) {
        for (const double* const column : data.columns) values.push_back(column[record]);
    }
    return values;
}

/// An ordinal field with its continuous copy, as the engine asks for both.
Requirements WithCopy(const std::string& field, const std::string& copy) {
    Requirements requirements;
    requirements.fields = {{field, FieldEncoding::kOrdinal, ""}, {field, FieldEncoding::kNone, copy}};
    return requirements;
}

TEST(PreparedData, ACopyHoldsTheNumbersOfTheCategories) {
    const Table table = TableOfRows({OrdinalColumn("o", {{3, "", ""}, {5, "", ""}})}, {{1}, {kMissingCategory}, {0}});
    const PreparedData data = PrepareData(table, WithCopy("o", "$_o"));
    EXPECT_EQ(ValuesOf(data), (std::vector<double>{1, 5, kMissingCategory, kMissingNumber, 0, 3}));
}

TEST(PreparedData, ACopyOfAFieldWithoutAnyCategoryMissesAll) {
    const Table table = TableOfRows({OrdinalColumn("o", {})}, {{kMissingCategory}, {kMissingCategory}});
    const PreparedData data = PrepareData(table, WithCopy("o", "$_o"));
    EXPECT_EQ(ValuesOf(data),
              (std::vector<double>{kMissingCategory, kMissingNumber, kMissingCategory, kMissingNumber}));
}

TEST(PreparedData, AFieldThatBearsTheNameOfACopyIsToldInOneLine) {
    const Table table = TableOfRows({ContinuousColumn("$_o"), OrdinalColumn("o", {{3, "", ""}})}, {{7, 0}});
    Requirements requirements = WithCopy("o", "$_o");
    EXPECT_EQ(ValuesOf(PrepareData(table, requirements)), (std::vector<double>{0, 3}))
        << "the column itself has no part";

    requirements.fields.push_back({"$_o", FieldEncoding::kNone, ""});
    EXPECT_EQ(InputErrorOf([&] { PrepareData(table, requirements); }),
              "the first column of the table, \"$_o\": the engine gives that name to the numbers of the ordinal field "
              "\"o\"; expected another name, or another column in front");
}

TEST(PreparedData, AContinuousFieldGoesOverAsItIs) {
    const Table table = TableOfRows({ContinuousColumn("x")}, {{-1}, {kMissingNumber}, {2.5}});
    Requirements requirements;
    requirements.fields = {{"x", FieldEncoding::kNone, ""}};
    EXPECT_EQ(ValuesOf(PrepareData(table, requirements)), (std::vector<double>{-1, kMissingNumber, 2.5}));
}

Requirements Weighted(bool roundWeights, std::vector<std::string> listwiseDelete) {
    Requirements requirements;
    requirements.fields = {{"x", FieldEncoding::kNone, ""}, {"w", FieldEncoding::kNone, ""}};
    requirements.weightField = "w";
    requirements.roundWeights = roundWeights;
    requirements.listwiseDelete = std::move(listwiseDelete);
    return requirements;
}

TEST(PreparedData, WhatDoesNotChangeStaysInTheTable) {
    const Table table = TableOfRows({ContinuousColumn("x"), ContinuousColumn("w")}, {{1, 2}, {2, 0.5}, {3, 1}});
    const PreparedData rounded = PrepareData(table, Weighted(true, {"x"}));
    EXPECT_EQ(rounded.columns[0], table.Cells(0).data());
    EXPECT_NE(rounded.columns[1], table.Cells(1).data()) << "a weight of 0.5 counts as 1";
    EXPECT_EQ(ValuesOf(rounded), (std::vector<double>{1, 2, 2, 1, 3, 1}));
    const PreparedData asTheyAre = PrepareData(table, Weighted(false, {"x"}));
    EXPECT_EQ(asTheyAre.columns[1], table.Cells(1).data());
    EXPECT_TRUE(asTheyAre.made.empty());
}

TEST(PreparedData, ARecordThatIsDroppedIsInNoColumn) {
    const Table table = TableOfRows({ContinuousColumn("x"), ContinuousColumn("w")},
                                    {{1, 2}, {kMissingNumber, 2.5}, {3, -1}, {4, kMissingNumber}, {5, 0}});
    const PreparedData data = PrepareData(table, Weighted(true, {"x"}));
    EXPECT_EQ(ValuesOf(data), (std::vector<double>{1, 2, 5, 0}));
    EXPECT_EQ(data.recordCount, 2u);
    EXPECT_EQ(data.counts.totalCount, 5u);
    EXPECT_EQ(data.counts.totalFreq, 2 + 3 + 0);
    EXPECT_EQ(data.counts.droppedCount, 3u);
    EXPECT_EQ(data.counts.droppedFreq, 3);
    EXPECT_EQ(data.counts.badWeightCount, 3u);
}

}  // namespace
}  // namespace tarn
