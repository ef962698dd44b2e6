#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/independent/GroupRun.h"

/// Runs of the tests of several groups, with their comparisons.
namespace several {

using Samples = std::vector<std::vector<double>>;

/// A continuous field "x" and a field "g" with so many categories.
inline harness::Fields Categories(std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 1; i <= count; ++i) values.push_back(static_cast<double>(i));
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", values);
    return fields;
}

inline QKSettings Comparing(const std::string& comparison, const std::string& test = "x",
                            const std::string& group = "g") {
    QKSettings entry = groups::Entry(test, group);
    entry.AddSetting("typeOfMultipleComparison", comparison);
    return entry;
}

/// The messages, with the group that each names.
inline std::vector<std::string> MessagesIn(const harness::Table& test) {
    std::vector<std::string> messages = harness::MessagesOf(test);
    std::size_t next = 0;
    for (const pugi::xml_node& message : test.Sub("WarningMessages").Node().children("StructuredTable")) {
        const harness::Table table(message);
        if (table.HasRow("group")) messages[next] += " " + table.Row("group");
        ++next;
    }
    return messages;
}

/// A cell that has to be empty.
inline constexpr double kEmpty = std::numeric_limits<double>::quiet_NaN();

/// A row of a comparison: the two places as text, the numbers within 1e-11.
inline void ExpectRow(const std::string& row, const std::string& first, const std::string& second,
                      const std::vector<double>& numbers) {
    const std::vector<std::string> cells = harness::SplitValues(row);
    ASSERT_EQ(cells.size(), 2 + numbers.size()) << row;
    EXPECT_EQ(cells[0], first) << row;
    EXPECT_EQ(cells[1], second) << row;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (std::isnan(numbers[i])) {
            EXPECT_EQ(cells[2 + i], "") << row;
        } else {
            char* end = nullptr;
            EXPECT_NEAR(std::strtod(cells[2 + i].c_str(), &end), numbers[i], 1e-11) << row;
            EXPECT_TRUE(*end == '\0' && !cells[2 + i].empty()) << row;
        }
    }
}

/// The two-sided significance of a standard normal value, and the one above it.
inline double TwoSided(double z) {
    return std::erfc(std::fabs(z) / std::sqrt(2.0));
}
inline double Above(double z) {
    return std::erfc(z / std::sqrt(2.0)) / 2;
}

inline std::vector<std::string> Pairs(const harness::Table& test) {
    return test.Sub("PairwiseResult").SimpleRows("Content");
}
inline std::vector<std::string> Subsets(const harness::Table& test) {
    return test.Sub("StepwiseResult").SimpleRows("Content");
}

/// A simple table as it is written.
inline std::string TextOf(const harness::Table& table, const char* name) {
    std::ostringstream text;
    table.Node().find_child_by_attribute("SimpleTable", "name", name).print(text, "", pugi::format_raw);
    return text.str();
}

}  // namespace several
