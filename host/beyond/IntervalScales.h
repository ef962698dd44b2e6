#pragma once

#include "host/beyond/Estimate.h"

namespace tarn {

/// Whether a confidence level is a share between 0 and 1. Nothing has limits at another one.
bool IsLevel(double level);

/// The bound that the absolute value of a standard normal variable keeps with the probability `level`; NaN where that
/// is no level.
double NormalBound(double level);

/// A share p as the coefficient 2p - 1, which runs from -1 to 1.
Estimate AsCoefficient(const Estimate& share);

}  // namespace tarn
