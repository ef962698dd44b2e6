#pragma once

#include <string>

#include "host/report/plot/PlotData.h"

namespace tarn {

/// How wide plots are, in pixels of a screen: a column of a paper at 128 pixels an inch.
inline constexpr double kPlotWidth = 420;

/// Where a picture goes to.
enum class PictureUse {
    kFile,  ///< a file of its own, with its namespace, on white paper
    kPage   ///< an element within a page of HTML, whose light and fonts it takes
};

/// The plot as SVG, with its title and description for readers of the screen. `id` makes the identifiers within it
/// unique in a page: letters, digits and dashes.
std::string SvgOf(const PlotData& plot, PictureUse use, const std::string& id = "plot");

}  // namespace tarn
