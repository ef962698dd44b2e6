#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tarn {

/// A colour of a picture: its class, and its value on a white page.
struct PlotColour {
    std::string_view name;
    std::string_view onWhite;
    std::string_view onBlack;  ///< of the same hue, on a dark page
};

/// That of texts and axes.
inline constexpr PlotColour kInk{"p-ink", "#1b1b1b", "#e8e8e8"};
inline constexpr PlotColour kFaint{"p-faint", "#595959", "#b3b3b3"};
inline constexpr PlotColour kGrid{"p-grid", "#dddddd", "#3d3d3d"};

/// The colours of groups and fields: those of Okabe and Ito (2008, Color Universal Design), which people with any kind
/// of colour vision tell apart, but for black and yellow, which are hard to see on one page or the other. Orange, sky
/// blue and purple are a little darker on white, so that a thin line of each stands out from the page. Neighbours
/// differ in lightness, too, for a print in grey.
inline constexpr std::array kGroupColours{
    PlotColour{"p-g1", "#0072b2", "#5aaee6"}, PlotColour{"p-g2", "#c98a00", "#e69f00"},
    PlotColour{"p-g3", "#00694d", "#2fbf96"}, PlotColour{"p-g4", "#d55e00", "#f08a4b"},
    PlotColour{"p-g5", "#3a95cc", "#56b4e9"}, PlotColour{"p-g6", "#a8477f", "#cc79a7"}};

/// The colour of a group, or of a field, by its place among `count`. More than there are colours have one in common:
/// their names tell them apart, and colours that come again would tell of a kinship that isn't there.
inline const PlotColour& GroupColour(std::size_t place, std::size_t count) {
    return count > kGroupColours.size() ? kGroupColours.front() : kGroupColours[place % kGroupColours.size()];
}

}  // namespace tarn
