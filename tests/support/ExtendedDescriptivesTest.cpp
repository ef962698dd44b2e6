// Descriptives, histograms and Kolmogorov's limit with extended arithmetic. Reference values by hand from sums of whole
// numbers; Kolmogorov's by mpmath 1.3, 60 terms of both series at 60 digits.

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "support/Histogram.h"
#include "support/KolmogorovSignificance.h"
#include "support/QKUnivariateVariable.h"
#include "support/UnivariateResults.h"
#include "tests/harness/CollectorRig.h"
#include "tests/harness/ColumnData.h"

namespace {

using harness::ColumnData;
using harness::SameBits;

constexpr std::int32_t kMost = 2147483647;

/// An arithmetic that is extended.
struct Extended {
    Extended() { arithmetic.Extend(true); }
    bool IsSilent() const { return !arithmetic.WasWider() && !arithmetic.TookTextbook(); }
    Arithmetic arithmetic;
};

// ---- Kolmogorov's limit ----

TEST(ExtendedKolmogorov, SignificanceHasItsDigitsAtBothEnds) {
    struct Row {
        double z, significance;
    };
    constexpr Row kRows[] = {{0.05, 1},
                             {0.2, 0.99999999999949496},
                             {0.26, 0.99999988564931852},
                             {0.27, 0.99999958497128858},
                             {0.5, 0.96394524366487509},
                             {0.9999, 0.27010688196885544},
                             {1, 0.26999967167735452},
                             {1.5, 0.022217962616525129},
                             {3, 3.0459959489425257e-8},
                             {3.1, 8.9926989245617193e-9},
                             {5, 3.8574996959278356e-22},
                             {10, 2.7677930534734751e-87},
                             {18.5, 1.0628136728909079e-297},
                             {20, 0},
                             {0, 1}};
    const Extended extended;
    for (const Row& row : kRows) {
        const double significance = KolmogorovSignificance(row.z, extended.arithmetic).value_or(-1);
        EXPECT_NEAR(significance, row.significance, 1e-14 * row.significance) << row.z;
    }
    EXPECT_TRUE(extended.IsSilent());
    EXPECT_EQ(KolmogorovSignificance(std::nan(""), extended.arithmetic).value_or(-1), 0);
}

// ---- Histogram ----

enum class Order { kAny, kAscending };

Histogram Filled(const Arithmetic& arithmetic, Order order, const std::vector<double>& values,
                 const std::vector<std::int32_t>& weights) {
    Histogram histogram(arithmetic);
    histogram.SetUp(*std::min_element(values.begin(), values.end()), *std::max_element(values.begin(), values.end()),
                    Histogram::kDefaultBins);
    const auto fill = order == Order::kAny ? &Histogram::AddColumn : &Histogram::AddAscending;
    (histogram.*fill)(values.data(), weights.data(), values.size());
    histogram.Close();
    return histogram;
}

TEST(ExtendedHistogram, BelowTheLimitItIsTheSameToTheBit) {
    ColumnData data(31);
    for (int table = 0; table < 200; ++table) {
        const std::size_t count = 1 + data.Below(1500);
        const std::vector<double> values = data.AscendingValues(count);
        std::vector<std::int32_t> weights(count);
        for (std::int32_t& weight : weights) weight = 1 + static_cast<std::int32_t>(data.Below(4));
        for (const Order order : {Order::kAny, Order::kAscending}) {
            const Extended extended;
            const Histogram defined = Filled(Arithmetic::AsDefined(), order, values, weights);
            const Histogram wide = Filled(extended.arithmetic, order, values, weights);
            ASSERT_EQ(defined.Bins().size(), wide.Bins().size());
            for (std::size_t i = 0; i < defined.Bins().size(); ++i) {
                ASSERT_EQ(defined.Bins()[i].count, wide.Bins()[i].count);
                ASSERT_TRUE(SameBits(defined.Bins()[i].mean, wide.Bins()[i].mean));
            }
            EXPECT_TRUE(extended.IsSilent());
        }
    }
}

/// The only interval with an end above some value, by the mean.
HistogramBin Last(const Histogram& histogram, double least) {
    HistogramBin last;
    for (const HistogramBin& bin : histogram.Bins()) {
        if (bin.count != 0 && bin.mean >= least) last = bin;
    }
    return last;
}

// By hand: 1.9990234375 and 2, each of 2^31 - 1 cases, fall into the last of 400 intervals between 0.25 and 2.
TEST(ExtendedHistogram, IntervalBeyond32BitsIsWhole) {
    const std::vector<double> values{0.25, 1.9990234375, 2};
    for (const Order order : {Order::kAny, Order::kAscending}) {
        const Extended extended;
        const HistogramBin wide = Last(Filled(extended.arithmetic, order, values, {1, kMost, kMost}), 1);
        EXPECT_EQ(wide.count, 4294967294);
        EXPECT_EQ(wide.mean, 1.99951171875);
        EXPECT_TRUE(extended.arithmetic.WasWider());
        const Histogram defined = Filled(Arithmetic::AsDefined(), order, values, {1, kMost, kMost});
        for (const HistogramBin& bin : defined.Bins()) EXPECT_NE(bin.count, 4294967294);
    }
}

TEST(ExtendedHistogram, TotalBeyond32BitsIsSaidOnlyOfWhatIsWider) {
    const std::vector<double> values{0.25, 1, 2};
    for (const Order order : {Order::kAny, Order::kAscending}) {
        const Extended extended;
        const Histogram wide = Filled(extended.arithmetic, order, values, {kMost, kMost, kMost});
        const Histogram defined = Filled(Arithmetic::AsDefined(), order, values, {kMost, kMost, kMost});
        for (std::size_t i = 0; i < wide.Bins().size(); ++i) EXPECT_EQ(wide.Bins()[i].count, defined.Bins()[i].count);
        EXPECT_TRUE(extended.IsSilent());
    }
}

TEST(ExtendedHistogram, ZerosBeyond32BitsAreWhole) {
    for (const Order order : {Order::kAny, Order::kAscending}) {
        const Extended extended;
        const Histogram wide = Filled(extended.arithmetic, order, {0, 0, 3}, {kMost, 1, 1});
        EXPECT_EQ(wide.Bins().back().count, 2147483648);
        EXPECT_TRUE(extended.arithmetic.WasWider());
    }
}

// ---- Moments ----

QKContUnivariateVariable Described(const Arithmetic& arithmetic, const std::vector<double>& values,
                                   const std::vector<std::int32_t>& weights) {
    QKContUnivariateVariable variable(0, -1, arithmetic);
    variable.AddStatistic(Statistic::kMeanAndStdDev);
    constexpr std::size_t kBatch = 65536;
    for (std::size_t begin = 0; begin < values.size(); begin += kBatch) {
        const std::size_t count = std::min(kBatch, values.size() - begin);
        variable.AddColumn({values.data() + begin, count}, weights.empty() ? nullptr : weights.data() + begin);
    }
    EXPECT_TRUE(variable.EndPass().IsOK());
    return variable;
}

// By whole numbers: the sum is 1499998856337, that of the squares 999999194804128179.
TEST(ExtendedDescriptives, ThreeMillionValuesHaveTwelveDigits) {
    std::vector<double> values(3'000'000);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i * 7919 % 1000003);
    const Extended extended;
    const QKContUnivariateVariable variable = Described(extended.arithmetic, values, {});
    EXPECT_NEAR(variable.GetMean(), 499999.61877900000, 499999 * 1e-12);
    EXPECT_NEAR(variable.GetStdDev(), 288675.37812114962, 288675 * 1e-12);
    EXPECT_TRUE(SameBits(variable.GetMean(), Described(Arithmetic::AsDefined(), values, {}).GetMean()));
    EXPECT_TRUE(extended.IsSilent());
}

// By hand: of 500 times 1 and 500 times 4, each of 1e9, the mean is 2.5 and the sum of squares 2.25 n.
TEST(ExtendedDescriptives, ThousandThousandMillionCasesAreWhole) {
    std::vector<double> values;
    for (int i = 0; i < 1000; ++i) values.push_back(i % 2 == 0 ? 1 : 4);
    const std::vector<std::int32_t> weights(1000, 1'000'000'000);
    const Extended extended;
    const QKContUnivariateVariable variable = Described(extended.arithmetic, values, weights);
    EXPECT_EQ(variable.GetCount(), 1'000'000'000'000);
    EXPECT_NEAR(variable.GetMean(), 2.5, 1e-12);
    EXPECT_NEAR(variable.GetStdDev(), 1.5 * std::sqrt(1 + 1e-12), 1e-12);
    EXPECT_TRUE(extended.arithmetic.WasWider());
    EXPECT_TRUE(variable.MeanDeparture().isWider);
    EXPECT_FALSE(std::fabs(Described(Arithmetic::AsDefined(), values, weights).GetMean() - 2.5) < 0.1);
}

TEST(ExtendedDescriptives, FieldsSideBySideCountForThemselves) {
    const Extended extended;
    QKContUnivariateVariable whole(0, -1, extended.arithmetic);
    const Extended other;
    QKContUnivariateVariable few(1, -1, other.arithmetic);
    for (QKContUnivariateVariable* const variable : {&whole, &few}) {
        variable->AddStatistic(Statistic::kMeanAndStdDev);
    }
    const std::vector<double> x{1, 4, 1, 4};
    const std::vector<double> y{QKMV::Missing(), 2, QKMV::Missing(), 3};
    const std::vector<std::int32_t> weights{2'000'000'000, 1'000'000'000, 2'000'000'000, 1'000'000'000};
    const QKContUnivariateVariable::Column columns[] = {{&whole, x.data()}, {&few, y.data()}};
    QKContUnivariateVariable::AddColumns(columns, weights.data(), x.size());
    EXPECT_NEAR(whole.GetMean(), 2, 1e-12);
    EXPECT_NEAR(few.GetMean(), 2.5, 1e-12);
    EXPECT_TRUE(extended.arithmetic.WasWider());
    EXPECT_TRUE(other.IsSilent());
}

// ---- Frequencies, and what is read of a run ----

TEST(ExtendedDescriptives, FrequenciesAndCountsBeyond32BitsAreReadBesideThoseAsDefined) {
    for (const bool isExtended : {false, true}) {
        harness::Fields fields;
        fields.Continuous("x").Numeric("c", {1, 2}).Weight("w");
        std::vector<std::vector<double>> rows;
        for (int i = 0; i < 3; ++i) rows.push_back({static_cast<double>(i), 0, 1e9});
        rows.push_back({3, 1, 5});
        CollectorRig rig(fields, rows);
        rig.collector->Extend(isExtended);
        rig.collector->SetWeight(2);
        rig.Request(0, Statistic::kMeanAndStdDev);
        rig.Request(1, Statistic::kModeFrequency);
        EXPECT_TRUE(rig.Compute().IsOK());
        const UnivariateResults results(*rig.collector);
        EXPECT_EQ(results.GetCount(0), 3000000005 - 4294967296);
        EXPECT_EQ(results.GetWideCount(0), isExtended ? 3000000005 : 3000000005 - 4294967296);
        std::map<int, std::int32_t> narrow;
        EXPECT_TRUE(results.GetFrequencies(1, narrow));
        EXPECT_EQ(narrow, (std::map<int, std::int32_t>{{0, -1294967296}, {1, 5}}));
        std::map<int, std::int64_t> wide;
        EXPECT_TRUE(results.GetWideFrequencies(1, wide));
        EXPECT_EQ(wide.at(0), isExtended ? 3000000000 : -1294967296);
        EXPECT_EQ(rig.collector->FindCategorical(1)->GetModeFrequency(), isExtended ? 3000000000 : 5);
        for (const int field : {0, 1}) EXPECT_EQ(results.GetDeparture(field).isWider, isExtended) << field;
        EXPECT_EQ(results.GetWideCount(2), -1);
        EXPECT_FALSE(results.GetWideFrequencies(0, wide));
        EXPECT_FALSE(results.GetDeparture(2).isWider);
    }
}

// ---- Quantiles ----

TEST(ExtendedDescriptives, QuantilesAreRefusedWithoutViewsAloneInTheTextbooksForm) {
    for (const bool isExtended : {false, true}) {
        harness::Fields fields;
        fields.Continuous("x");
        CollectorRig rig(fields, {{5}, {1}, {4}});
        rig.collector->Extend(isExtended);
        EXPECT_FALSE(rig.Request(0, Statistic::kMedian)) << "no views were offered";
        rig.collector->OfferSortedData(rig.sorted.get());
        EXPECT_EQ(rig.Request(0, Statistic::kMedian), isExtended);
        EXPECT_TRUE(rig.Compute().IsOK());
        const UnivariateResults results(*rig.collector);
        EXPECT_EQ(results.GetMedian(0), isExtended ? 4 : QKMV::Missing());
        EXPECT_EQ(results.GetMedianDeparture(0).isTextbook, isExtended);
    }
}

TEST(ExtendedDescriptives, QuantilesThatAreAskedForLaterAsWellAreAsDefined) {
    harness::Fields fields;
    fields.Continuous("x");
    CollectorRig rig(fields, {{5}, {1}, {4}});
    rig.collector->Extend(true);
    rig.collector->OfferSortedData(rig.sorted.get());
    EXPECT_TRUE(rig.Request(0, Statistic::kMedian));
    rig.Sort(0);
    EXPECT_TRUE(rig.Request(0, Statistic::kMedian));
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_FALSE(UnivariateResults(*rig.collector).GetMedianDeparture(0).isTextbook);
}

// By hand: of 1 (2e9), 2 (2e9) and 3 (2e9) cases the hinges are 1, 2 and 3.
TEST(ExtendedDescriptives, HingesOfCasesBeyond32BitsAreTheirOwn) {
    harness::Fields fields;
    fields.Continuous("x").Weight("w");
    CollectorRig rig(fields, {{3, 2e9}, {1, 2e9}, {2, 2e9}});
    rig.collector->Extend(true);
    rig.collector->SetWeight(1);
    rig.Sort(0);
    EXPECT_TRUE(rig.Request(0, Statistic::kMedian));
    EXPECT_TRUE(rig.Compute().IsOK());
    const UnivariateResults results(*rig.collector);
    EXPECT_EQ(results.GetFirstQuartile(0), 1);
    EXPECT_EQ(results.GetMedian(0), 2);
    EXPECT_EQ(results.GetThirdQuartile(0), 3);
    EXPECT_TRUE(results.GetMedianDeparture(0).isWider);
}

}  // namespace
