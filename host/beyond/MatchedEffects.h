#pragma once

#include "host/beyond/AscendingSample.h"
#include "host/beyond/Estimate.h"

namespace tarn {

/// The matched rank-biserial coefficient of paired differences, (W+ - W-) / (W+ + W-), W+ and W- the sums of the ranks
/// of positive and negative differences without zeros (King and Minium, 2003, Statistical Reasoning in Psychology and
/// Education; Kerby, 2014, Comprehensive Psychology 3, 1). It is 2t - 1, t the share of positive ones among the means
/// of all pairs of differences, equal halves apart. The variance is that of a U-statistic (Hoeffding, 1948, Annals of
/// Mathematical Statistics 19, 293-325; Sen, 1960), and the limits are those of `LimitsOfPairShare`, which exist at -1
/// and 1, too. Nothing where all differences are 0; no limits where `level` is none.
Estimate MatchedRankBiserial(const AscendingSample& differences, double level);

/// 2p - 1, p the share of positive differences among those that are not 0, with Wilson's limits (1927).
Estimate MatchedSignBiserial(double positive, double negative, double level);

}  // namespace tarn
