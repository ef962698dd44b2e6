#pragma once

#include "host/beyond/Estimate.h"

namespace tarn {

/// The largest distance D of the distribution functions of two samples of n1 and n2 cases, with limits D -+ (e1 + e2),
/// cut at 0 and 1. Each sample's function keeps within e of the true one with the probability `level`^(1/2),
///
///   e = sqrt(log(2 / (1 - level^(1/2))) / (2 n))
///
/// (Dvoretzky, Kiefer and Wolfowitz, 1956, Annals of Mathematical Statistics 27, 642-669; with the constant of Massart,
/// 1990, Annals of Probability 18, 1269-1283). It holds for any distribution, with ties, too, and is wide: it covers
/// far more often than `level` says. No limits where a sample is empty or `level` is none.
Estimate SmirnovDistance(double distance, double n1, double n2, double level);

/// The same of one sample of n cases against a distribution that is known.
Estimate KolmogorovDistance(double distance, double n, double level);

}  // namespace tarn
