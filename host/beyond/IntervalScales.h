#pragma once

#include "host/beyond/Estimate.h"

namespace tarn {

/// Whether a confidence level is a share between 0 and 1. Nothing has limits at another one.
bool IsLevel(double level);

/// The bound that the absolute value of a standard normal variable keeps with the probability `level`; NaN where that
/// is no level.
double NormalBound(double level);

/// The same of Student's t with `degrees` of freedom, a number above 0 that need not be whole.
double StudentBound(double level, double degrees);

/// A share strictly between 0 and 1 with its limits: `bound` standard errors to both sides on the scale of the logit,
/// log(p / (1 - p)), where the standard error is `error` / (p (1 - p)) by the delta method.
Estimate OnLogitScale(double share, double error, double bound);

/// A coefficient strictly between -1 and 1 with its limits: `bound` standard errors to both sides on the scale of
/// Fisher's z, atanh(r), where the standard error is `error` / (1 - r^2) by the delta method (Fisher, 1921, Metron 1,
/// 3-32).
Estimate OnFisherScale(double coefficient, double error, double bound);

/// A share p as the coefficient 2p - 1, which runs from -1 to 1.
Estimate AsCoefficient(const Estimate& share);

}  // namespace tarn
