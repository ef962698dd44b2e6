#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/TestRun.h"

/// One test, made from its entry in the execution settings, over a small table.
namespace harness {

using Rows = std::vector<std::vector<double>>;

/// Fields whose values are side by side make the rows of a table.
inline Rows Columns(const std::vector<std::vector<double>>& columns) {
    Rows rows(columns.front().size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (const std::vector<double>& column : columns) rows[i].push_back(column[i]);
    }
    return rows;
}

inline Outcome RunEntry(const std::string& test, const QKSettings& entry, Fields& fields, Rows rows,
                        const std::vector<std::pair<std::string, double>>& common = {}) {
    QKSettings settings;
    for (const auto& [key, value] : common) settings.AddSetting(key, value);
    settings.AddSetting(test, entry);
    return Run(settings, fields, std::move(rows));
}

/// The "Algorithm" element of the only test.
inline Table ResultOf(const std::string& test, const QKSettings& entry, Fields& fields, Rows rows,
                      const std::vector<std::pair<std::string, double>>& common = {}) {
    const Outcome outcome = RunEntry(test, entry, fields, std::move(rows), common);
    EXPECT_FALSE(outcome.status.IsError()) << outcome.status.GetErrorCode();
    EXPECT_EQ(outcome.document.TestCount(), 1);
    return outcome.document.Test(0);
}

inline double Number(const Table& table, const std::string& row) {
    const std::string text = table.Row(row);
    EXPECT_NE(text, "(absent)") << row;
    return std::strtod(text.c_str(), nullptr);
}

inline std::vector<std::string> Texts(std::initializer_list<std::string> texts) {
    return texts;
}

}  // namespace harness
