#include <algorithm>
#include <limits>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"
#include "host/report/plot/SamplesDrawing.h"
#include "host/report/plot/TextWidth.h"

namespace tarn {

namespace {

constexpr double kUprightHeight = 230;
constexpr double kEstimateRow = 26;
constexpr std::size_t kMostUpright = 6;
constexpr double kNamesRoom = 150;  // beside rows
constexpr std::string_view kReferenceDashes = "5 3";

struct Range {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -std::numeric_limits<double>::infinity();

    void Take(double value) {
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
};

Range RangeOf(const SamplesPanel& panel) {
    Range range;
    for (const PlotSample& sample : panel.samples) {
        for (const PlotMark& mark : sample.marks) range.Take(mark.value);
        for (const PlotDensity& density : sample.outline) range.Take(density.value);
        if (!panel.hasBoxes) continue;
        range.Take(sample.box.lowerWhisker);
        range.Take(sample.box.upperWhisker);
    }
    for (const std::vector<double>& row : panel.rows) {
        for (const double value : row) range.Take(value);
    }
    for (const PlotReference& reference : panel.references) range.Take(reference.value);
    for (const PlotEstimate& estimate : panel.estimates) {
        range.Take(estimate.value);
        if (!estimate.limits) continue;
        range.Take(estimate.limits->first);
        range.Take(estimate.limits->second);
    }
    if (range.lowest > range.highest) range = {0, 1};
    return range;
}

/// That of the values; categories have their names at it.
ValueAxis ValuesAxis(const SamplesPanel& panel) {
    constexpr double kNameRoom = 90;
    const Range range = RangeOf(panel);
    ValueAxis axis = AxisOf({range.lowest, range.highest, 6});
    if (panel.valueNames.empty()) return axis;
    axis.ticks.clear();
    for (const auto& [value, name] : panel.valueNames) {
        if (value >= axis.from && value <= axis.to) {
            axis.ticks.push_back({value, FittedText(name, kNameRoom, kCaptionSize)});
        }
    }
    return axis;
}

bool HasLetters(const SamplesPanel& panel) {
    return std::ranges::any_of(panel.samples, [](const PlotSample& sample) { return !sample.letters.empty(); });
}

// ---- Side by side ----

SamplesLayout UprightLayout(const SamplesPanel& panel) {
    SamplesLayout layout;
    layout.axis = ValuesAxis(panel);
    const double left = kMargin + TickRoom(layout.axis);
    const double lettersHeight = HasLetters(panel) ? kLineHeight : 0;
    constexpr double kTitleHeight = 26;
    constexpr double kNoTitleHeight = 10;
    layout.valuesTo = (panel.valueTitle.empty() ? kNoTitleHeight : kTitleHeight) + lettersHeight;
    layout.valuesFrom = layout.valuesTo + kUprightHeight;
    layout.placesFrom = left;
    layout.slot = (kPlotWidth - kMargin - left) / static_cast<double>(panel.samples.size());
    return layout;
}

bool FitsUpright(const SamplesPanel& panel, const SamplesLayout& layout) {
    constexpr double kGap = 8;
    if (panel.samples.size() < 2 || panel.samples.size() > kMostUpright || !panel.estimates.empty()) return false;
    return std::ranges::all_of(panel.samples, [&](const PlotSample& sample) {
        return TextWidth(sample.name, kLabelSize) <= layout.slot - kGap &&
               TextWidth(sample.caption, kCaptionSize) <= layout.slot - kGap;
    });
}

std::vector<LegendEntry> KeyOf(const SamplesPanel& panel) {
    std::vector<LegendEntry> entries;
    for (const PlotReference& reference : panel.references) {
        if (!reference.label.empty()) entries.push_back({reference.label, kInk, true, kReferenceDashes});
    }
    if (panel.span) entries.push_back({panel.spanLabel, kInk, true, {}});
    return entries;
}

void DrawReferences(Picture& picture, const SamplesPanel& panel, const SamplesLayout& layout, double from, double to) {
    const LineLook line{kInk, 1.2, 1, kReferenceDashes};
    for (const PlotReference& reference : panel.references) {
        const double at = layout.At(reference.value);
        if (layout.isUpright) {
            picture.Line({from, at}, {to, at}, line);
        } else {
            picture.Line({at, from}, {at, to}, line);
        }
    }
}

/// A bracket beside the first sample.
void DrawSpan(Picture& picture, const SamplesPanel& panel, const SamplesLayout& layout) {
    if (!panel.span) return;
    constexpr double kEnd = 4;
    const double offset = layout.Half() + kEnd;
    const LineLook line{kInk, 1.5};
    const auto point = [&](double value, double by) { return layout.Point(0, value, by); };
    const auto [lower, upper] = *panel.span;
    picture.Lines(
        {point(lower, offset - kEnd), point(lower, offset), point(upper, offset), point(upper, offset - kEnd)}, line);
}

void DrawSamples(Picture& picture, const SamplesPanel& panel, const SamplesLayout& layout) {
    SamplesDrawing drawing(panel, layout, picture);
    drawing.DrawRows();
    for (std::size_t i = 0; i < panel.samples.size(); ++i) drawing.DrawSample(i);
    if (panel.connectsMedians) drawing.ConnectMedians();
    DrawSpan(picture, panel, layout);
}

Picture UprightPicture(const SamplesPanel& panel, SamplesLayout layout) {
    constexpr double kNameDepth = 17;
    constexpr double kCaptionDepth = 31;
    constexpr double kTitleDepth = 49;
    constexpr double kLettersHeight = 8;
    Picture picture(kPlotWidth);
    const double key = DrawKey(picture, KeyOf(panel));
    layout.valuesTo += key;
    layout.valuesFrom += key;
    const double right = kPlotWidth - kMargin;
    const double bottom = layout.valuesFrom;
    DrawSideAxis(picture, {layout.axis, layout.placesFrom, right, layout.valuesTo, bottom}, "");
    picture.Text({kMargin, key + kLabelSize}, panel.valueTitle,
                 {TextAnchor::kStart, kLabelSize, false, false, right - kMargin});
    DrawReferences(picture, panel, layout, layout.placesFrom, right);
    DrawSamples(picture, panel, layout);
    for (std::size_t i = 0; i < panel.samples.size(); ++i) {
        const PlotSample& sample = panel.samples[i];
        const double x = layout.Middle(i);
        picture.Text({x, bottom + kNameDepth}, sample.name,
                     {TextAnchor::kMiddle, kLabelSize, false, false, layout.slot});
        picture.Text({x, bottom + kCaptionDepth}, sample.caption, {TextAnchor::kMiddle, kCaptionSize, false, true});
        picture.Text({x, layout.valuesTo - kLettersHeight}, sample.letters,
                     {TextAnchor::kMiddle, kLabelSize, true, false, layout.slot});
    }
    picture.Text({(layout.placesFrom + right) / 2, bottom + kTitleDepth}, panel.sampleTitle,
                 {TextAnchor::kMiddle, kLabelSize, false, false, right - layout.placesFrom});
    picture.SetHeight(bottom + (panel.sampleTitle.empty() ? kCaptionDepth : kTitleDepth) + kMargin);
    return picture;
}

// ---- One below another ----

/// What stands beside the rows: names on the left, letters on the right.
struct RowSides {
    double names = 0;
    double letters = 0;
    double height = 0;
    bool hasCaptionLine = true;  ///< whether the caption stands below the name, else behind it
};

RowSides SidesOf(const SamplesPanel& panel) {
    constexpr double kGap = 8;
    constexpr std::size_t kFewRows = 12;
    constexpr double kHighRow = 46;
    constexpr double kLowRow = 24;
    constexpr double kSingleRow = 84;
    RowSides sides;
    sides.hasCaptionLine = panel.samples.size() <= kFewRows;
    sides.height = panel.samples.size() == 1 ? kSingleRow : sides.hasCaptionLine ? kHighRow : kLowRow;
    for (const PlotSample& sample : panel.samples) {
        const double name = TextWidth(sample.name, kLabelSize);
        const double caption = TextWidth(sample.caption, kCaptionSize);
        sides.names = std::max(sides.names, sides.hasCaptionLine ? std::max(name, caption) : name + kGap + caption);
        sides.letters = std::max(sides.letters, TextWidth(sample.letters, kLabelSize));
    }
    for (const PlotEstimate& estimate : panel.estimates) {
        sides.names = std::max(sides.names, TextWidth(estimate.label, kLabelSize));
    }
    sides.names = std::min(sides.names, kNamesRoom) + kGap;
    sides.letters = std::min(sides.letters, kNamesRoom / 2) + (sides.letters > 0 ? kGap : 0);
    return sides;
}

void DrawNames(Picture& picture, const SamplesPanel& panel, const SamplesLayout& layout, const RowSides& sides) {
    constexpr double kBaseline = 4;
    constexpr double kGap = 8;
    constexpr double kHalfLine = 7;
    const double right = kMargin + sides.names - kGap;
    double widestCaption = 0;
    std::vector<std::string> names;
    for (const PlotSample& sample : panel.samples) {
        widestCaption = std::max(widestCaption, TextWidth(sample.caption, kCaptionSize));
        names.push_back(sample.name);
    }
    const double namesRight = sides.hasCaptionLine ? right : right - widestCaption - kGap;
    const std::vector<std::string> fitted = FittedNames(names, namesRight - kMargin, kLabelSize);
    for (std::size_t i = 0; i < panel.samples.size(); ++i) {
        const PlotSample& sample = panel.samples[i];
        const double middle = layout.Middle(i) + kBaseline;
        const double above = sides.hasCaptionLine ? kHalfLine : 0;
        picture.CutText({namesRight, middle - above}, fitted[i], sample.name, {TextAnchor::kEnd, kLabelSize});
        picture.Text({right, middle + above}, sample.caption,
                     {TextAnchor::kEnd, kCaptionSize, false, true, right - kMargin});
        picture.Text({kPlotWidth - kMargin, middle}, sample.letters,
                     {TextAnchor::kEnd, kLabelSize, true, false, sides.letters});
    }
}

void DrawEstimates(Picture& picture, const SamplesPanel& panel, const SamplesLayout& layout, double top, double names) {
    constexpr double kBaseline = 4;
    constexpr double kGap = 8;
    constexpr double kRadius = 5;
    double middle = top + kEstimateRow / 2;
    for (const PlotEstimate& estimate : panel.estimates) {
        const double right = kMargin + names - kGap;
        picture.Text({right, middle + kBaseline}, estimate.label,
                     {TextAnchor::kEnd, kLabelSize, false, false, right - kMargin});
        if (estimate.limits) {
            picture.Line({layout.At(estimate.limits->first), middle}, {layout.At(estimate.limits->second), middle},
                         {kInk, 2});
        }
        picture.Diamond({layout.At(estimate.value), middle}, kRadius, {kInk});
        middle += kEstimateRow;
    }
}

Picture LyingPicture(const SamplesPanel& panel) {
    const RowSides sides = SidesOf(panel);
    Picture picture(kPlotWidth);
    constexpr double kAboveRows = 4;
    const double top = DrawKey(picture, KeyOf(panel)) + kAboveRows;
    SamplesLayout layout;
    layout.isUpright = false;
    layout.axis = ValuesAxis(panel);
    layout.valuesFrom = kMargin + sides.names;
    layout.valuesTo = kPlotWidth - kMargin - sides.letters;
    layout.placesFrom = top;
    layout.slot = sides.height;
    const double estimatesTop = top + sides.height * static_cast<double>(panel.samples.size());
    const double bottom = estimatesTop + kEstimateRow * static_cast<double>(panel.estimates.size());
    DrawGroundAxis(picture, {layout.axis, layout.valuesFrom, layout.valuesTo, top, bottom}, panel.valueTitle);
    DrawReferences(picture, panel, layout, top, bottom);
    DrawSamples(picture, panel, layout);
    DrawEstimates(picture, panel, layout, estimatesTop, sides.names);
    DrawNames(picture, panel, layout, sides);
    picture.SetHeight(bottom + kAxisHeight);
    return picture;
}

}  // namespace

Picture PictureOf(const SamplesPanel& panel) {
    const SamplesLayout upright = UprightLayout(panel);
    return FitsUpright(panel, upright) ? UprightPicture(panel, upright) : LyingPicture(panel);
}

}  // namespace tarn
