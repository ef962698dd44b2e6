#pragma once

#include "host/report/plot/Picture.h"
#include "host/report/plot/PlotData.h"

namespace tarn {

// Each panel of a plot as a picture by itself, as wide as plots are.

Picture PictureOf(const SamplesPanel& panel);
Picture PictureOf(const CurvesPanel& panel);
Picture PictureOf(const BarsPanel& panel);
Picture PictureOf(const SequencePanel& panel);
Picture PictureOf(const FlowPanel& panel);
Picture PictureOf(const IntervalsPanel& panel);

}  // namespace tarn
