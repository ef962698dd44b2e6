#pragma once

#include "host/beyond/PlotView.h"

namespace tarn {

/// The two classes of a field in the order of the records.
void PlotRuns(PlotView& plot);

/// The groups in the joint order of their values, above one another where there are few, and side by side.
void PlotOrderOfGroups(PlotView& plot);

}  // namespace tarn
