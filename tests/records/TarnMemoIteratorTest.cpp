#include <gtest/gtest.h>

#include <vector>

#include "records/InitialDataReader.h"
#include "tests/harness/TestRun.h"

using QKTarn::InitialDataReader;
using QKTarn::TarnMemoIterator;

namespace {

/// Records are parted into columns in groups, of which this is a whole number.
constexpr int kMany = 2048;

/// A store of `count` records, whose two values are the record's number and its double.
class TarnMemoIteratorTest : public testing::Test {
 protected:
    void Fill(int count) {
        fields_.Continuous("number").Continuous("twice");
        for (int i = 0; i < count; ++i) {
            Record record(2);
            record[0] = i;
            record[1] = 2.0 * i;
            ASSERT_TRUE(store_.AddRecord(record).IsOK());
        }
    }

    static void ExpectRecord(const Record* record, int number) {
        ASSERT_NE(record, nullptr);
        EXPECT_EQ((*record)[0], number);
        EXPECT_EQ((*record)[1], 2.0 * number);
        EXPECT_EQ(record->Size(), 2u);
    }

    harness::Fields fields_;
    InitialDataReader store_{nullptr, false, nullptr, &fields_.List()};
};

}  // namespace

TEST_F(TarnMemoIteratorTest, BeginOfAnEmptyStoreIsPastTheEnd) {
    Fill(0);
    TarnMemoIterator iterator = store_.Begin();
    EXPECT_EQ(iterator.Index(), -1);
    EXPECT_FALSE(iterator.HasMore());
    EXPECT_EQ(iterator.Next(), nullptr);
    EXPECT_EQ(iterator.At(0).Index(), -1);
    EXPECT_EQ(iterator.Rewind(), 0);
    EXPECT_FALSE(iterator.HasMore());
    EXPECT_EQ(iterator.Next(), nullptr);
    EXPECT_EQ(iterator.GetState(), 1);
    EXPECT_EQ(iterator.Index(), -1);
}

TEST_F(TarnMemoIteratorTest, NextDeliversEveryRecord) {
    const int count = 2 * kMany + 1;
    Fill(count);
    TarnMemoIterator iterator = store_.Begin();
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(iterator.HasMore());
        EXPECT_EQ(iterator.GetState(), 0);
        EXPECT_EQ(iterator.Index(), i);
        ExpectRecord(iterator.Next(), i);
    }
    EXPECT_FALSE(iterator.HasMore());
    EXPECT_EQ(iterator.GetState(), 1);
    EXPECT_EQ(iterator.Index(), -1);
    EXPECT_EQ(iterator.Next(), nullptr);
}

TEST_F(TarnMemoIteratorTest, AtGivesANewIteratorThatManyRecordsFurther) {
    const int count = 2 * kMany;
    Fill(count);
    const TarnMemoIterator begin = store_.Begin();
    for (const int offset : {0, 1, 2047, 2048, 2049, 4095}) {
        TarnMemoIterator there = begin.At(offset);
        EXPECT_EQ(there.Index(), offset);
        ExpectRecord(there.Next(), offset);
    }
    for (const int offset : {4096, 4097, 2147483647}) {
        TarnMemoIterator past = begin.At(offset);
        EXPECT_EQ(past.Index(), -1) << offset;
        EXPECT_FALSE(past.HasMore()) << offset;
        EXPECT_EQ(past.Next(), nullptr) << offset;
    }
    // The offset counts from the iterator and not from the first record.
    TarnMemoIterator middle = begin.At(2000);
    ExpectRecord(middle.At(48).Next(), 2048);
    EXPECT_EQ(middle.At(2096).Index(), -1);
    EXPECT_EQ(middle.Index(), 2000);
    EXPECT_EQ(begin.Index(), 0);
}

TEST_F(TarnMemoIteratorTest, AtOfAnIteratorPastTheEndIsPastTheEnd) {
    Fill(1);
    TarnMemoIterator iterator = store_.Begin();
    iterator.Next();
    EXPECT_EQ(iterator.At(0).Index(), -1);
    EXPECT_EQ(iterator.At(1).Index(), -1);
}

TEST_F(TarnMemoIteratorTest, RewindGoesBackToTheFirstRecordAndClearsTheState) {
    Fill(2);
    TarnMemoIterator iterator = store_.Begin();
    iterator.Next();
    iterator.Next();
    EXPECT_EQ(iterator.GetState(), 1);
    EXPECT_EQ(iterator.Rewind(), 0);
    EXPECT_EQ(iterator.GetState(), 0);
    ExpectRecord(iterator.Next(), 0);
    ExpectRecord(iterator.Next(), 1);
    EXPECT_FALSE(iterator.HasMore());
}

TEST_F(TarnMemoIteratorTest, ThePostfixIncrementReturnsTheOldPosition) {
    Fill(2);
    TarnMemoIterator iterator = store_.Begin();
    TarnMemoIterator before = iterator++;
    EXPECT_EQ(before.Index(), 0);
    EXPECT_EQ(iterator.Index(), 1);
    ExpectRecord(before.Next(), 0);
    before = iterator++;
    ExpectRecord(before.Next(), 1);
    EXPECT_EQ(iterator.Index(), -1);
    EXPECT_EQ(iterator.GetState(), 1);
}

TEST_F(TarnMemoIteratorTest, CopiesGoTheirOwnWays) {
    Fill(3);
    TarnMemoIterator first = store_.Begin();
    first.Next();
    TarnMemoIterator second = first;
    ExpectRecord(second.Next(), 1);
    ExpectRecord(second.Next(), 2);
    ExpectRecord(first.Next(), 1);
    EXPECT_EQ(first.GetState(), 0);
    EXPECT_EQ(second.GetState(), 1);
    EXPECT_EQ(first.Store(), &store_);
}

TEST(TarnMemoIteratorOfNothingTest, IsPastTheEnd) {
    TarnMemoIterator iterator;
    EXPECT_FALSE(iterator.HasMore());
    EXPECT_EQ(iterator.GetState(), 0);
    EXPECT_EQ(iterator.Next(), nullptr);
    EXPECT_EQ(iterator.GetState(), 1);
    EXPECT_EQ(iterator.Store(), nullptr);
}
