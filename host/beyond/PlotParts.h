#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/beyond/PlotView.h"

namespace tarn {

// What the plots of several tests have in common.

/// Which groups, or fields, a view has, in the order in which they are drawn.
std::vector<std::size_t> DrawnOrder(const PlotView& plot);

/// The groups or fields of a test side by side, and what a reader has to know of such a panel.
SamplesPanel SamplesOf(const PlotView& plot);
void AddNotesOnSamples(const SamplesPanel& panel, PlotView& plot);

/// A number as the reading has it with its interval; none where there is no finite number.
std::optional<PlotEstimate> EstimateOf(const std::string& label, const Number& value, const Number& lower,
                                       const Number& upper);

/// Adds a panel of the pairs that are compared; the most different ones where there are many.
void AddPairs(PlotView& plot);

}  // namespace tarn
