#pragma once

#include "host/beyond/PlotView.h"

namespace tarn {

/// The shares of two classes beside the expected ones.
void PlotProportion(PlotView& plot);

/// The intervals of a share, by each of their methods.
void PlotProportionIntervals(PlotView& plot);

/// Categories as observed and as expected.
void PlotFrequencies(PlotView& plot);

/// How often each of several dichotomies is a success.
void PlotSuccesses(PlotView& plot);

/// How many went from one class of a pair of dichotomies to the other.
void PlotAnswers(PlotView& plot);

/// How many went from which category of a pair of ordinal fields to which; their differences where there are many.
void PlotMargins(PlotView& plot);

}  // namespace tarn
