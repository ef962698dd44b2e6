#pragma once

#include "host/beyond/PlotView.h"

namespace tarn {

/// The distribution function of a sample beside that of the hypothesis, with the largest distance between them.
void PlotAgainstDistribution(PlotView& plot);

/// Those of two groups.
void PlotTwoDistributions(PlotView& plot);

}  // namespace tarn
