#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/EntryRun.h"

/// A run as defined and with extended arithmetic, over the same table.
namespace harness {

struct BothArithmetics {
    Outcome defined;
    Outcome extended;

    Table Defined(int test = 0) const { return defined.document.Test(test); }
    Table Extended(int test = 0) const { return extended.document.Test(test); }
};

inline BothArithmetics RunBoth(const QKSettings& settings, Fields& fields, const Rows& rows) {
    BothArithmetics both;
    const auto runAs = [&](bool isExtended) {
        QKSettings asked = settings;
        asked.AddSetting("extendedArithmetic", isExtended);
        return Run(asked, fields, rows);
    };
    both.defined = runAs(false);
    both.extended = runAs(true);
    EXPECT_FALSE(both.defined.status.IsError()) << both.defined.status.GetErrorCode();
    EXPECT_FALSE(both.extended.status.IsError()) << both.extended.status.GetErrorCode();
    EXPECT_EQ(both.defined.text.find("arithmetic="), std::string::npos);
    return both;
}

inline BothArithmetics RunBoth(const std::string& test, const QKSettings& entry, Fields& fields, const Rows& rows,
                               const std::vector<std::pair<std::string, double>>& common = {}) {
    QKSettings settings;
    for (const auto& [key, value] : common) settings.AddSetting(key, value);
    settings.AddSetting(test, entry);
    return RunBoth(settings, fields, rows);
}

/// A number, right to so much of its value.
inline testing::AssertionResult IsNear(double actual, double expected, double relative = 1e-12) {
    if (actual == expected || std::fabs(actual - expected) <= relative * std::fabs(expected)) {
        return testing::AssertionSuccess();
    }
    std::ostringstream text;
    text.precision(17);
    text << actual << " for " << expected << ", off by " << actual / expected - 1;
    return testing::AssertionFailure() << text.str();
}

/// The same of a row of a table.
inline testing::AssertionResult IsNear(const Table& table, const std::string& row, double expected,
                                       double relative = 1e-12) {
    return IsNear(Number(table, row), expected, relative) << " (" << row << ")";
}

/// What an element says of the way in which it was worked out; empty if nothing.
inline std::string WayOf(const Table& test) {
    return test.Attribute("arithmetic");
}

}  // namespace harness
