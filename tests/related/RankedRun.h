#pragma once

#include <string>
#include <vector>

#include "support/QKVecValue.h"
#include "tests/harness/EntryRun.h"

/// Runs of a test of several related fields over a small table.
namespace ranked {

using harness::Fields;
using harness::Rows;
using harness::Table;

/// Fields x0, x1, ...
inline Fields ContinuousFields(std::size_t count) {
    Fields fields;
    for (std::size_t i = 0; i < count; ++i) fields.Continuous("x" + std::to_string(i));
    return fields;
}

inline std::vector<std::string> Names(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) names.push_back("x" + std::to_string(i));
    return names;
}

inline QKSettings Entry(const std::vector<std::string>& names, const std::string& comparison = "none") {
    QKSettings entry;
    AddVecSetting(entry, "variableName", names, false);
    entry.AddSetting("typeOfMultipleComparison", comparison);
    return entry;
}

/// The "Algorithm" element of a test of all fields of the rows.
inline Table ResultOf(const std::string& test, const Rows& rows, const std::string& comparison = "none",
                      const std::vector<std::pair<std::string, double>>& common = {}) {
    Fields fields = ContinuousFields(rows.front().size());
    return harness::ResultOf(test, Entry(Names(rows.front().size()), comparison), fields, rows, common);
}

/// The same with the last column as the weight.
inline Table WeightedResultOf(const std::string& test, const Rows& rows, const std::string& comparison = "none") {
    const std::size_t count = rows.front().size() - 1;
    Fields fields = ContinuousFields(count);
    fields.Weight("w");
    return harness::ResultOf(test, Entry(Names(count), comparison), fields, rows);
}

inline std::vector<std::string> RowsOf(const Table& test, const std::string& result, const std::string& table) {
    return test.Sub(result).SimpleRows(table);
}

/// The numbers of a text like "0;1;0.5;;;0.25", from the given field on; 0 for an empty one.
inline std::vector<double> NumbersOf(const std::string& text) {
    std::vector<double> numbers;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(';', begin), text.size());
        numbers.push_back(std::strtod(text.substr(begin, end - begin).c_str(), nullptr));
        begin = end + 1;
    }
    return numbers;
}

inline void ExpectNumbers(const std::string& text, const std::vector<double>& expected) {
    const std::vector<double> numbers = NumbersOf(text);
    ASSERT_EQ(numbers.size(), expected.size()) << text;
    for (std::size_t i = 0; i < numbers.size(); ++i) EXPECT_NEAR(numbers[i], expected[i], 1e-12) << text;
}

/// Times in seconds of 22 players to round first base by three ways of running: Hollander and Wolfe (1973),
/// Nonparametric Statistical Methods, table 7.1.
inline Rows FirstBase() {
    return {{5.40, 5.50, 5.55}, {5.85, 5.70, 5.75}, {5.20, 5.60, 5.50}, {5.55, 5.50, 5.40}, {5.90, 5.85, 5.70},
            {5.45, 5.55, 5.60}, {5.40, 5.40, 5.35}, {5.45, 5.50, 5.35}, {5.25, 5.15, 5.00}, {5.85, 5.80, 5.70},
            {5.25, 5.20, 5.10}, {5.65, 5.55, 5.45}, {5.60, 5.35, 5.45}, {5.05, 5.00, 4.95}, {5.50, 5.50, 5.40},
            {5.45, 5.55, 5.50}, {5.55, 5.55, 5.35}, {5.45, 5.50, 5.55}, {5.50, 5.45, 5.25}, {5.65, 5.60, 5.40},
            {5.70, 5.65, 5.55}, {6.30, 6.30, 6.25}};
}

}  // namespace ranked
