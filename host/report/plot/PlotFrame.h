#pragma once

#include <string>
#include <vector>

#include "host/report/plot/Picture.h"
#include "host/report/plot/ValueAxis.h"

namespace tarn {

// What the panels of plots have in common.

inline constexpr double kLabelSize = 12;
inline constexpr double kCaptionSize = 11;
inline constexpr double kLineHeight = 15;
inline constexpr double kMargin = 6;
/// Below the line of an axis: tick, number, title.
inline constexpr double kTickLength = 4;
inline constexpr double kTickTextDepth = 17;
inline constexpr double kAxisTitleDepth = 34;
inline constexpr double kAxisHeight = 40;

/// A horizontal axis with its grid above, from `left` to `right`; the ground of the panel is at `bottom`.
struct GroundAxis {
    ValueAxis axis;
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;

    double At(double value) const { return left + axis.ShareOf(value) * (right - left); }
};
void DrawGroundAxis(Picture& picture, const GroundAxis& ground, const std::string& title);

/// A vertical axis with its grid to the right of it.
struct SideAxis {
    ValueAxis axis;
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;

    double At(double value) const { return bottom - axis.ShareOf(value) * (bottom - top); }
};
/// The title stands above the axis, where it can be as long as the picture is wide.
void DrawSideAxis(Picture& picture, const SideAxis& side, const std::string& title);

/// The room that the numbers of an axis take beside it.
double TickRoom(const ValueAxis& axis);

/// Names beside short samples of their looks in as many lines as they need, from `top` down; returns where they end.
struct LegendEntry {
    std::string name;
    PlotColour colour;
    bool isLine = true;
    std::string_view dashes = {};
};
double DrawLegend(Picture& picture, const std::vector<LegendEntry>& entries, double left, double top);

/// The same at the top of a picture; 0 where there is nothing to be told.
double DrawKey(Picture& picture, const std::vector<LegendEntry>& entries);

}  // namespace tarn
