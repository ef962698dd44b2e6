#pragma once

#include "host/beyond/PlotView.h"

namespace tarn {

/// Groups side by side, with the shift of two and the pairs of several.
void PlotGroups(PlotView& plot);

/// The same with the span of the control group, without the values trimmed from each end.
void PlotSpan(PlotView& plot);

/// Related fields side by side.
void PlotFields(PlotView& plot);

/// The differences of a pair, below the pair itself where cases are few.
void PlotDifferences(PlotView& plot);

/// One field with the median of the hypothesis.
void PlotOneField(PlotView& plot);

}  // namespace tarn
