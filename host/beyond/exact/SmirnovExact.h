#pragma once

#include "host/beyond/TieBlocks.h"

namespace tarn {

/// The largest differences of two empirical distribution functions and their exact significances. `Above` is the
/// first group's less the second's where that is largest: the first group has the smaller values then.
struct SmirnovTails {
    double difference = 0;       ///< D, the larger one of the two below
    double differenceAbove = 0;  ///< D+, from 0 to 1
    double differenceBelow = 0;  ///< D-, of the second group's less the first's
    double twoSided = 1;         ///< the chance that D is as large or larger
    double greater = 1;          ///< the same of D+
    double less = 1;             ///< the same of D-
};

/// Exact significances of Smirnov's test, by all ways to choose as many cases as the first group has, given the ties:
/// paths over a lattice, whose distance from the diagonal counts at the ends of blocks of tied cases alone (Hodges,
/// 1958, Arkiv foer Matematik 3, 469-486; Schroeer and Trenkler, 1995, Computational Statistics and Data Analysis 20,
/// 185-202; Hilton, Mehta and Patel, 1994, Computational Statistics and Data Analysis 17, 351-361).
///
/// What is added up are the chances of the paths that reach the difference, with a relative error below 1e-11 down to
/// 1e-290; smaller ones may come out as 0. Differences are compared in whole numbers.
///
/// All are 1 where a group is empty. `blocks` has two groups.
SmirnovTails SmirnovExact(const TieBlocks& blocks);

/// The same differences, with the significances that they would have without ties. They are too large where there are
/// some. SciPy: ks_2samp(method="exact").
SmirnovTails SmirnovExactIgnoringTies(const TieBlocks& blocks);

/// About how many additions `SmirnovExact` takes at most. Where it is below 1e18, no whole number overflows.
double SmirnovExactCost(const TieBlocks& blocks);

}  // namespace tarn
