#include <algorithm>
#include <limits>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"

namespace tarn {

namespace {

constexpr double kHeight = 220;
constexpr std::string_view kTheoryDashes = "6 4";
/// By which curves are told apart without their colours.
constexpr std::string_view kCurveDashes[] = {"", "7 2.5", "2 2"};

std::string_view DashesOf(const PlotCurve& curve) {
    return curve.isTheory ? kTheoryDashes : kCurveDashes[curve.colour % std::size(kCurveDashes)];
}

PlotColour ColourOf(const PlotCurve& curve, std::size_t count) {
    return curve.isTheory ? kInk : GroupColour(curve.colour, count);
}

/// An empirical curve comes from 0 at the left of the frame and leaves it as 1 at the right.
std::vector<PicturePoint> PointsOf(const PlotCurve& curve, const GroundAxis& ground, const SideAxis& side) {
    std::vector<PicturePoint> points;
    if (!curve.hasSteps) {
        for (const PlotMark& mark : curve.points) points.push_back({ground.At(mark.value), side.At(mark.weight)});
        return points;
    }
    double level = side.At(0);
    points.push_back({ground.left, level});
    for (const PlotMark& mark : curve.points) {
        const double x = ground.At(mark.value);
        points.push_back({x, level});
        level = side.At(mark.weight);
        points.push_back({x, level});
    }
    points.push_back({ground.right, level});
    return points;
}

std::pair<double, double> RangeOf(const CurvesPanel& panel) {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (const PlotCurve& curve : panel.curves) {
        for (const PlotMark& mark : curve.points) {
            lowest = std::min(lowest, mark.value);
            highest = std::max(highest, mark.value);
        }
    }
    return lowest <= highest ? std::pair(lowest, highest) : std::pair(0.0, 1.0);
}

void DrawGap(Picture& picture, const CurvesPanel::Gap& gap, const GroundAxis& ground, const SideAxis& side) {
    constexpr double kEnd = 4;
    const double x = ground.At(gap.value);
    const LineLook line{kInk, 2};
    for (const double share : {gap.lower, gap.upper}) {
        picture.Line({x - kEnd, side.At(share)}, {x + kEnd, side.At(share)}, line);
    }
    picture.Line({x, side.At(gap.lower)}, {x, side.At(gap.upper)}, line);
}

}  // namespace

Picture PictureOf(const CurvesPanel& panel) {
    Picture picture(kPlotWidth);
    std::vector<LegendEntry> entries;
    for (const PlotCurve& curve : panel.curves) {
        entries.push_back({curve.name, ColourOf(curve, panel.colourCount), true, DashesOf(curve)});
    }
    if (panel.gap) entries.push_back({panel.gap->label, kInk, true, {}});
    constexpr double kTitleHeight = 26;
    constexpr double kEndOfTicks = 12;
    const double top = DrawKey(picture, entries) + kTitleHeight;
    const auto [lowest, highest] = RangeOf(panel);
    SideAxis side{AxisOf({0, 1, 5, true}), 0, kPlotWidth - kEndOfTicks, top, top + kHeight};
    side.left = kMargin + TickRoom(side.axis);
    const GroundAxis ground{AxisOf({lowest, highest, 6}), side.left, side.right, top, side.bottom};
    DrawSideAxis(picture, side, panel.shareTitle);
    DrawGroundAxis(picture, ground, panel.valueTitle);
    for (const PlotCurve& curve : panel.curves) {
        picture.Lines(PointsOf(curve, ground, side),
                      {ColourOf(curve, panel.colourCount), curve.isTheory ? 1.5 : 2, 1, DashesOf(curve)});
    }
    if (panel.gap) DrawGap(picture, *panel.gap, ground, side);
    picture.SetHeight(side.bottom + kAxisHeight);
    return picture;
}

}  // namespace tarn
