// Outliers of many values at once, held against the rule as it is told, one value after the other.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "independent/GroupBoxPlot.h"
#include "independent/GroupHistogram.h"
#include "support/Int32.h"
#include "tests/harness/ColumnData.h"
#include "tests/harness/Document.h"

namespace {

using harness::ColumnData;
using Texts = std::vector<std::string>;

/// 0 where two values differ by rounding only.
int Compare(double a, double b) {
    if (a == b) return 0;
    if (a != 0 && b != 0 && std::fabs(a - b) <= 2.220446049250313e-14 * std::max(std::fabs(a), std::fabs(b))) return 0;
    return a > b ? 1 : -1;
}

/// The ends of the box and the outliers of some values, of which the hinges are known.
struct PlainBox {
    explicit PlainBox(const QKContUnivariateVariable& hinges)
        : lowerFence(hinges.GetFirstQuartile() - 1.5 * (hinges.GetThirdQuartile() - hinges.GetFirstQuartile())),
          upperFence(hinges.GetThirdQuartile() + 1.5 * (hinges.GetThirdQuartile() - hinges.GetFirstQuartile())),
          smallest(hinges.GetMax()),
          largest(hinges.GetMin()) {}

    void Add(double value, double id) {
        const int besideUpper = Compare(value, upperFence);
        const int besideLower = Compare(value, lowerFence);
        if (besideUpper > 0) {
            high.insert(high.begin(), value);
            highIds.insert(highIds.begin(), id);
        } else if (besideLower < 0) {
            low.insert(low.begin(), value);
            lowIds.insert(lowIds.begin(), id);
        }
        if (besideUpper <= 0 && Compare(value, largest) > 0) largest = value;
        if ((besideLower > 0 || besideUpper == 0) && Compare(value, smallest) < 0) smallest = value;
    }

    double lowerFence, upperFence, smallest, largest;
    std::vector<double> high, low, highIds, lowIds;
};

std::string Joined(std::vector<double> first, const std::vector<double>& second) {
    first.insert(first.end(), second.begin(), second.end());
    std::string text;
    for (const double number : first) text += (text.empty() ? "" : ";") + DoubleToString(number);
    return text;
}

std::vector<std::string> RowsOf(const GroupBoxPlot& box) {
    const std::unique_ptr<QKXML::XMLElement> parent = QKXML::XMLElement::Create("Group0");
    StructuredTable table(*parent);
    box.AddTables(table);
    std::ostringstream text;
    QKXML::WriteTree(text, nullptr, parent.get(), 0);
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(text.str().c_str()));
    const harness::Table written(document.document_element());
    std::vector<std::string> rows = written.SimpleRows("Box");
    for (const std::string& row : written.SimpleRows("Outliers")) rows.push_back(row);
    return rows;
}

void ExpectAsPlain(ColumnData& data, const std::vector<double>& values, const std::vector<std::int32_t>& weights) {
    const std::size_t count = values.size();
    std::int32_t total = 0;
    for (const std::int32_t weight : weights) total = Add32(total, weight);
    std::vector<double> ids(count);
    for (std::size_t i = 0; i < count; ++i) ids[i] = static_cast<double>(i);

    QKContUnivariateVariable hinges(-1, -1);
    for (std::size_t i = 0; i < count; ++i) hinges.QuantileStep(values[i], weights[i], total);
    hinges.CloseQuantiles();
    PlainBox plain(hinges);
    for (std::size_t i = 0; i < count; ++i) plain.Add(values[i], ids[i]);

    GroupBoxPlot box(total);
    std::size_t begin = 0;
    for (const std::size_t end : data.Cuts(count)) {
        box.AddAscendingToQuantiles(values.data() + begin, weights.data() + begin, end - begin);
        begin = end;
    }
    box.Finish();
    begin = 0;
    for (const std::size_t end : data.Cuts(count)) {
        box.AddAscendingToOutliers(values.data() + begin, ids.data() + begin, end - begin);
        begin = end;
    }
    ASSERT_TRUE(harness::SameBits(box.Median(), hinges.GetMedian()));
    const std::string ends[] = {DoubleToString(plain.smallest), DoubleToString(hinges.GetFirstQuartile()),
                                DoubleToString(hinges.GetMedian()), DoubleToString(hinges.GetThirdQuartile()),
                                DoubleToString(plain.largest)};
    std::string expected;
    for (const std::string& end : ends) expected += (expected.empty() ? "" : ";") + end;
    if (total < 1) expected = ";;;;";
    ASSERT_EQ(RowsOf(box), Texts({expected, Joined(plain.high, plain.low), Joined(plain.highIds, plain.lowIds)}));
}

TEST(GroupBoxPlotColumns, AscendingValuesAreOneAfterTheOther) {
    ColumnData data(31);
    for (int i = 0; i < 1500; ++i) {
        const std::size_t count = 1 + data.Below(i % 3 == 0 ? 12 : 600);
        const std::vector<std::int32_t> weights =
            data.Chance(0.5) ? data.Weights(count) : std::vector<std::int32_t>(count, 1);
        ExpectAsPlain(data, data.AscendingValues(count), weights);
        if (HasFatalFailure()) return;
    }
}

/// Steps of a few roundings on both sides of where a fence will lie, so that ties with it and drifts along it occur.
TEST(GroupBoxPlotColumns, ValuesBesideTheFencesAreOneAfterTheOther) {
    ColumnData data(32);
    for (int i = 0; i < 1500; ++i) {
        std::vector<double> values{3, 3, 4, 5, 6, 7, 7, 4, 5, 6, 3, 7};
        for (const double fence : {-3.0, 13.0, 0.0, -1e-300}) {
            for (std::size_t k = data.Below(6); k > 0; --k) {
                values.push_back(fence * (1 + (static_cast<double>(data.Below(13)) - 6) * 0.6e-14));
            }
        }
        std::stable_sort(values.begin(), values.end());
        ExpectAsPlain(data, values, std::vector<std::int32_t>(values.size(), 1));
        if (HasFatalFailure()) return;
    }
}

TEST(GroupBoxPlotColumns, FencesBeyondTheLargestNumberTakeEverythingForRoundingButAZero) {
    ColumnData data(33);
    for (const std::vector<double>& values :
         {std::vector<double>{-1.7e308, -1.6e308, -1e308, -5, -0.0, 0.0, 3, 1e308, 1.6e308, 1.7e308},
          {-1.7e308, -1.6e308, -1.6e308, 0, 0, 0, 1.6e308, 1.6e308, 1.7e308}}) {
        for (int i = 0; i < 10; ++i) ExpectAsPlain(data, values, std::vector<std::int32_t>(values.size(), 1));
    }
}

TEST(GroupHistogramColumns, RangeOfAscendingValuesIsOneAfterTheOther) {
    ColumnData data(34);
    for (int i = 0; i < 300; ++i) {
        const std::vector<double> values = data.AscendingValues(1 + data.Below(200));
        GroupHistogram oneByOne;
        for (const double value : values) oneByOne.ExtendRange(value);
        GroupHistogram together;
        together.ExtendRangeAscending(nullptr, 0);
        std::size_t begin = 0;
        for (const std::size_t end : data.Cuts(values.size())) {
            together.ExtendRangeAscending(values.data() + begin, end - begin);
            begin = end;
        }
        ASSERT_TRUE(harness::SameBits(together.Min(), oneByOne.Min()));
        ASSERT_TRUE(harness::SameBits(together.Max(), oneByOne.Max()));
    }
}

}  // namespace
