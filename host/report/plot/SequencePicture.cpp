#include <algorithm>
#include <cmath>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"

namespace tarn {

namespace {

constexpr double kSeriesHeight = 190;
constexpr std::string_view kCutDashes = "5 3";

const PlotColour& ClassColour(std::size_t place) {
    return GroupColour(place, 2);
}

std::vector<LegendEntry> KeyOf(const SequencePanel& panel, bool isLine) {
    std::vector<LegendEntry> entries;
    for (std::size_t i = 0; i < panel.classes.size(); ++i)
        entries.push_back({panel.classes[i], ClassColour(i), isLine});
    if (panel.cut) entries.push_back({panel.cut->label, kInk, true, kCutDashes});
    return entries;
}

/// The values one after another, with the line that makes two classes of them.
Picture SeriesPicture(const SequencePanel& panel) {
    Picture picture(kPlotWidth);
    constexpr double kTitleHeight = 26;
    constexpr double kEndOfTicks = 12;
    constexpr double kFewDots = 150;
    const double top = DrawKey(picture, KeyOf(panel, false)) + kTitleHeight;
    auto [lowest, highest] = std::ranges::minmax(panel.values);
    if (panel.cut) lowest = std::min(lowest, panel.cut->value);
    if (panel.cut) highest = std::max(highest, panel.cut->value);
    SideAxis side{AxisOf({lowest, highest, 6}), 0, kPlotWidth - kEndOfTicks, top, top + kSeriesHeight};
    side.left = kMargin + TickRoom(side.axis);
    const auto count = static_cast<double>(panel.values.size());
    const GroundAxis ground{AxisOf({1, std::max(count, 2.0), 6}), side.left, side.right, top, side.bottom};
    DrawSideAxis(picture, side, panel.valueTitle);
    DrawGroundAxis(picture, ground, panel.orderTitle);
    std::vector<PicturePoint> points;
    for (std::size_t i = 0; i < panel.values.size(); ++i) {
        points.push_back({ground.At(static_cast<double>(i) + 1), side.At(panel.values[i])});
    }
    picture.Lines(points, {kFaint, 0.8, 0.6});
    const double radius = count <= kFewDots ? 2.6 : 1.7;
    for (std::size_t place = 0; place < panel.classes.size(); ++place) {
        std::vector<PicturePoint> ofClass;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (panel.places[i] == place) ofClass.push_back(points[i]);
        }
        picture.Dots(ofClass, radius, {ClassColour(place), 0.9});
    }
    if (panel.cut) {
        const double y = side.At(panel.cut->value);
        picture.Line({side.left, y}, {side.right, y}, {kInk, 1.2, 1, kCutDashes});
    }
    picture.SetHeight(side.bottom + kAxisHeight);
    return picture;
}

/// A strip of cells, the first class reaching up and the second one down, in as many lines as it needs.
Picture StripPicture(const SequencePanel& panel) {
    constexpr double kCellsInLine = 60;
    constexpr double kLongestCell = 16;
    constexpr double kHeight = 22;
    constexpr double kBetween = 10;
    constexpr double kGapOfCells = 0.8;
    Picture picture(kPlotWidth);
    double top = DrawKey(picture, KeyOf(panel, false)) + 4;
    const auto count = static_cast<double>(panel.places.size());
    const double lines = std::max(1.0, std::ceil(count / kCellsInLine));
    const double inLine = std::max(1.0, std::ceil(count / lines));
    const double width = std::min(kLongestCell, (kPlotWidth - 2 * kMargin) / inLine);
    for (std::size_t i = 0; i < panel.places.size(); ++i) {
        const double place = static_cast<double>(i);
        const double line = std::floor(place / inLine);
        const double x = kMargin + (place - line * inLine) * width;
        const double middle = top + line * (kHeight + kBetween) + kHeight / 2;
        const bool isFirst = panel.places[i] == 0;
        picture.Box({x, middle}, {x + width - kGapOfCells, middle + (isFirst ? -kHeight / 2 : kHeight / 2)},
                    {ClassColour(panel.places[i])});
    }
    constexpr double kTitleDepth = 6;
    const double bottom = top + lines * (kHeight + kBetween);
    picture.Text({kMargin, bottom + kTitleDepth}, panel.orderTitle,
                 {TextAnchor::kStart, kLabelSize, false, false, kPlotWidth - 2 * kMargin});
    picture.SetHeight(bottom + kTitleDepth + kMargin);
    return picture;
}

}  // namespace

Picture PictureOf(const SequencePanel& panel) {
    return panel.values.empty() ? StripPicture(panel) : SeriesPicture(panel);
}

}  // namespace tarn
