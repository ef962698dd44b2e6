#include "records/WeightyRecords.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/harness/TestRun.h"

namespace {

using QKTarn::WeightyRecords;
using Rows = std::vector<std::vector<double>>;

constexpr int kWeight = 1;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A weight and what becomes of its record: 0 once its fraction is cut, as every counter cuts it.
const Rows kAll{{1, 0}, {2, 1}, {3, 0.9}, {4, -0.9}, {5, 1.9}, {6, -0.0}, {7, -1}, {8, harness::kNone}, {9, 0}};
const std::vector<double> kWeighty{2, 5, 7, 8};

std::vector<double> FirstOfRecords(WeightyRecords& records) {
    std::vector<double> values;
    for (records.Rewind(); records.HasMore();) values.push_back((*records.Next())[0]);
    return values;
}

std::vector<double> FirstColumn(const WeightyRecords& records) {
    return {records.Column(0), records.Column(0) + records.RecordCount()};
}

TEST(WeightyRecordsTest, LeavesOutWhatCountsForNothing) {
    harness::RowStream stream(kAll);
    WeightyRecords records(stream, kWeight, WorkShare());
    EXPECT_EQ(FirstOfRecords(records), kWeighty);
    EXPECT_EQ(FirstOfRecords(records), kWeighty) << "a second time";
    EXPECT_EQ(records.Next(), nullptr) << "past the end";
    EXPECT_EQ(records.RecordCount(), 0u) << "it has no columns";
}

TEST(WeightyRecordsTest, ARecordStaysUntilTheNextOneIsAskedFor) {
    harness::RowStream stream(kAll);
    WeightyRecords records(stream, kWeight, WorkShare());
    records.Rewind();
    ASSERT_TRUE(records.HasMore());
    ASSERT_TRUE(records.HasMore()) << "asking again skips none";
    EXPECT_EQ((*records.Next())[0], 2);
    EXPECT_EQ((*records.Next())[0], 5) << "without a question in between";
    ASSERT_TRUE(records.HasMore());
    records.Rewind();
    EXPECT_EQ((*records.Next())[0], 2) << "what was found before a rewind is gone";
}

TEST(WeightyRecordsTest, LeavesThemOutOfColumnsToo) {
    harness::ColumnStream stream(kAll);
    WeightyRecords records(stream, kWeight, WorkShare(2));
    EXPECT_EQ(records.FieldCount(), 2u);
    EXPECT_EQ(FirstColumn(records), kWeighty);
    EXPECT_EQ(FirstOfRecords(records), kWeighty);
}

TEST(WeightyRecordsTest, CopiesNothingWhereAllRecordsCount) {
    harness::ColumnStream stream({{1, 1}, {2, kNaN}, {3, -1}});
    WeightyRecords records(stream, kWeight, WorkShare());
    EXPECT_EQ(records.RecordCount(), 3u);
    EXPECT_EQ(records.Column(0), stream.Column(0));
}

TEST(WeightyRecordsTest, OfNoWeightAtAllNoneIsLeft) {
    const Rows weightless{{1, 0}, {2, 0.5}};
    harness::ColumnStream columns(weightless);
    WeightyRecords ofColumns(columns, kWeight, WorkShare());
    EXPECT_EQ(ofColumns.RecordCount(), 0u);
    ofColumns.Rewind();
    EXPECT_FALSE(ofColumns.HasMore());
    harness::RowStream rows(weightless);
    WeightyRecords ofRows(rows, kWeight, WorkShare());
    ofRows.Rewind();
    EXPECT_FALSE(ofRows.HasMore());
}

}  // namespace
