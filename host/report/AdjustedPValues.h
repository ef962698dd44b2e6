#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/report/TestReading.h"

namespace tarn {

/// Significances adjusted for their number, in the order of `pValues`: the chance of one false rejection or more among
/// all of them stays below the level (Holm, 1979, Scandinavian Journal of Statistics 6, 65-70).
std::vector<double> HolmAdjusted(const std::vector<double>& pValues);

/// The share of false ones among the rejections stays below the level on average (Benjamini and Hochberg, 1995, Journal
/// of the Royal Statistical Society B 57, 289-300).
std::vector<double> BenjaminiHochbergAdjusted(const std::vector<double>& pValues);

/// How significances are adjusted for their number. The first four keep the chance of one false rejection or more among
/// all of them below the level, Hochberg's and Hommel's where the tests are not negatively dependent.
enum class Adjustment {
    kHolm,
    kHochberg,            ///< 1988, Biometrika 75, 800-802
    kHommel,              ///< 1988, Biometrika 75, 383-386
    kBonferroni,          ///< times their number
    kBenjaminiHochberg,   ///< the share of false rejections, for tests that are not negatively dependent
    kBenjaminiYekutieli,  ///< the same for any (2001, Annals of Statistics 29, 1165-1188)
    kNone
};

/// That of the name "holm", "hochberg", "hommel", "bonferroni", "bh", "by" or "none".
std::optional<Adjustment> AdjustmentOf(std::string_view name);
std::string_view NameOf(Adjustment adjustment);
/// As a heading has it: "Benjamini-Hochberg".
std::string_view TitleOf(Adjustment adjustment);

/// The significances adjusted, in their order; the numbers of R's p.adjust. NaN stays NaN and doesn't count among them.
/// n log n steps for n of them.
std::vector<double> Adjusted(const std::vector<double>& pValues, Adjustment adjustment);

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
