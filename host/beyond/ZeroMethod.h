#pragma once

namespace tarn {

/// What becomes of differences of zero in the signed ranks: they are dropped before ranking (Wilcoxon 1945), ranked and
/// then dropped (Pratt 1959), or ranked with half of their ranks on each side.
enum class ZeroMethod { kDrop, kPratt, kSplit };

}  // namespace tarn
