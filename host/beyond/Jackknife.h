#pragma once

#include "host/beyond/Estimate.h"
#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/ScoreRows.h"

namespace tarn {

/// Standard errors of shares of squares of ranks by leaving out one case after another: the root of (n - 1) / n times
/// the sum of squares of what comes out, about its mean (Tukey, 1958, Annals of Mathematical Statistics 29, 614; Efron
/// and Stein, 1981, Annals of Statistics 9, 586-596). They know how the cases of a group really lie, also where nearly
/// all share one value, and are too small where the share is near 0. Nothing with fewer than three cases.

/// Of epsilon squared, H / (n - 1), of two groups or more. Every block is walked once for each two groups.
double JackknifeErrorOfEpsilonSquared(const TieBlocks& blocks);

/// Of Kendall's W of these rows, whose scores are doubled ranks. O(rows times columns).
double JackknifeErrorOfKendallsW(const ScoreRows& rows);

/// The limits of a share, and those of a standard error about it, whichever are wider; within 0 and 1.
Estimate Widened(const Estimate& share, double error, double level);

}  // namespace tarn
