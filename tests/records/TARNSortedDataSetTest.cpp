#include "records/TARNSortedDataSet.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <vector>

#include "tests/harness/TestRun.h"

using harness::kNone;
using QKTarn::InitialDataReader;

namespace {

/// A store of rows with two fields: the record's number, and a value.
class TARNSortedDataSetTest : public testing::Test {
 protected:
    void Fill(const std::vector<double>& values) {
        fields_.Continuous("number").Continuous("value");
        store_ = std::make_unique<InitialDataReader>(nullptr, false, nullptr, &fields_.List());
        int number = 0;
        for (const double value : values) {
            Record record(2);
            record[0] = number++;
            record[1] = value;
            ASSERT_TRUE(store_->AddRecord(record).IsOK());
        }
        set_ = std::make_unique<TARNSortedDataSet>(store_->Begin());
    }

    /// Registers a field, says that it will be read, and makes the views.
    TARNSortedIterator* ViewOf(int field) {
        EXPECT_TRUE(set_->Register(field));
        set_->ExpectReader(field);
        EXPECT_TRUE(set_->Build().IsOK());
        return set_->IteratorOf(field);
    }

    static std::vector<int> Numbers(TARNSortedIterator& view) {
        std::vector<int> numbers;
        while (view.HasMore()) numbers.push_back(static_cast<int>((*view.Next())[0]));
        return numbers;
    }

    harness::Fields fields_;
    std::unique_ptr<InitialDataReader> store_;
    std::unique_ptr<TARNSortedDataSet> set_;
};

}  // namespace

TEST_F(TARNSortedDataSetTest, RegistersFieldsOfTheRecordsOnly) {
    Fill({1});
    EXPECT_FALSE(set_->HasRegistered());
    for (const int field : {-1, 2, 100, -2147483647}) EXPECT_FALSE(set_->Register(field)) << field;
    EXPECT_FALSE(set_->HasRegistered());
    EXPECT_TRUE(set_->Register(1));
    EXPECT_TRUE(set_->Register(1)) << "asking twice is asking once";
    EXPECT_TRUE(set_->Register(0));
    EXPECT_TRUE(set_->HasRegistered());
}

TEST_F(TARNSortedDataSetTest, AFieldThatIsNotSortedHasNoView) {
    Fill({2, 1});
    EXPECT_NE(ViewOf(1), nullptr);
    for (const int field : {-1, 0, 2}) EXPECT_EQ(set_->IteratorOf(field), nullptr) << field;
}

TEST_F(TARNSortedDataSetTest, AViewThatNobodyReadsIsNotMade) {
    Fill({2, 1});
    EXPECT_TRUE(set_->Register(0));
    EXPECT_NE(ViewOf(1), nullptr);
    EXPECT_EQ(set_->IteratorOf(0), nullptr);
}

TEST_F(TARNSortedDataSetTest, DeliversTheRecordsInAscendingOrderWithMissingValuesByTheirNumber) {
    Fill({3, -2, kNone, 100, 0.5});
    TARNSortedIterator* view = ViewOf(1);
    EXPECT_EQ(Numbers(*view), (std::vector<int>{2, 1, 4, 0, 3}));
}

TEST_F(TARNSortedDataSetTest, DeliversExactlySizeRecordsWithEqualValuesInAnyOrder) {
    std::vector<double> values;
    for (int i = 0; i < 4100; ++i) values.push_back((i * 31) % 10);
    Fill(values);
    TARNSortedIterator* view = ViewOf(1);
    const std::vector<int> numbers = Numbers(*view);
    ASSERT_EQ(numbers.size(), 4100u);
    EXPECT_EQ(std::set<int>(numbers.begin(), numbers.end()).size(), 4100u) << "each record once";
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        EXPECT_LE(values[static_cast<std::size_t>(numbers[i - 1])], values[static_cast<std::size_t>(numbers[i])]);
    }
}

TEST_F(TARNSortedDataSetTest, TheLastRecordIsDeliveredBeforeTheViewReportsItsEnd) {
    Fill({5});
    TARNSortedIterator* view = ViewOf(1);
    EXPECT_TRUE(view->HasMore());
    EXPECT_EQ(view->GetState(), 0);
    const Record* record = view->Next();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ((*record)[1], 5);
    EXPECT_EQ(view->Ordinal(), 0);
    EXPECT_FALSE(view->HasMore());
    EXPECT_EQ(view->GetState(), 1);
    EXPECT_EQ(view->Next(), nullptr);
}

TEST_F(TARNSortedDataSetTest, RewindStartsOverFromAnyPlace) {
    Fill({3, 1, 2});
    TARNSortedIterator* view = ViewOf(1);
    view->Next();
    EXPECT_EQ(view->Rewind(), 0);
    EXPECT_EQ(Numbers(*view), (std::vector<int>{1, 2, 0}));
    EXPECT_EQ(view->Rewind(), 0);
    EXPECT_EQ(view->GetState(), 0);
    EXPECT_EQ(Numbers(*view), (std::vector<int>{1, 2, 0}));
}

TEST_F(TARNSortedDataSetTest, OrdinalIsThePlaceInTheStore) {
    Fill({3, 1, 2});
    TARNSortedIterator* view = ViewOf(1);
    while (view->HasMore()) {
        const Record* record = view->Next();
        EXPECT_EQ(view->Ordinal(), (*record)[0]);
    }
}

TEST_F(TARNSortedDataSetTest, ViewsByTwoFieldsGoTheirOwnWays) {
    Fill({3, 1, 2});
    EXPECT_TRUE(set_->Register(0));
    set_->ExpectReader(0);
    TARNSortedIterator* byValue = ViewOf(1);
    TARNSortedIterator* byNumber = set_->IteratorOf(0);
    ASSERT_NE(byNumber, nullptr);
    byValue->Next();
    EXPECT_EQ(Numbers(*byNumber), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Numbers(*byValue), (std::vector<int>{2, 0}));
}

TEST_F(TARNSortedDataSetTest, AViewOfNoRecordIsAtItsEnd) {
    Fill({});
    const QKTarn::ColumnView columns(store_->Columns(), store_->IncompleteInStore(), 0);
    TARNSortedIterator view(columns);
    EXPECT_FALSE(view.HasMore());
    EXPECT_EQ(view.GetState(), 1);
    EXPECT_EQ(view.Next(), nullptr);
    EXPECT_EQ(view.Rewind(), 1);
    EXPECT_FALSE(view.HasMore());
}
