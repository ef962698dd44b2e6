// The descriptive store over a memory store, and its read-only view.

#include "support/UnivariateCollector.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <vector>

#include "planning/records/TARNSortedDataSet.h"
#include "support/UnivariateResults.h"
#include "tests/harness/TestRun.h"

namespace {

using harness::kNoCategory;
using harness::kNone;

/// A memory store filled with rows, with a collector over it.
class Store {
 public:
    Store(harness::Fields& fields, std::vector<std::vector<double>> rows)
        : stream(std::move(rows)), reader(2048, &stream, false, &none, &fields.List()) {
        static_cast<void>(reader.ReadAll());
        sorted = std::make_unique<TARNSortedDataSet>(reader.Begin());
        collector = std::make_unique<UnivariateCollector>(reader.Begin(), fields.List());
    }

    /// Makes the sorted view of a field, as a run does when a sorted test is planned.
    void Sort(int field) {
        sorted->Register(field);
        collector->SetSortedData(sorted.get());
    }
    void Compute() {
        ASSERT_TRUE(sorted->Build().IsOK());
        status = collector->Compute();
    }

    harness::RowStream stream;
    std::vector<int> none;
    QKTarn::InitialDataReader reader;
    std::unique_ptr<TARNSortedDataSet> sorted;
    std::unique_ptr<UnivariateCollector> collector;
    QKStatus status;
};

TEST(UnivariateCollector, MissingValuesTakeNoPart) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2});
    Store store(fields, {{1, 0}, {kNone, 1}, {5, kNoCategory}, {-1.0, 1}});
    EXPECT_TRUE(store.collector->Request(0, Statistic::kMeanAndStdDev));
    EXPECT_TRUE(store.collector->Request(1, Statistic::kFrequencies));
    store.Compute();
    const UnivariateResults results(*store.collector);
    EXPECT_EQ(results.GetCount(0), 3);
    EXPECT_DOUBLE_EQ(results.GetMean(0), 5.0 / 3);  // -1 is a value of a continuous field
    EXPECT_EQ(results.GetCount(1), 3);
    std::map<int, std::int32_t> frequencies;
    EXPECT_TRUE(results.GetFrequencies(1, frequencies));
    EXPECT_EQ(frequencies, (std::map<int, std::int32_t>{{0, 1}, {1, 2}}));
}

TEST(UnivariateCollector, QuantileRequestBeforeAnySortedWorkerIsRefused) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2});
    Store store(fields, {{1, 0}});
    for (const int code : {4, 5, 9}) EXPECT_FALSE(store.collector->Request(0, code)) << code;
    EXPECT_TRUE(store.collector->Request(1, 4));  // the median category needs no order
    store.Sort(0);
    for (const int code : {4, 5, 9}) EXPECT_TRUE(store.collector->Request(0, code)) << code;
}

TEST(UnivariateCollector, ARequestForWhatAFieldDoesNotHaveIsTakenAllTheSame) {
    harness::Fields fields;
    fields.Continuous("x");
    Store store(fields, {{1}});
    EXPECT_TRUE(store.collector->Request(0, Statistic::kFrequencies));
    EXPECT_TRUE(UnivariateResults(*store.collector).HasVariable(0));
}

TEST(UnivariateCollector, FieldOfKind4AndUnknownFieldGetNoRecord) {
    harness::Fields fields;
    fields.Continuous("x").Other("o");
    Store store(fields, {{1, 2}});
    EXPECT_FALSE(store.collector->Request(1, Statistic::kMin));
    EXPECT_FALSE(store.collector->Request(7, Statistic::kMin));
    EXPECT_FALSE(UnivariateResults(*store.collector).HasVariable(1));
    EXPECT_TRUE(store.collector->Request(0, Statistic::kMin));
    store.Compute();
    EXPECT_EQ(UnivariateResults(*store.collector).GetMin(0), 1);
}

TEST(UnivariateCollector, HingesOfAFieldWithMissingValuesInAnyOrder) {
    harness::Fields fields;
    fields.Continuous("x");
    Store store(fields, {{8}, {kNone}, {1}, {7}, {3}});
    store.Sort(0);
    EXPECT_TRUE(store.collector->Request(0, Statistic::kQuantiles));
    store.Compute();
    const UnivariateResults results(*store.collector);
    EXPECT_EQ(results.GetFirstQuartile(0), 2);  // n = 4: positions 1.5, 2.5, 3.5 of 1 3 7 8
    EXPECT_EQ(results.GetMedian(0), 5);
    EXPECT_EQ(results.GetThirdQuartile(0), 7.5);
}

TEST(UnivariateCollector, QuantilesOfAFieldWithoutASortedViewEndIn220005) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    Store store(fields, {{1, 2}, {2, 3}});
    store.Sort(0);
    EXPECT_TRUE(store.collector->Request(1, Statistic::kQuantiles));
    store.Compute();
    EXPECT_EQ(store.status, QKStatus(220005));
}

TEST(UnivariateCollector, FieldBehindOneThatNeedsNoPassGetsNoSecondEnd) {
    // The zeros of x make an interval where nothing stands before it, and none behind a field of one pass.
    harness::Fields alone;
    alone.Continuous("x");
    Store first(alone, {{0}, {2}});
    first.collector->Request(0, Statistic::kHistogram);
    first.Compute();
    EXPECT_EQ(first.collector->FindContinuous(0)->GetBins().back().count, 1);
    EXPECT_EQ(first.collector->FindContinuous(0)->GetBins().size(), 402u);

    harness::Fields behind;
    behind.Numeric("g", {1}).Continuous("x");
    Store second(behind, {{0, 0}, {0, 2}});
    second.collector->Request(0, Statistic::kFrequencies);
    second.collector->Request(1, Statistic::kHistogram);
    second.Compute();
    EXPECT_EQ(second.collector->FindContinuous(1)->GetBins().size(), 401u);
    EXPECT_EQ(second.collector->FindContinuous(1)->GetBins().back().mean, 2);  // no interval of zeros behind it
}

TEST(UnivariateCollector, WeightSetLateHoldsForRecordsThatExist) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("w");
    Store store(fields, {{1, 2}, {4, 3}});
    store.collector->Request(0, Statistic::kMeanAndStdDev);
    store.collector->SetWeight(1);
    store.Compute();
    EXPECT_EQ(UnivariateResults(*store.collector).GetCount(0), 5);
}

TEST(UnivariateCollector, WithoutRecordsComputesNothing) {
    harness::Fields fields;
    fields.Continuous("x");
    Store store(fields, {});
    store.collector->Request(0, Statistic::kHistogram);
    EXPECT_TRUE(store.collector->Compute().IsOK());
    EXPECT_TRUE(store.collector->FindContinuous(0)->NeedsPass());
}

TEST(UnivariateResults, AnswersForFieldsThatAreNotThereAndOfTheOtherFamily) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2});
    Store store(fields, {{1, 0}});
    store.collector->Request(0, Statistic::kMean);
    store.collector->Request(1, Statistic::kFrequencies);
    store.Compute();
    const UnivariateResults results(*store.collector);
    std::map<int, std::int32_t> frequencies{{9, 9}};
    const std::map<int, std::int32_t> before = frequencies;

    for (const int absent : {1, 5, -1}) {  // the categorical field, and two that are not there
        EXPECT_EQ(results.GetMean(absent), QKMV::Missing());
        EXPECT_EQ(results.GetMin(absent), QKMV::Missing());
        EXPECT_EQ(results.GetMax(absent), QKMV::Missing());
        EXPECT_EQ(results.GetMedian(absent), QKMV::Missing());
        EXPECT_EQ(results.GetFirstQuartile(absent), QKMV::Missing());
        EXPECT_EQ(results.GetThirdQuartile(absent), QKMV::Missing());
        EXPECT_EQ(results.GetStdDev(absent), QKMV::Missing());
        EXPECT_EQ(results.GetContinuous(absent), nullptr);
    }
    for (const int absent : {0, 5, -1}) {
        EXPECT_EQ(results.GetMedianCategory(absent), -1);
        EXPECT_EQ(results.GetModeFrequency(absent), -1);
        EXPECT_EQ(results.GetCategoryCount(absent), -1);
        EXPECT_FALSE(results.GetFrequencies(absent, frequencies));
        EXPECT_EQ(frequencies, before);
    }
    EXPECT_EQ(results.GetCount(5), -1);
    EXPECT_FALSE(results.HasVariable(5));
    EXPECT_TRUE(results.HasVariable(1));
    EXPECT_EQ(results.GetCategoryCount(1), 2);
}

}  // namespace
