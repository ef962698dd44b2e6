#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/report/TestReading.h"

namespace tarn {

/// Significances adjusted for their number, in the order of `pValues`: the chance of one false rejection or more among
/// all of them stays below the level (Holm, 1979, Scandinavian Journal of Statistics 6, 65-70).
std::vector<double> HolmAdjusted(const std::vector<double>& pValues);

/// The share of false ones among the rejections stays below the level on average (Benjamini and Hochberg, 1995, Journal
/// of the Royal Statistical Society B 57, 289-300).
std::vector<double> BenjaminiHochbergAdjusted(const std::vector<double>& pValues);

/// The significances that decide the tests of one run, taken as one family.
struct TestFamilyPValues {
    struct Adjusted {
        double p;
        double holm;
        double benjaminiHochberg;
    };
    /// For each test; nothing for an estimate, a test that was not done, and a number beyond the engine's range.
    std::vector<std::optional<Adjusted>> tests;
    std::size_t count = 0;  ///< of the tests in the family
};

TestFamilyPValues AdjustTogether(const std::vector<TestReading>& readings);

}  // namespace tarn
