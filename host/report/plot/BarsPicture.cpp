#include <algorithm>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"
#include "host/report/plot/TextWidth.h"

namespace tarn {

namespace {

constexpr double kRow = 38;
constexpr double kBarHalf = 11;
constexpr double kBarOpacity = 0.55;
constexpr double kNamesRoom = 150;
constexpr double kGap = 8;

double NamesWidth(const BarsPanel& panel) {
    double widest = 0;
    for (const PlotBar& bar : panel.bars) {
        widest = std::max({widest, TextWidth(bar.name, kLabelSize), TextWidth(bar.caption, kCaptionSize)});
    }
    return std::min(widest, kNamesRoom);
}

double HighestOf(const BarsPanel& panel) {
    double highest = 0;
    for (const PlotBar& bar : panel.bars) {
        highest = std::max(highest, bar.value);
        if (bar.limits) highest = std::max(highest, bar.limits->second);
        if (bar.expected) highest = std::max(highest, *bar.expected);
    }
    return panel.highest ? std::min(highest, *panel.highest) : highest;
}

void DrawBar(Picture& picture, const PlotBar& bar, const std::string& name, const GroundAxis& ground, double middle,
             const PlotColour& colour) {
    constexpr double kBaseline = 4;
    constexpr double kHalfLine = 7;
    constexpr double kEnd = 4;
    const double namesRight = ground.left - kGap;
    const double room = namesRight - kMargin;
    picture.CutText({namesRight, middle + kBaseline - kHalfLine}, name, bar.name, {TextAnchor::kEnd, kLabelSize});
    picture.Text({namesRight, middle + kBaseline + kHalfLine}, bar.caption,
                 {TextAnchor::kEnd, kCaptionSize, false, true, room});
    picture.Box({ground.At(0), middle - kBarHalf}, {ground.At(bar.value), middle + kBarHalf}, {colour, kBarOpacity, 1});
    if (bar.expected) {
        const double x = ground.At(*bar.expected);
        picture.Line({x, middle - kBarHalf - kEnd}, {x, middle + kBarHalf + kEnd}, {kInk, 2, 1, "3 2"});
    }
    if (!bar.limits) return;
    const double lower = ground.At(bar.limits->first);
    const double upper = ground.At(bar.limits->second);
    picture.Line({lower, middle}, {upper, middle}, {kInk, 1.8});
    for (const double x : {lower, upper}) picture.Line({x, middle - kEnd}, {x, middle + kEnd}, {kInk, 1.8});
}

}  // namespace

Picture PictureOf(const BarsPanel& panel) {
    Picture picture(kPlotWidth);
    std::vector<LegendEntry> entries;
    if (!panel.limitsLabel.empty()) entries.push_back({panel.limitsLabel, kInk, true, {}});
    if (!panel.expectedLabel.empty()) entries.push_back({panel.expectedLabel, kInk, true, "3 2"});
    constexpr double kEndOfTicks = 12;
    const double top = DrawKey(picture, entries) + 2;
    const double bottom = top + kRow * static_cast<double>(panel.bars.size());
    const GroundAxis ground{AxisOf({0, HighestOf(panel), 6, true}), kMargin + NamesWidth(panel) + kGap,
                            kPlotWidth - kEndOfTicks, top, bottom};
    DrawGroundAxis(picture, ground, panel.valueTitle);
    std::vector<std::string> names;
    for (const PlotBar& bar : panel.bars) names.push_back(bar.name);
    names = FittedNames(names, NamesWidth(panel), kLabelSize);
    for (std::size_t i = 0; i < panel.bars.size(); ++i) {
        const double middle = top + kRow * (static_cast<double>(i) + 0.5);
        DrawBar(picture, panel.bars[i], names[i], ground, middle, GroupColour(panel.bars[i].colour, panel.colourCount));
    }
    picture.SetHeight(bottom + kAxisHeight);
    return picture;
}

}  // namespace tarn
