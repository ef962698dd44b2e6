#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/EntryRun.h"

/// A test as it is defined, and the same with the extended arithmetic.
namespace harness {

struct BothArithmetics {
    Table asDefined;
    Table extended;

    /// What the extended element says of itself: "", "extended", "textbook" or both.
    std::string Mark() const { return extended.Attribute("arithmetic"); }
};

inline BothArithmetics RunBothArithmetics(const std::string& test, const QKSettings& entry, Fields& fields,
                                          const Rows& rows,
                                          const std::vector<std::pair<std::string, double>>& common = {}) {
    QKSettings settings;
    for (const auto& [key, value] : common) settings.AddSetting(key, value);
    settings.AddSetting(test, entry);
    const Outcome asDefined = Run(settings, fields, rows);
    settings.AddSetting("extendedArithmetic", true);
    const Outcome extended = Run(settings, fields, rows);
    EXPECT_FALSE(asDefined.status.IsError() || extended.status.IsError());
    EXPECT_EQ(asDefined.document.Test(0).Attribute("arithmetic"), "");
    return {asDefined.document.Test(0), extended.document.Test(0)};
}

/// A number of an element within a share of what is expected.
inline testing::AssertionResult IsWithin(double actual, double expected, double share) {
    if (actual == expected || std::fabs(actual - expected) <= share * std::fabs(expected)) {
        return testing::AssertionSuccess();
    }
    std::ostringstream text;
    text.precision(17);
    text << actual << " in place of " << expected << ", off by " << std::fabs(actual / expected - 1);
    return testing::AssertionFailure() << text.str();
}

/// The digits that an extended element is to have.
inline constexpr double kTwelveDigits = 1e-12;

}  // namespace harness
