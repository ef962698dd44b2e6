#include "platform/common/Record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

Record Make(const std::vector<double>& values) {
    Record record(values.size());
    std::copy(values.begin(), values.end(), record.begin());
    return record;
}

std::vector<double> ValuesOf(const Record& record) {
    return {record.begin(), record.end()};
}

}  // namespace

TEST(RecordTest, ANewRecordHoldsZeros) {
    EXPECT_EQ(ValuesOf(Record(3)), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(Record().Size(), 0u);
    EXPECT_EQ(ValuesOf(Record()), std::vector<double>());
}

TEST(RecordTest, AViewShowsValuesThatStandElsewhere) {
    std::vector<double> values{1, 2, 3};
    Record view = Record::View(values.data(), 2);
    EXPECT_EQ(ValuesOf(view), (std::vector<double>{1, 2}));
    view[1] = 20;
    EXPECT_EQ(values, (std::vector<double>{1, 20, 3}));
    values[0] = 10;
    EXPECT_EQ(view[0], 10);
}

TEST(RecordTest, ACopyOwnsItsValues) {
    std::vector<double> values{1, 2};
    const Record view = Record::View(values.data(), 2);
    const Record copy = view;
    Record assigned;
    assigned = view;
    values = {9, 9};
    EXPECT_EQ(ValuesOf(view), (std::vector<double>{9, 9}));
    EXPECT_EQ(ValuesOf(copy), (std::vector<double>{1, 2}));
    EXPECT_EQ(ValuesOf(assigned), (std::vector<double>{1, 2}));
}

TEST(RecordTest, AssigningToAViewDoesNotWriteThroughIt) {
    std::vector<double> values{1, 2};
    Record view = Record::View(values.data(), 2);
    view = Make({7, 8});
    EXPECT_EQ(values, (std::vector<double>{1, 2}));
    view = Record::View(values.data(), 2);
    const Record other = Make({7, 8});
    view = other;
    EXPECT_EQ(values, (std::vector<double>{1, 2}));
    EXPECT_EQ(ValuesOf(view), (std::vector<double>{7, 8}));
}

TEST(RecordTest, AssignsRecordsOfAnotherWidth) {
    Record record = Make({1, 2});
    for (const std::vector<double>& values : {std::vector<double>{5, 6}, {1, 2, 3, 4}, {}, {9}}) {
        const Record other = Make(values);
        record = other;
        EXPECT_EQ(ValuesOf(record), values);
    }
}

TEST(RecordTest, AssigningARecordToItselfChangesNothing) {
    Record record = Make({1, 2});
    const Record& same = record;
    record = same;
    EXPECT_EQ(ValuesOf(record), (std::vector<double>{1, 2}));
}

TEST(RecordTest, AMovedRecordTakesItsValuesAlong) {
    Record record = Make({1, 2});
    const double* place = record.begin();
    Record moved = std::move(record);
    EXPECT_EQ(moved.begin(), place);
    EXPECT_EQ(record.Size(), 0u);
    Record assigned(1);
    assigned = std::move(moved);
    EXPECT_EQ(assigned.begin(), place);
    EXPECT_EQ(moved.Size(), 0u);
    EXPECT_EQ(ValuesOf(assigned), (std::vector<double>{1, 2}));
}
