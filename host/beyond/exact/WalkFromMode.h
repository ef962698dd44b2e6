#pragma once

#include <algorithm>
#include <cstdint>

namespace tarn {

/// Shows the terms of a distribution with one mode to `visit(place, weight)`, where the weight is the term in
/// proportion to that of the mode: from the mode down to `first`, then from the place above it up to `last`.
/// `ratio(place)` is the term of place + 1 divided by that of `place`. Starting at the mode keeps terms from
/// overflowing, and long double from vanishing above 1e-4900.
template <typename Ratio, typename Visit>
void WalkFromMode(std::int64_t first, std::int64_t mode, std::int64_t last, const Ratio& ratio, const Visit& visit) {
    const std::int64_t start = std::clamp(mode, first, last);
    long double weight = 1;
    for (std::int64_t place = start; place >= first && weight > 0; --place) {
        visit(place, weight);
        if (place > first) weight /= ratio(place - 1);
    }
    weight = 1;
    for (std::int64_t place = start; place < last && weight > 0; ++place) {
        weight *= ratio(place);
        visit(place + 1, weight);
    }
}

}  // namespace tarn
