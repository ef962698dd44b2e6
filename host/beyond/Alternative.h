#pragma once

namespace tarn {

/// What a test holds against its hypothesis: a difference to either side, or a statistic that is smaller or larger
/// than the hypothesis lets expect. Each test says what its statistic measures.
enum class Alternative { kTwoSided, kLess, kGreater };

}  // namespace tarn
