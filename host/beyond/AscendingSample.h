#pragma once

#include <cstddef>
#include <vector>

namespace tarn {

/// Values that stand in neighbouring places of an ascending order.
struct ValueRun {
    std::size_t firstPlace = 0;
    std::vector<double> values;
};

/// The cases of one group or field: values that are numbers and not missing, in ascending order. A value with a weight
/// of w stands for w equal cases, w a whole number above 0. Values that count as tied are equal.
struct AscendingSample {
    std::vector<double> values;
    std::vector<double> weights;  ///< of the values; empty where each is 1
    double size = 0;              ///< sum of the weights
    /// In place of the values of a large sample without weights, of which its quartiles and the interval of its median
    /// alone are wanted: the runs in which those lie (see MiddlePlaces.h).
    std::vector<ValueRun> middle = {};

    double WeightAt(std::size_t i) const { return weights.empty() ? 1.0 : weights[i]; }
};

}  // namespace tarn
