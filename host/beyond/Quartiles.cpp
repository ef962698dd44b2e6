#include "host/beyond/Quartiles.h"

#include <cmath>
#include <cstddef>
#include <limits>

namespace tarn {

namespace {

double ValueInMiddle(const std::vector<ValueRun>& runs, std::size_t place) {
    for (const ValueRun& run : runs) {
        if (place >= run.firstPlace && place - run.firstPlace < run.values.size()) {
            return run.values[place - run.firstPlace];
        }
    }
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

double ValueAtPlace(const AscendingSample& sample, double place) {
    if (!sample.middle.empty()) return ValueInMiddle(sample.middle, static_cast<std::size_t>(place));
    if (sample.weights.empty()) return sample.values[static_cast<std::size_t>(place)];
    double casesBefore = 0;
    std::size_t i = 0;
    for (; i + 1 < sample.values.size(); ++i) {
        casesBefore += sample.weights[i];
        if (casesBefore > place) break;
    }
    return sample.values[i];
}

double Quantile(const AscendingSample& sample, double share) {
    if (!(sample.size > 0) || !(share >= 0 && share <= 1)) return std::numeric_limits<double>::quiet_NaN();
    // Places go up to 2^53, where a double has no digits left for the distance between two.
    const long double position = static_cast<long double>(sample.size - 1) * share;
    const long double below = std::floor(position);
    const double lower = ValueAtPlace(sample, static_cast<double>(below));
    if (position == below) return lower;
    const double upper = ValueAtPlace(sample, static_cast<double>(below) + 1);
    return std::lerp(lower, upper, static_cast<double>(position - below));
}

Summary SummaryOf(const AscendingSample& sample) {
    return {sample.size, Quantile(sample, 0.25), Quantile(sample, 0.5), Quantile(sample, 0.75)};
}

}  // namespace tarn
