// The descriptive store over a memory store: what can be asked of it, and its passes.

#include "support/UnivariateCollector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "support/UnivariateResults.h"
#include "tests/harness/CollectorRig.h"

namespace {

using harness::Fields;
using harness::kNoCategory;
using harness::kNone;

// ---- Requests ----

enum Field { kContinuousField, kNumericField, kTextField, kOtherField, kUnknownField };

Fields OneFieldOfEachKind() {
    Fields fields;
    fields.Continuous("x").Numeric("n", {1, 2}).Text("t", {"a"}).Other("o");
    return fields;
}

TEST(UnivariateCollectorRequest, AnswersByTheKindOfFieldAndTheSortedViews) {
    for (const bool sorted : {false, true}) {
        for (int code = -1; code <= 10; ++code) {
            Fields fields = OneFieldOfEachKind();
            CollectorRig rig(fields, {{1, 0, 0, 1}});
            if (sorted) rig.Sort(kContinuousField);
            SCOPED_TRACE(testing::Message() << "code " << code << (sorted ? ", sorted" : ""));
            // Quantiles need a sorted view of something. For all else the answer is yes, even where the field has no
            // such statistic.
            const bool wantsQuantiles = code == 4 || code == 5 || code == 9;
            EXPECT_EQ(rig.Request(kContinuousField, code), sorted || !wantsQuantiles);
            EXPECT_TRUE(rig.Request(kNumericField, code));  // the median category needs no order
            EXPECT_TRUE(rig.Request(kTextField, code));
            // Neither has a record that could take it.
            EXPECT_FALSE(rig.Request(kOtherField, code));
            EXPECT_FALSE(rig.Request(kUnknownField, code));
            EXPECT_FALSE(rig.Request(-1, code));
        }
    }
}

TEST(UnivariateCollectorRequest, QuantilesOfAContinuousFieldBeforeAnySortedWorkerExistsAreRefusedAndNotStored) {
    Fields fields = OneFieldOfEachKind();
    CollectorRig rig(fields, {{1, 0, 0, 1}, {9, 0, 0, 1}});
    EXPECT_FALSE(rig.Request(kContinuousField, Statistic::kAll));
    rig.Sort(kContinuousField);
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_TRUE(results.HasVariable(kContinuousField));  // the record is made before the refusal
    EXPECT_EQ(results.GetCount(kContinuousField), 2);
    EXPECT_EQ(results.GetMean(kContinuousField), 0);
    EXPECT_EQ(results.GetMin(kContinuousField), QKMV::Missing());
    EXPECT_EQ(results.GetMedian(kContinuousField), QKMV::Missing());
    EXPECT_TRUE(results.GetContinuous(kContinuousField)->empty());
}

TEST(UnivariateCollectorRequest, StatisticThatAFieldDoesNotHaveStoresNothing) {
    Fields fields = OneFieldOfEachKind();
    CollectorRig rig(fields, {{1, 1, 0, 1}, {9, 1, 0, 1}});
    for (const int code : {-1, 7, 8, 10}) EXPECT_TRUE(rig.Request(kContinuousField, code));
    for (const int code : {-1, 0, 1, 2, 3, 5, 6, 10}) EXPECT_TRUE(rig.Request(kNumericField, code));
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetMean(kContinuousField), 0);
    EXPECT_EQ(results.GetMax(kContinuousField), QKMV::Missing());
    EXPECT_EQ(results.GetModeFrequency(kNumericField), 0);
    EXPECT_EQ(results.GetMedianCategory(kNumericField), 0);
    std::map<int, std::int32_t> frequencies;
    EXPECT_TRUE(results.GetFrequencies(kNumericField, frequencies));  // counted whatever is asked for
    EXPECT_EQ(frequencies, (std::map<int, std::int32_t>{{0, 0}, {1, 2}}));
}

TEST(UnivariateCollectorRequest, SeveralRequestsOfAFieldAddUp) {
    Fields fields = OneFieldOfEachKind();
    CollectorRig rig(fields, {{1, 0, 0, 1}, {9, 0, 0, 1}});
    for (const int code : {2, 3, 0, 2}) EXPECT_TRUE(rig.Request(kContinuousField, code));
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetMin(kContinuousField), 1);
    EXPECT_EQ(results.GetMax(kContinuousField), 9);
    EXPECT_EQ(results.GetMean(kContinuousField), 5);
    EXPECT_EQ(results.GetCount(kContinuousField), 2);
}

TEST(UnivariateCollectorRequest, FieldWithoutARecordOfItsOwnIsInNobodysWay) {
    Fields fields;
    fields.Other("o").Continuous("x");
    CollectorRig rig(fields, {{1, 0}, {1, 2}});
    EXPECT_FALSE(rig.Request(0, Statistic::kMin));
    EXPECT_TRUE(rig.Request(1, Statistic::kHistogram));
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_FALSE(UnivariateResults(*rig.collector).HasVariable(0));
    EXPECT_EQ(rig.collector->FindContinuous(1)->GetBins().back().mean, 0);  // the second pass ended: there are zeros
}

// ---- Passes ----

TEST(UnivariateCollectorCompute, WithoutRecordsIsOKAtOnce) {
    Fields fields;
    fields.Continuous("x");
    CollectorRig rig(fields, {});
    rig.Request(0, Statistic::kHistogram);
    EXPECT_TRUE(rig.collector->Compute().IsOK());
    EXPECT_TRUE(rig.collector->FindContinuous(0)->NeedsPass());
    EXPECT_EQ(rig.collector->FindContinuous(0)->GetMin(), QKMV::Missing());
}

TEST(UnivariateCollectorCompute, WithoutFieldsIsOK) {
    Fields fields;
    fields.Continuous("x");
    CollectorRig rig(fields, {{1}});
    EXPECT_TRUE(rig.Compute().IsOK());
}

TEST(UnivariateCollectorCompute, MissingValuesTakeNoPart) {
    Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2});
    CollectorRig rig(fields, {{1, 0}, {kNone, 1}, {5, kNoCategory}, {-1.0, 1}});
    rig.Request(0, Statistic::kMeanAndStdDev);
    rig.Request(1, Statistic::kFrequencies);
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetCount(0), 3);
    EXPECT_DOUBLE_EQ(results.GetMean(0), 5.0 / 3);  // -1 is a value of a continuous field
    EXPECT_EQ(results.GetCount(1), 3);
    std::map<int, std::int32_t> frequencies;
    EXPECT_TRUE(results.GetFrequencies(1, frequencies));
    EXPECT_EQ(frequencies, (std::map<int, std::int32_t>{{0, 1}, {1, 2}}));
}

TEST(UnivariateCollectorCompute, HistogramTakesASecondPassOverTheSameRecords) {
    Fields fields;
    fields.Continuous("x").Continuous("y");
    CollectorRig rig(fields, {{4, 1}, {kNone, 2}, {8, 3}});
    rig.Request(0, Statistic::kHistogram);
    rig.Request(1, Statistic::kHistogram);
    rig.Request(1, Statistic::kMean);
    EXPECT_TRUE(rig.Compute().IsOK());
    const QKContUnivariateVariable& x = *rig.collector->FindContinuous(0);
    EXPECT_EQ(x.GetBins().front().count, 1);
    EXPECT_EQ(x.GetBins().back().count, 1);
    EXPECT_EQ(x.GetBins().back().mean, 8);
    EXPECT_FALSE(x.NeedsPass());
    EXPECT_EQ(rig.collector->FindContinuous(1)->GetCount(), 3);  // the moments come from the first pass alone
    EXPECT_EQ(rig.collector->FindContinuous(1)->GetMean(), 2);
}

/// Whether the zeros of a field came into an interval of their own, which its second end of a pass makes.
bool HasIntervalOfZeros(const CollectorRig& rig, int field) {
    const HistogramBin& last = rig.collector->FindContinuous(field)->GetBins().back();
    return last.mean == 0 && last.count > 0;
}

// Records are taken in parts of 65,536; what is in them tells whether each was taken once.
TEST(UnivariateCollectorCompute, RecordsOfSeveralPartsCountOnce) {
    constexpr int kRecords = 200'000;
    std::vector<std::vector<double>> rows;
    for (int i = 0; i < kRecords; ++i) rows.push_back({static_cast<double>(i % 10), static_cast<double>(i % 5)});
    Fields fields;
    fields.Continuous("x").Numeric("n", {1, 2, 3, 4, 5});
    CollectorRig rig(fields, rows);
    rig.Request(0, Statistic::kMean);
    rig.Request(1, Statistic::kFrequencies);
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetCount(0), kRecords);
    EXPECT_NEAR(results.GetMean(0), 4.5, 1e-12);
    std::map<int, std::int32_t> frequencies;
    results.GetFrequencies(1, frequencies);
    for (int category = 0; category < 5; ++category) EXPECT_EQ(frequencies[category], kRecords / 5) << category;
}

// Of so many records a second thread takes half of the fields; one field alone stays on the caller's.
TEST(UnivariateCollectorCompute, FieldsOfManyRecordsAreWhatTheyAreAlone) {
    constexpr int kRecords = 60'000;
    std::vector<std::vector<double>> rows;
    for (int i = 0; i < kRecords; ++i) rows.push_back({i % 977 * 0.37, 0.001 * i * i, static_cast<double>(i % 3)});
    const auto compute = [&](const std::vector<int>& wanted, int field) {
        Fields fields;
        fields.Continuous("x").Continuous("y").Numeric("n", {1, 2, 3});
        CollectorRig rig(fields, rows);
        for (const int one : wanted) rig.Request(one, Statistic::kHistogram);
        for (const int one : wanted) rig.Request(one, Statistic::kMeanAndStdDev);
        for (const int one : wanted) rig.Request(one, Statistic::kFrequencies);
        EXPECT_TRUE(rig.Compute().IsOK());
        const UnivariateResults results(*rig.collector);
        std::vector<double> numbers{static_cast<double>(results.GetCount(field)), results.GetMean(field),
                                    results.GetStdDev(field), results.GetMin(field), results.GetMax(field)};
        if (const auto* const bins = results.GetContinuous(field)) {
            for (const HistogramBin& bin : *bins)
                numbers.insert(numbers.end(), {static_cast<double>(bin.count), bin.mean});
        }
        std::map<int, std::int32_t> frequencies;
        results.GetFrequencies(field, frequencies);
        for (const auto& [category, frequency] : frequencies) numbers.push_back(frequency);
        return numbers;
    };
    for (const int field : {0, 1, 2}) EXPECT_EQ(compute({0, 1, 2}, field), compute({field}, field)) << field;
}

TEST(UnivariateCollectorCompute, FieldBehindOneThatNeedsNoPassGetsNoSecondEnd) {
    Fields fields;
    fields.Continuous("a").Continuous("b").Numeric("g", {1}).Continuous("c");
    CollectorRig rig(fields, {{0, 0, 0, 0}, {2, 2, 0, 2}});
    for (const int field : {0, 1, 3}) rig.Request(field, Statistic::kHistogram);
    rig.Request(2, Statistic::kFrequencies);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_TRUE(HasIntervalOfZeros(rig, 0));
    EXPECT_TRUE(HasIntervalOfZeros(rig, 1));
    EXPECT_FALSE(HasIntervalOfZeros(rig, 3));
    // It saw the records of the second pass all the same.
    EXPECT_EQ(rig.collector->FindContinuous(3)->GetBins().size(), 401u);
    EXPECT_EQ(rig.collector->FindContinuous(3)->GetBins().back().count, 1);
    EXPECT_EQ(rig.collector->FindContinuous(3)->GetBins().back().mean, 2);
    EXPECT_TRUE(rig.collector->FindContinuous(3)->NeedsPass());
}

TEST(UnivariateCollectorCompute, ContinuousFieldOfOnePassEndsTheWalkAsWell) {
    Fields fields;
    fields.Continuous("m").Continuous("h");
    CollectorRig rig(fields, {{1, 0}, {2, 2}});
    rig.Request(0, Statistic::kMean);
    rig.Request(1, Statistic::kHistogram);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_FALSE(HasIntervalOfZeros(rig, 1));
    EXPECT_EQ(rig.collector->FindContinuous(1)->GetMax(), 2);  // the end of the first pass was told to both
}

TEST(UnivariateCollectorCompute, FieldsComeInTheOrderOfTheirIndicesNotOfTheRequests) {
    Fields fields;
    fields.Numeric("g", {1}).Continuous("h");
    CollectorRig rig(fields, {{0, 0}, {0, 2}});
    rig.Request(1, Statistic::kHistogram);
    rig.Request(0, Statistic::kFrequencies);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_FALSE(HasIntervalOfZeros(rig, 1));
}

// ---- Quantiles ----

TEST(UnivariateCollectorCompute, HingesOfAFieldWithMissingValuesInAnyOrder) {
    Fields fields;
    fields.Continuous("x");
    CollectorRig rig(fields, {{8}, {kNone}, {1}, {7}, {3}});
    rig.Sort(0);
    EXPECT_TRUE(rig.Request(0, Statistic::kMedian));  // stored as quantiles
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetFirstQuartile(0), 2);  // n = 4: positions 1.5, 2.5, 3.5 of 1 3 7 8
    EXPECT_EQ(results.GetMedian(0), 5);
    EXPECT_EQ(results.GetThirdQuartile(0), 7.5);
    EXPECT_EQ(results.GetMin(0), 1);  // the steps keep the range, which nobody asked for
    EXPECT_EQ(results.GetMax(0), 8);
    EXPECT_EQ(results.GetMean(0), 0);
}

TEST(UnivariateCollectorCompute, HingesTakeTruncatedWeightsAndPassOverAMissingOne) {
    Fields fields;
    fields.Continuous("x").Weight("w");
    CollectorRig rig(fields, {{10, 5.9}, {2, 1.2}, {1, 2.9}});
    rig.collector->SetWeight(1);
    rig.Sort(0);
    rig.Request(0, Statistic::kQuantiles);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_EQ(rig.collector->FindContinuous(0)->GetFirstQuartile(), 1.5);  // 1 1 2 10 10 10 10 10
    EXPECT_EQ(rig.collector->FindContinuous(0)->GetMedian(), 10);

    // A missing weight counts as the smallest integer, so that every position lies below the first value; but its own
    // value, the smallest one, is not that first value.
    CollectorRig missing(fields, {{1, kNone}, {2, 1}, {3, 1}});
    missing.collector->SetWeight(1);
    missing.Sort(0);
    missing.Request(0, Statistic::kQuantiles);
    EXPECT_TRUE(missing.Compute().IsOK());
    EXPECT_EQ(missing.collector->FindContinuous(0)->GetFirstQuartile(), 2);
    EXPECT_EQ(missing.collector->FindContinuous(0)->GetMedian(), 2);
    EXPECT_EQ(missing.collector->FindContinuous(0)->GetThirdQuartile(), 2);
}

// By hand: 1 3 7 8 9 10 and what is no number behind them, n = 7, positions 2.5, 4 and 5.5.
TEST(UnivariateCollectorCompute, HingesCountWhatIsNoNumberBehindAllOthersAndEachValueOnce) {
    Fields fields;
    fields.Continuous("x");
    CollectorRig rig(fields, {{8}, {std::numeric_limits<double>::quiet_NaN()}, {1}, {10}, {7}, {kNone}, {3}, {9}});
    rig.Sort(0);
    EXPECT_TRUE(rig.Request(0, Statistic::kQuantiles));
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetFirstQuartile(0), 5);
    EXPECT_EQ(results.GetMedian(0), 8);
    EXPECT_EQ(results.GetThirdQuartile(0), 9.5);
}

TEST(UnivariateCollectorCompute, QuantilesOfAFieldWithoutASortedViewAre220005AndStopTheFieldsBehind) {
    Fields fields;
    fields.Continuous("a").Continuous("b").Continuous("c").Continuous("s");
    CollectorRig rig(fields, {{1, 2, 3, 4}, {2, 3, 5, 6}});
    rig.Sort(3);
    rig.Request(0, Statistic::kAll);
    rig.Request(0, Statistic::kMeanAndStdDev);
    EXPECT_TRUE(rig.Request(1, Statistic::kQuantiles));
    rig.Request(2, Statistic::kMeanAndStdDev);
    rig.sorted->Register(0);
    EXPECT_EQ(rig.Compute(), QKStatus(220005));
    EXPECT_EQ(rig.collector->FindContinuous(0)->GetMedian(), 1.5);
    EXPECT_EQ(rig.collector->FindContinuous(0)->GetStdDev(), 0.70710678118654757);  // root of 1/2: its pass ended
    EXPECT_EQ(rig.collector->FindContinuous(2)->GetMean(), 4);
    EXPECT_EQ(rig.collector->FindContinuous(2)->GetStdDev(), 0);  // its pass did not end
    for (const HistogramBin& bin : rig.collector->FindContinuous(0)->GetBins()) EXPECT_EQ(bin.count, 0);
}

// ---- The weight ----

TEST(UnivariateCollectorCompute, WeightSetLateHoldsForRecordsThatExistAndForLaterOnes) {
    Fields fields;
    fields.Continuous("x").Numeric("g", {1}).Continuous("w");
    CollectorRig rig(fields, {{1, 0, 2.5}, {4, 0, 3}});
    rig.Request(0, Statistic::kMean);
    rig.collector->SetWeight(2);
    rig.Request(1, Statistic::kModeFrequency);
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetCount(0), 5);
    EXPECT_DOUBLE_EQ(results.GetMean(0), 2.8);
    EXPECT_EQ(results.GetModeFrequency(1), 5);
}

}  // namespace
