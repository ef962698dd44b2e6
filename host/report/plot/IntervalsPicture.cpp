#include <algorithm>
#include <limits>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"
#include "host/report/plot/TextWidth.h"

namespace tarn {

namespace {

constexpr double kRow = 22;
constexpr double kNamesRoom = 190;
constexpr double kGap = 8;
constexpr double kRadius = 4;

std::pair<double, double> RangeOf(const IntervalsPanel& panel) {
    double lowest = panel.noEffect.value_or(std::numeric_limits<double>::infinity());
    double highest = panel.noEffect.value_or(-std::numeric_limits<double>::infinity());
    for (const PlotEstimate& row : panel.rows) {
        lowest = std::min({lowest, row.value, row.limits ? row.limits->first : row.value});
        highest = std::max({highest, row.value, row.limits ? row.limits->second : row.value});
    }
    return {lowest, highest};
}

double NamesWidth(const IntervalsPanel& panel) {
    double widest = 0;
    for (const PlotEstimate& row : panel.rows) widest = std::max(widest, TextWidth(row.label, kLabelSize));
    return std::min(widest, kNamesRoom);
}

void DrawRow(Picture& picture, const PlotEstimate& row, const GroundAxis& ground, double middle) {
    constexpr double kBaseline = 4;
    const double namesRight = ground.left - kGap;
    picture.Text({namesRight, middle + kBaseline}, row.label,
                 {TextAnchor::kEnd, kLabelSize, false, false, namesRight - kMargin});
    if (row.limits) {
        picture.Line({ground.At(row.limits->first), middle}, {ground.At(row.limits->second), middle}, {kInk, 1.8});
    }
    picture.Dot({ground.At(row.value), middle}, kRadius, {kGroupColours.front()});
}

}  // namespace

Picture PictureOf(const IntervalsPanel& panel) {
    Picture picture(kPlotWidth);
    constexpr double kTitleHeight = 20;
    double top = 2;
    if (!panel.title.empty()) {
        picture.Text({kMargin, kLabelSize}, panel.title,
                     {TextAnchor::kStart, kLabelSize, true, false, kPlotWidth - 2 * kMargin});
        top += kTitleHeight;
    }
    constexpr std::string_view kDashes = "5 3";
    if (!panel.noEffectLabel.empty()) {
        constexpr double kBelow = 6;
        top = DrawLegend(picture, {{panel.noEffectLabel, kInk, true, kDashes}}, kMargin, top) + kBelow;
    }
    const double bottom = top + kRow * static_cast<double>(panel.rows.size());
    const auto [lowest, highest] = RangeOf(panel);
    constexpr double kEndOfTicks = 12;
    const GroundAxis ground{AxisOf({lowest, highest, 6}), kMargin + NamesWidth(panel) + kGap, kPlotWidth - kEndOfTicks,
                            top, bottom};
    DrawGroundAxis(picture, ground, panel.valueTitle);
    if (panel.noEffect) {
        const double x = ground.At(*panel.noEffect);
        picture.Line({x, top}, {x, bottom}, {kInk, 1.2, 1, kDashes});
    }
    for (std::size_t i = 0; i < panel.rows.size(); ++i) {
        DrawRow(picture, panel.rows[i], ground, top + kRow * (static_cast<double>(i) + 0.5));
    }
    picture.SetHeight(bottom + kAxisHeight);
    return picture;
}

}  // namespace tarn
