#pragma once

#include <vector>

namespace tarn {

/// A dot of a sample: where its value lies, in pixels, and its radius.
struct SwarmDot {
    double at = 0;
    double radius = 0;
};

/// How far each dot lies from the middle of its sample, so that none covers another: a beeswarm (after Wilkinson, 1999,
/// Dot plots, American Statistician 53, 276-281). Dots are placed in the order of their values, each as near to the
/// middle as those before it let it, on either side in turn. Where that would pass `half` on a side, all are pushed
/// together to fit. Nothing here is random.
std::vector<double> SwarmOffsets(const std::vector<SwarmDot>& dots, double half);

}  // namespace tarn
