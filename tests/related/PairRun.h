#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/QKVecValue.h"
#include "tests/harness/TestRun.h"

/// One test of a pair of fields over a small table.
namespace pairs {

using Rows = std::vector<std::vector<double>>;

/// A field whose values are side by side with others' make the rows of a table.
inline Rows Columns(const std::vector<std::vector<double>>& columns) {
    Rows rows(columns.front().size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (const std::vector<double>& column : columns) rows[i].push_back(column[i]);
    }
    return rows;
}

/// The entry of a test: "variableName" and nothing else.
inline QKSettings Entry(const std::vector<std::string>& names) {
    QKSettings entry;
    AddVecSetting(entry, "variableName", names, false);
    return entry;
}

inline harness::Outcome RunEntry(const std::string& test, const QKSettings& entry, harness::Fields& fields, Rows rows,
                                 const std::vector<std::pair<std::string, double>>& common = {}) {
    QKSettings settings;
    for (const auto& [key, value] : common) settings.AddSetting(key, value);
    settings.AddSetting(test, entry);
    return harness::Run(settings, fields, std::move(rows));
}

/// The "Algorithm" element of the only test.
inline harness::Table ResultOf(const std::string& test, const QKSettings& entry, harness::Fields& fields, Rows rows,
                               const std::vector<std::pair<std::string, double>>& common = {}) {
    const harness::Outcome outcome = RunEntry(test, entry, fields, std::move(rows), common);
    EXPECT_FALSE(outcome.status.IsError()) << outcome.status.GetErrorCode();
    EXPECT_EQ(outcome.document.TestCount(), 1);
    return outcome.document.Test(0);
}

inline double Number(const harness::Table& table, const std::string& row) {
    const std::string text = table.Row(row);
    EXPECT_NE(text, "(absent)") << row;
    return std::strtod(text.c_str(), nullptr);
}

inline std::vector<std::string> Texts(std::initializer_list<std::string> texts) {
    return texts;
}

}  // namespace pairs
