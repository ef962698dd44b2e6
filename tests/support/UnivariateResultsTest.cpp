#include "support/UnivariateResults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <vector>

#include "tests/harness/CollectorRig.h"

namespace {

constexpr int kContinuousField = 0;
constexpr int kCategoricalField = 1;
constexpr int kOtherField = 2;   // asked for in vain
constexpr int kUnrequested = 3;  // a field that nobody asked for
constexpr int kOutside = 9;

class UnivariateResultsTest : public testing::Test {
 protected:
    UnivariateResultsTest() {
        rig_.Sort(kContinuousField);
        EXPECT_TRUE(rig_.Request(kContinuousField, Statistic::kAll));
        EXPECT_TRUE(rig_.Request(kCategoricalField, Statistic::kAll));
        EXPECT_FALSE(rig_.Request(kOtherField, Statistic::kAll));
        EXPECT_TRUE(rig_.Compute().IsOK());
    }

    harness::Fields fields_ =
        harness::Fields().Continuous("x").Numeric("g", {1, 2, 3}).Other("o").Continuous("unrequested");
    // x: 1 2 4 8, g: 2 1 2 2
    CollectorRig rig_{fields_, {{4, 2, 0, 1}, {1, 1, 0, 1}, {8, 2, 0, 1}, {2, 2, 0, 1}}};
    const UnivariateResults results_{*rig_.collector};
};

TEST_F(UnivariateResultsTest, AnswerWhatTheContinuousRecordHolds) {
    EXPECT_TRUE(results_.HasVariable(kContinuousField));
    EXPECT_EQ(results_.GetCount(kContinuousField), 4);
    EXPECT_EQ(results_.GetMean(kContinuousField), 3.75);
    EXPECT_EQ(results_.GetMax(kContinuousField), 8);
    EXPECT_EQ(results_.GetMin(kContinuousField), 1);
    EXPECT_EQ(results_.GetMedian(kContinuousField), 3);
    EXPECT_EQ(results_.GetFirstQuartile(kContinuousField), 1.5);
    EXPECT_EQ(results_.GetThirdQuartile(kContinuousField), 6);
    // 85 - 15^2 / 4 = 28.75, a third of it under the root; mpmath
    EXPECT_DOUBLE_EQ(results_.GetStdDev(kContinuousField), 3.0956959368344516);
    EXPECT_EQ(results_.GetContinuous(kContinuousField), &rig_.collector->FindContinuous(0)->GetBins());
    EXPECT_EQ(results_.GetContinuous(kContinuousField)->size(), 400u);
}

TEST_F(UnivariateResultsTest, AnswerWhatTheCategoricalRecordHolds) {
    EXPECT_TRUE(results_.HasVariable(kCategoricalField));
    EXPECT_EQ(results_.GetCount(kCategoricalField), 4);
    EXPECT_EQ(results_.GetMedianCategory(kCategoricalField), 2);  // the sums 0, 1, 4 reach 2 there
    EXPECT_EQ(results_.GetModeFrequency(kCategoricalField), 3);
    EXPECT_EQ(results_.GetCategoryCount(kCategoricalField), 3);
    std::map<int, std::int32_t> frequencies{{7, 7}};
    EXPECT_TRUE(results_.GetFrequencies(kCategoricalField, frequencies));
    EXPECT_EQ(frequencies, (std::map<int, std::int32_t>{{0, 0}, {1, 1}, {2, 3}}));  // the 7 is gone
}

TEST_F(UnivariateResultsTest, WithoutAContinuousRecordTheyAnswerMissingOrNull) {
    for (const int field : {kCategoricalField, kOtherField, kUnrequested, kOutside, -1}) {
        SCOPED_TRACE(field);
        EXPECT_EQ(results_.GetMean(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetMax(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetMin(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetMedian(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetFirstQuartile(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetThirdQuartile(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetStdDev(field), -1.7976931348623157e308);
        EXPECT_EQ(results_.GetContinuous(field), nullptr);
    }
}

TEST_F(UnivariateResultsTest, WithoutACategoricalRecordTheyAnswerMinusOneOrFalse) {
    for (const int field : {kContinuousField, kOtherField, kUnrequested, kOutside, -1}) {
        SCOPED_TRACE(field);
        EXPECT_EQ(results_.GetMedianCategory(field), -1);
        EXPECT_EQ(results_.GetModeFrequency(field), -1);
        EXPECT_EQ(results_.GetCategoryCount(field), -1);
        std::map<int, std::int32_t> frequencies{{7, 7}};
        EXPECT_FALSE(results_.GetFrequencies(field, frequencies));
        EXPECT_EQ(frequencies, (std::map<int, std::int32_t>{{7, 7}}));
    }
}

TEST_F(UnivariateResultsTest, WithoutAnyRecordTheCountIsMinusOne) {
    for (const int field : {kOtherField, kUnrequested, kOutside, -1}) {
        EXPECT_EQ(results_.GetCount(field), -1) << field;
        EXPECT_FALSE(results_.HasVariable(field)) << field;
    }
}

}  // namespace
