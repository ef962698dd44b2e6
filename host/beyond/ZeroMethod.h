#pragma once

namespace tarn {

/// What the signed rank test does with differences of zero.
enum class ZeroMethod {
    kDrop,   ///< They are left out before ranking (Wilcoxon, 1949, Some Rapid Approximate Statistical Procedures).
    kPratt,  ///< They are ranked with the others and left out afterwards (Pratt, 1959, Journal of the American
             ///< Statistical Association 54, 655-667).
    kSplit,  ///< They are ranked with the others, and half of their ranks counts as positive.
};

}  // namespace tarn
