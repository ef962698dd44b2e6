#pragma once

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "host/beyond/AscendingSample.h"

namespace tarn::beyond_test {

inline AscendingSample SampleOf(std::vector<double> values) {
    std::ranges::sort(values);
    AscendingSample sample;
    sample.size = static_cast<double>(values.size());
    sample.values = std::move(values);
    return sample;
}

/// The same cases with each value once and its count as weight.
inline AscendingSample Weighted(const AscendingSample& sample) {
    AscendingSample weighted;
    for (const double value : sample.values) {
        if (weighted.values.empty() || weighted.values.back() != value) {
            weighted.values.push_back(value);
            weighted.weights.push_back(0);
        }
        weighted.weights.back() += 1;
    }
    weighted.size = sample.size;
    return weighted;
}

/// Whole numbers from `least` to `largest`.
inline AscendingSample RandomSample(int size, int least, int largest, std::mt19937& generator) {
    std::vector<double> values;
    for (int i = 0; i < size; ++i) {
        const auto span = static_cast<unsigned>(largest - least + 1);
        values.push_back(least + static_cast<int>(generator() % span));
    }
    return SampleOf(values);
}

/// Numbers that are nearly normal, with few ties or none.
inline AscendingSample SmoothSample(int size, double shift, std::mt19937& generator) {
    std::vector<double> values;
    for (int i = 0; i < size; ++i) {
        double sum = shift;
        for (int j = 0; j < 12; ++j) sum += static_cast<double>(generator()) / 4294967296.0 - 0.5;
        values.push_back(sum);
    }
    return SampleOf(values);
}

inline double Sign(double x) {
    return static_cast<double>(x > 0) - static_cast<double>(x < 0);
}

}  // namespace tarn::beyond_test
