#pragma once

#include <vector>

#include "host/beyond/AscendingSample.h"
#include "host/report/plot/PlotData.h"

namespace tarn {

/// From so many marks on those of a sample would cover one another.
inline constexpr std::size_t kMostMarks = 150;
/// With more of them in all samples a page of many tests would grow too large.
inline constexpr std::size_t kMostMarksTogether = 450;

/// And so many equal ones would stand side by side as a bar, which says less than a bar that is drawn as one.
inline constexpr double kMostEqualMarks = 25;

/// Box and marks of samples that stand side by side, without their names: all values as marks where those of each
/// sample are few, else how dense they are, with the values beyond the whiskers, at most 25 on each side, the
/// outermost. Values are in ascending order throughout, and no sample is empty.
std::vector<PlotSample> ShapesOf(const std::vector<AscendingSample>& samples);

/// How dense the values of a sample are between the lowest and the highest, by Gaussian kernels whose width is
/// 0.9 min(s, IQR / 1.34) n^(-1/5) (Silverman, 1986, Density Estimation, equation 3.31); values are put into 512
/// classes first. Each value has its share as its density where there are no more than 15 of them.
void SetOutline(PlotSample& shape, const AscendingSample& sample);

}  // namespace tarn
