#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tarn {

// What a plot of a test shows, as plain numbers and texts: made from the columns by `host/beyond/PlotSources`, drawn by
// `PlotPicture`. Texts are as a reader sees them, not escaped for any medium. All numbers are finite.

/// A value and how many cases have it.
struct PlotMark {
    double value = 0;
    double weight = 1;
};

/// How dense the cases of a sample are at a value, in any scale that the samples of a panel share.
struct PlotDensity {
    double value = 0;
    double density = 0;
};

/// Quartiles with the median, by the same rule as the table of groups; the whiskers end at the outermost cases within
/// 1.5 times the distance of the quartiles from them (Tukey, 1977, Exploratory Data Analysis).
struct PlotBox {
    double lowerWhisker = 0;
    double firstQuartile = 0;
    double median = 0;
    double thirdQuartile = 0;
    double upperWhisker = 0;
};

/// A number that was estimated and, where it has one, its interval.
struct PlotEstimate {
    std::string label;  ///< what it is of, or the first of two samples
    double value = 0;
    std::optional<std::pair<double, double>> limits;
    std::string second = {};  ///< the other sample of a pair; "" for none
};

/// One of the samples beside one another.
struct PlotSample {
    std::string name;
    std::string caption;     ///< below the name: "n = 30"
    std::size_t colour = 0;  ///< its place among the groups of its field, which has one colour throughout
    PlotBox box;
    /// All cases where they are few; else those beyond the whiskers, the outermost first, where a box has such.
    std::vector<PlotMark> marks;
    bool hasAllMarks = true;
    std::vector<PlotDensity> outline;  ///< where there are too many cases for marks; in ascending order
    bool isOutlineOfBars = false;      ///< a bar for each of few values, in place of a smooth outline
    std::string letters;               ///< that tell which samples differ; may be empty
};

/// A line at a value, across all samples.
struct PlotReference {
    double value = 0;
    std::string label;
};

/// Samples on one scale: groups, related fields, differences, one field.
struct SamplesPanel {
    std::string valueTitle;
    /// What stands for each value of a field of ordered categories; empty for one of numbers.
    std::vector<std::pair<double, std::string>> valueNames;
    std::string sampleTitle;
    std::vector<PlotSample> samples;
    std::size_t colourCount = 1;  ///< how many groups or fields have colours together
    bool hasBoxes = true;
    bool connectsMedians = false;
    /// The values of few cases in all samples, a row each, drawn as lines.
    std::vector<std::vector<double>> rows;
    std::vector<PlotReference> references;
    std::vector<PlotEstimate> estimates;            ///< on the scale of the values, below the samples
    std::optional<std::pair<double, double>> span;  ///< of the first sample, told by `spanLabel`
    std::string spanLabel;
};

/// A distribution function.
struct PlotCurve {
    std::string name;
    std::size_t colour = 0;
    bool isTheory = false;         ///< drawn as a broken line
    bool hasSteps = true;          ///< rises at its points; else a straight line joins them
    std::vector<PlotMark> points;  ///< value, and the share of cases up to it as the weight
};

struct CurvesPanel {
    std::string valueTitle;
    std::string shareTitle;
    std::vector<PlotCurve> curves;
    std::size_t colourCount = 1;
    /// Where two curves are farthest apart: at a value, between two shares.
    struct Gap {
        double value = 0;
        double lower = 0;
        double upper = 0;
        std::string label;
    };
    std::optional<Gap> gap;
};

/// A share or a count of one category.
struct PlotBar {
    std::string name;
    std::string caption;  ///< "31 of 95"
    std::size_t colour = 0;
    double value = 0;
    std::optional<std::pair<double, double>> limits;
    std::optional<double> expected;
};

struct BarsPanel {
    std::string valueTitle;
    std::string expectedLabel;  ///< of the marks of what was expected; "" where there are none
    std::string limitsLabel;    ///< of the intervals; "" where there are none
    std::vector<PlotBar> bars;
    std::size_t colourCount = 1;
    std::optional<double> highest;  ///< where the axis ends at the latest: 1 for shares
};

/// Two classes one after another, in the order of the records or of the values.
struct SequencePanel {
    std::string orderTitle;
    std::vector<std::string> classes;  ///< two names
    std::vector<std::size_t> places;   ///< 0 or 1, in their order
    /// The values behind the classes and the line between them, where a value decides; empty for categories.
    std::vector<double> values;
    std::string valueTitle;
    std::optional<PlotReference> cut;
};

/// How many cases went from a category of one field to one of another.
struct FlowPanel {
    std::string fromTitle;
    std::string toTitle;
    std::vector<std::string> from;
    std::vector<std::string> to;
    std::vector<std::vector<double>> counts;  ///< a row for each of `from`
    std::string stayed;                       ///< names of the three colours
    std::string rose;
    std::string fell;
};

/// Estimates with their intervals below one another.
struct IntervalsPanel {
    std::string title;
    std::string valueTitle;
    std::vector<PlotEstimate> rows;
    std::optional<double> noEffect;  ///< where there is no difference
    std::string noEffectLabel;
};

using PlotPanel = std::variant<SamplesPanel, CurvesPanel, BarsPanel, SequencePanel, FlowPanel, IntervalsPanel>;

/// The plot of one test.
struct PlotData {
    std::string title;               ///< the test and its fields
    std::string description;         ///< what is to be seen, in sentences, for who can't see it
    std::vector<std::string> notes;  ///< what a reader has to know of the drawing, as sentences
    std::vector<PlotPanel> panels;   ///< below one another; never empty
};

}  // namespace tarn
