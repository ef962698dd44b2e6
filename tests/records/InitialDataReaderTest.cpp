#include "records/InitialDataReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/TestRun.h"

using harness::Fields;
using harness::kNoCategory;
using harness::kNone;
using QKTarn::InitialDataReader;

namespace {

using Rows = std::vector<std::vector<double>>;

/// A reader over rows in memory, whose filter looks at all fields.
struct Reading {
    Reading(Fields tableFields, Rows rows, bool dropMissing = false)
        : fields(std::move(tableFields)),
          stream(std::move(rows)),
          allFields(static_cast<std::size_t>(fields.List().Size())),
          reader(&stream, dropMissing, &allFields, &fields.List()) {
        std::iota(allFields.begin(), allFields.end(), 0);
    }

    Rows Stored() {
        Rows rows;
        for (std::size_t i = 0; i < reader.Columns().Count(); ++i) {
            reader.Columns().Read(i, rows.emplace_back(reader.Width()).data());
        }
        return rows;
    }

    Fields fields;
    harness::RowStream stream;
    std::vector<int> allFields;
    InitialDataReader reader;
};

constexpr double kLargest = 2147483647.0;

}  // namespace

TEST(InitialDataReaderTest, AnEmptyStreamYields220003) {
    Reading reading(Fields().Continuous("x"), {});
    EXPECT_EQ(reading.reader.ReadAll(), QKStatus(220003));
    EXPECT_EQ(reading.reader.Count(), 0);
}

TEST(InitialDataReaderTest, AStreamOfWhichAListwiseFilterDropsEveryRecordYields220003) {
    Reading reading(Fields().Continuous("x").Numeric("n", {1}), {{kNone, 0}, {1, kNoCategory}}, true);
    EXPECT_EQ(reading.reader.ReadAll(), QKStatus(220003));
    EXPECT_EQ(reading.reader.Count(), 0);
}

TEST(InitialDataReaderTest, ANullIteratorYields220005) {
    Fields fields;
    fields.Continuous("x");
    const std::vector<int> all{0};
    InitialDataReader reader(nullptr, false, &all, &fields.List());
    EXPECT_EQ(reader.ReadAll(), QKStatus(220005));
}

TEST(InitialDataReaderTest, KeepsTheRecordsInOrderAndReadsTheStreamFromItsStart) {
    const Rows rows{{1, 2}, {-0.5, kNone}, {std::numeric_limits<double>::infinity(), 3}};
    Reading reading(Fields().Continuous("x").Continuous("y"), rows);
    reading.stream.Next();  // the position that a host may have left
    EXPECT_TRUE(reading.reader.ReadAll().IsOK());
    EXPECT_EQ(reading.Stored(), rows);
    EXPECT_EQ(reading.reader.Width(), 2u);
    EXPECT_EQ(reading.stream.RewindCount(), 1);
}

// ---- Weights ----

TEST(InitialDataReaderTest, ARecordWeightAbove2147483647StopsTheReadWith220026) {
    struct Row {
        double weight;
        bool accepted;
    };
    const std::vector<Row> rows{
        {2147483647.0, true},
        {2147483648.0, false},
        {2147483647.5, false},
        {std::nextafter(kLargest, 0.0), true},
        {std::nextafter(kLargest, 1e300), false},
        {std::numeric_limits<double>::infinity(), false},
        {std::numeric_limits<double>::quiet_NaN(), true},
        {kNone, true},
        {-1e300, true},
        {0, true},
    };
    for (const bool listwise : {false, true}) {
        for (const Row& row : rows) {
            if (listwise && row.weight == kNone) continue;  // dropped, and then there is no record
            SCOPED_TRACE(testing::PrintToString(row.weight));
            Reading reading(Fields().Continuous("x").Weight("w"), {{5, row.weight}}, listwise);
            EXPECT_EQ(reading.reader.ReadAll(), row.accepted ? QKStatus() : QKStatus(220026));
            EXPECT_EQ(reading.reader.Count(), row.accepted ? 1 : 0);
        }
    }
}

TEST(InitialDataReaderTest, AWeightOfATooLargeRecordIsLookedAtBeforeItsMissingValuesUnderListwise) {
    Reading reading(Fields().Continuous("x").Weight("w"), {{1, 1}, {kNone, 2147483648.0}, {2, 1}}, true);
    EXPECT_EQ(reading.reader.ReadAll(), QKStatus(220026));
    EXPECT_EQ(reading.stream.NextCount(), 2) << "the read stops at once";
    EXPECT_EQ(reading.reader.Count(), 1);
}

TEST(InitialDataReaderTest, WithoutAWeightFieldNoValueIsTooLarge) {
    Reading reading(Fields().Continuous("x"), {{2147483648.0}, {1e308}});
    EXPECT_TRUE(reading.reader.ReadAll().IsOK());
    EXPECT_EQ(reading.reader.Count(), 2);
}

// ---- The listwise filter ----

TEST(InitialDataReaderTest, DropsByTheKindOfTheField) {
    struct Row {
        int kind;
        double value;
        bool kept;
    };
    const std::vector<Row> rows{
        {1, kNone, false}, {1, -1, true},  // continuous
        {2, -1, false},    {2, kNone, true}, {2, 0, true},     {3, -1, false}, {3, kNone, true},
        {3, 0, true},      {4, -1, false},   {4, kNone, true},  // looked at as categorical here, unlike in the passes
        {5, -1, false},    {5, kNone, true},                    // as is every kind that nobody knows
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "kind " << row.kind << " value " << row.value);
        Fields fields;
        fields.Continuous("id");
        switch (row.kind) {
            case 2:
                fields.Numeric("f", {1, 2});
                break;
            case 3:
                fields.Text("f", {"a", "b"});
                break;
            default:
                fields.List().AddNewVar(std::make_shared<QKContVar>("f", "", DateType::kNone, row.kind));
        }
        Reading reading(fields, {{1, 0}, {2, row.value}}, true);
        EXPECT_TRUE(reading.reader.ReadAll().IsOK());
        EXPECT_EQ(reading.reader.Count(), row.kept ? 2 : 1);
        Reading unfiltered(fields, {{1, 0}, {2, row.value}}, false);
        EXPECT_TRUE(unfiltered.reader.ReadAll().IsOK());
        EXPECT_EQ(unfiltered.reader.Count(), 2);
    }
}

TEST(InitialDataReaderTest, LooksAtTheGivenFieldsOnly) {
    Fields fields;
    fields.Continuous("x").Continuous("y");
    harness::RowStream stream({{kNone, 1}, {1, kNone}, {1, 1}});
    const std::vector<int> second{1};
    InitialDataReader reader(&stream, true, &second, &fields.List());
    EXPECT_TRUE(reader.ReadAll().IsOK());
    EXPECT_EQ(reader.Count(), 2);
    EXPECT_EQ(reader.Columns().Column(0)[0], kNone);
}

TEST(InitialDataReaderTest, NotesOfEachRecordWhetherThePassesFindAnythingMissing) {
    // Record 1 is dropped by the reader but complete for the passes, record 2 the other way round.
    Reading reading(Fields().Continuous("x").Other("o"), {{1, 9}, {1, -1}, {1, kNone}, {kNone, 9}, {2, 9}}, true);
    EXPECT_TRUE(reading.reader.ReadAll().IsOK());
    EXPECT_EQ(reading.reader.IncompleteInSource(), (QKTarn::RecordFlags{false, false, true, true, false}));
    EXPECT_EQ(reading.reader.IncompleteInStore(), (QKTarn::RecordFlags{false, true, false}));
}

// ---- Columns ----

TEST(InitialDataReaderTest, PartsManyRecordsIntoColumns) {
    Fields fields;
    Rows rows;
    for (int field = 0; field < 40; ++field) fields.Continuous("x" + std::to_string(field));
    for (int i = 0; i < 3000; ++i) {
        rows.emplace_back();
        for (int field = 0; field < 40; ++field) rows.back().push_back(1000.0 * field + i);
    }
    Reading reading(fields, rows);
    EXPECT_TRUE(reading.reader.ReadAll().IsOK());
    EXPECT_EQ(reading.Stored(), rows);
    EXPECT_EQ(reading.reader.Columns().Column(7)[2999], 9999);
}

TEST(InitialDataReaderTest, StoresACopyOfTheRecord) {
    Fields fields;
    fields.Continuous("x");
    InitialDataReader reader(nullptr, false, nullptr, &fields.List());
    Record record(1);
    record[0] = 1;
    ASSERT_TRUE(reader.AddRecord(record).IsOK());
    record[0] = 2;
    ASSERT_TRUE(reader.AddRecord(record).IsOK());
    reader.Begin();
    EXPECT_EQ(reader.Columns().Column(0)[0], 1);
    EXPECT_EQ(reader.Columns().Column(0)[1], 2);
}

TEST(InitialDataReaderTest, ARecordOfAnotherWidthIsCutOrFilledUp) {
    Reading reading(Fields().Continuous("x").Continuous("y"), {{1, 2}, {3}, {4, 5, 6}});
    EXPECT_TRUE(reading.reader.ReadAll().IsOK());
    EXPECT_EQ(reading.Stored(), (Rows{{1, 2}, {3, kNone}, {4, 5}}));
}

TEST(InitialDataReaderTest, AFailedAllocationYields220002) {
    Fields fields;
    fields.Continuous("x");
    InitialDataReader reader(nullptr, false, nullptr, &fields.List());
    double value = 1;
    // Columns of such a record are more than any memory holds; no more than the first value is looked at before that.
    const Record huge = Record::View(&value, std::size_t{1} << 60);
    EXPECT_EQ(reader.AddRecord(huge), QKStatus(220002));
    EXPECT_EQ(reader.Count(), 0);
    EXPECT_FALSE(reader.Begin().HasMore());
}

// ---- A stream that has columns ----

TEST(InitialDataReaderTest, BorrowsTheColumnsOfAStreamThatHasThem) {
    Fields fields;
    fields.Continuous("x").Numeric("n", {1, 2});
    harness::ColumnStream stream({{1, 0}, {kNone, 1}, {3, kNoCategory}});
    const std::vector<int> all{0, 1};
    InitialDataReader reader(&stream, false, &all, &fields.List());
    EXPECT_TRUE(reader.ReadAll().IsOK());
    EXPECT_EQ(reader.Count(), 3);
    EXPECT_EQ(reader.Columns().Column(1), stream.Column(1)) << "not a copy";
    EXPECT_EQ(reader.SourceColumns(), &reader.Columns());
    EXPECT_EQ(reader.IncompleteInSource(), (QKTarn::RecordFlags{false, true, true}));
    EXPECT_EQ(reader.IncompleteInStore(), (QKTarn::RecordFlags{false, true, true}));
    EXPECT_TRUE(reader.Columns().HasMissing(0));
    EXPECT_TRUE(reader.Columns().HasMissing(1));
    EXPECT_EQ(stream.NextCount(), 0) << "no record was asked for";
}

TEST(InitialDataReaderTest, CopiesTheColumnsWhereRecordsAreDropped) {
    // As above: the reader's filter and the passes differ about a field of kind 4.
    Fields fields;
    fields.Continuous("x").Other("o");
    harness::ColumnStream stream({{1, 9}, {1, -1}, {1, kNone}, {kNone, 9}, {2, 9}});
    const std::vector<int> all{0, 1};
    InitialDataReader reader(&stream, true, &all, &fields.List());
    EXPECT_TRUE(reader.ReadAll().IsOK());
    ASSERT_EQ(reader.Count(), 3);
    EXPECT_EQ(std::vector<double>(reader.Columns().Column(0), reader.Columns().Column(0) + 3),
              (std::vector<double>{1, 1, 2}));
    EXPECT_EQ(reader.IncompleteInSource(), (QKTarn::RecordFlags{false, false, true, true, false}));
    EXPECT_EQ(reader.IncompleteInStore(), (QKTarn::RecordFlags{false, true, false}));
    ASSERT_NE(reader.SourceColumns(), nullptr);
    EXPECT_EQ(reader.SourceColumns()->Count(), 5u);
    EXPECT_EQ(reader.SourceColumns()->Column(0), stream.Column(0));
}

TEST(InitialDataReaderTest, AWeightAbove2147483647InAColumnStopsTheReadWith220026) {
    Fields fields;
    fields.Continuous("x").Weight("w");
    harness::ColumnStream stream({{1, 1}, {1, 2147483648.0}});
    const std::vector<int> all{0, 1};
    InitialDataReader reader(&stream, false, &all, &fields.List());
    EXPECT_EQ(reader.ReadAll(), QKStatus(220026));
}

TEST(InitialDataReaderTest, AStopEndsTheReadWithCode1) {
    const WorkShare stopped(1, [] { return true; });
    Fields fields;
    fields.Continuous("x");
    const std::vector<int> all{0};
    harness::ColumnStream columns({{1}, {2}});
    EXPECT_EQ(InitialDataReader(&columns, false, &all, &fields.List()).ReadAll(stopped), QKStatus(1));
    harness::RowStream records(Rows(10'000, {1.0}));
    EXPECT_EQ(InitialDataReader(&records, false, &all, &fields.List()).ReadAll(stopped), QKStatus(1));
    EXPECT_LT(records.NextCount(), 10'000);
}

TEST(InitialDataReaderTest, KnowsOfEachColumnWhatItMissesAtAnyPlace) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const std::vector<int> all{0, 1};
    for (std::size_t count = 1; count <= 5; ++count) {
        for (std::size_t place = 0; place < count; ++place) {
            for (const double odd : {kNone, kNaN, 7.0}) {
                Fields fields;
                fields.Continuous("x").Continuous("y");
                Rows rows(count, {1.0, 0.0});
                rows[place][0] = odd;
                harness::ColumnStream stream(rows);
                InitialDataReader reader(&stream, false, &all, &fields.List());
                EXPECT_TRUE(reader.ReadAll().IsOK());
                EXPECT_EQ(reader.Columns().HasMissing(0), odd == kNone) << place << " of " << count;
                EXPECT_EQ(reader.Columns().HasNaN(0), std::isnan(odd)) << place << " of " << count;
                EXPECT_FALSE(reader.Columns().HasMissing(1) || reader.Columns().HasNaN(1));
            }
        }
    }
}

TEST(InitialDataReaderTest, FindsTheColumnsThatHoldWhatIsNoNumber) {
    Reading reading(Fields().Continuous("x").Continuous("y"), {{1, 2}, {std::numeric_limits<double>::quiet_NaN(), 2}});
    EXPECT_TRUE(reading.reader.ReadAll().IsOK());
    EXPECT_TRUE(reading.reader.Columns().HasNaN(0));
    EXPECT_FALSE(reading.reader.Columns().HasNaN(1));
    EXPECT_FALSE(reading.reader.Columns().HasNaN(-1));
    EXPECT_FALSE(reading.reader.Columns().HasNaN(2));
}
