#pragma once

namespace tarn {

/// Significances of a statistic by its distribution over all arrangements that the data allow, the observed one
/// included.
struct ExactTails {
    double less = 1;      ///< the statistic is as small or smaller
    double greater = 1;   ///< it is as large or larger
    double twoSided = 1;  ///< it is as far from its expectation, or further
};

}  // namespace tarn
