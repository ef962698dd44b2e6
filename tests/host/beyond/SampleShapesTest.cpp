// Shapes of samples for plots. Boxes are those of numpy.percentile (linear) with whiskers by their definition,
// densities the sum of the definition.

#include "host/beyond/SampleShapes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "host/beyond/TestCases.h"

namespace {

using tarn::Ascending;
using tarn::PlotDensity;
using tarn::PlotSample;
using tarn::ShapesOf;

PlotSample ShapeOf(std::vector<double> values, const std::vector<double>& weights = {}) {
    return ShapesOf({Ascending(std::move(values), weights)}).front();
}

TEST(SampleShapes, HasTheBoxOfItsQuartiles) {
    // numpy.percentile([1..10, 30], [25, 50, 75]): 3.5, 6, 8.5; the fences lie at -4 and 16.
    const PlotSample shape = ShapeOf({30, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_DOUBLE_EQ(shape.box.lowerWhisker, 1);
    EXPECT_DOUBLE_EQ(shape.box.firstQuartile, 3.5);
    EXPECT_DOUBLE_EQ(shape.box.median, 6);
    EXPECT_DOUBLE_EQ(shape.box.thirdQuartile, 8.5);
    EXPECT_DOUBLE_EQ(shape.box.upperWhisker, 10);
    EXPECT_EQ(shape.marks.size(), 11U);
    EXPECT_TRUE(shape.outline.empty());
}

TEST(SampleShapes, OfOneCaseIsALine) {
    const PlotSample shape = ShapeOf({4});
    EXPECT_EQ(shape.box.lowerWhisker, 4);
    EXPECT_EQ(shape.box.upperWhisker, 4);
}

TEST(SampleShapes, CountsAWeightAsSoManyCases) {
    const PlotSample weighted = ShapeOf({1, 2, 9}, {3, 2, 1});
    const PlotSample repeated = ShapeOf({1, 1, 1, 2, 2, 9});
    EXPECT_DOUBLE_EQ(weighted.box.median, repeated.box.median);
    EXPECT_DOUBLE_EQ(weighted.box.upperWhisker, repeated.box.upperWhisker);
    ASSERT_EQ(weighted.marks.size(), 3U);
    EXPECT_EQ(weighted.marks[0].weight, 3);
}

std::vector<double> ManyValues() {
    std::vector<double> values;
    for (int i = 0; i < 400; ++i) values.push_back(std::fmod(i * 0.6180339887498949, 1.0) * 10);
    values.push_back(40);
    return values;
}

TEST(SampleShapes, HasAnOutlineInPlaceOfManyMarksAndTheCasesBeyond) {
    const PlotSample shape = ShapeOf(ManyValues());
    EXPECT_FALSE(shape.hasAllMarks);
    EXPECT_FALSE(shape.isOutlineOfBars);
    ASSERT_EQ(shape.marks.size(), 1U);
    EXPECT_EQ(shape.marks.front().value, 40);
}

TEST(SampleShapes, HasOutlinesWhereAllSamplesTogetherAreMany) {
    std::vector<tarn::AscendingSample> samples;
    for (int group = 0; group < 4; ++group) {
        std::vector<double> values;
        for (int i = 0; i < 120; ++i) values.push_back(i * 0.37 + group);
        samples.push_back(Ascending(std::move(values), {}));
    }
    for (const PlotSample& shape : ShapesOf(samples)) EXPECT_FALSE(shape.hasAllMarks);
    samples.pop_back();
    for (const PlotSample& shape : ShapesOf(samples)) EXPECT_TRUE(shape.hasAllMarks);
}

TEST(SampleShapes, HasBarsWhereManyCasesAreEqual) {
    std::vector<double> values(26, 1);
    values.insert(values.end(), 10, 2);
    EXPECT_TRUE(ShapeOf(values).isOutlineOfBars);
    values.erase(values.begin());
    EXPECT_TRUE(ShapeOf(values).hasAllMarks);
}

TEST(SampleShapes, HasTheDensityOfGaussianKernels) {
    const std::vector<double> values = ManyValues();
    const PlotSample shape = ShapeOf(values);
    const auto n = static_cast<double>(values.size());
    double mean = 0;
    for (const double value : values) mean += value / n;
    double variance = 0;
    for (const double value : values) variance += (value - mean) * (value - mean) / (n - 1);
    const double quartiles = (shape.box.thirdQuartile - shape.box.firstQuartile) / 1.34;
    const double width = 0.9 * std::min(std::sqrt(variance), quartiles) * std::pow(n, -0.2);
    // The kernels are left without their factor, which all have in common.
    for (const PlotDensity& point : shape.outline) {
        double expected = 0;
        for (const double value : values) expected += std::exp(-std::pow((point.value - value) / width, 2) / 2);
        EXPECT_NEAR(point.density, expected / (n * width), 0.02);
    }
}

TEST(SampleShapes, HasABarForEachOfFewValues) {
    std::vector<double> values(300, 2);
    values.insert(values.end(), 100, 5);
    const PlotSample shape = ShapeOf(values);
    EXPECT_TRUE(shape.isOutlineOfBars);
    ASSERT_EQ(shape.outline.size(), 2U);
    EXPECT_EQ(shape.outline[0].value, 2);
    EXPECT_DOUBLE_EQ(shape.outline[0].density, 0.75);
    EXPECT_DOUBLE_EQ(shape.outline[1].density, 0.25);
}

}  // namespace
