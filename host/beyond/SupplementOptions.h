#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/beyond/Alternative.h"
#include "host/beyond/LikeOthers.h"
#include "host/beyond/ZeroMethod.h"
#include "host/report/AdjustedPValues.h"

namespace tarn {

/// What a user wants to know of the tests beside their document. As it stands: effects, and exact significances where
/// they cost next to nothing.
struct SupplementOptions {
    bool exact = false;       ///< exact significances also where they take their time
    std::uint64_t draws = 0;  ///< of a Monte Carlo significance; 0 for none
    std::uint64_t seed = 1;   ///< of these draws
    Alternative alternative = Alternative::kTwoSided;
    std::optional<bool> continuity;
    std::optional<ZeroMethod> zeros;
    std::optional<double> shift;  ///< by which the first sample is expected to lie above the second
    std::optional<OtherSystem> like;
    std::optional<Adjustment> adjustment;  ///< of the pairs of a test, and of the tests of the run
};

/// The names under which a user types them: "two-sided", "less", "greater"; "drop", "pratt", "split".
std::string_view NameOf(Alternative alternative);
std::optional<Alternative> AlternativeOf(std::string_view name);
std::optional<ZeroMethod> ZeroMethodOf(std::string_view name);

}  // namespace tarn
