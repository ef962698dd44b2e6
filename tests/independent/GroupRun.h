#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/QKVecValue.h"
#include "tests/harness/EntryRun.h"

/// One test of a field in groups over a small table.
namespace groups {

using harness::Number;
using harness::Rows;
using harness::Texts;
using Common = std::vector<std::pair<std::string, double>>;

/// The entry of a test: the test field and the group field.
inline QKSettings Entry(const std::string& test = "x", const std::string& group = "g") {
    QKSettings entry;
    entry.AddSetting("variableName", test);
    entry.AddSetting("groupVariableName", group);
    return entry;
}

/// The same with listed groups, of values or of texts.
template <typename Value>
QKSettings Listed(const std::vector<Value>& first, const std::vector<Value>& second) {
    QKSettings entry = Entry();
    entry.AddSetting("userSpecifyGroupList", true);
    AddVecSetting(entry, "group1List", first, false);
    AddVecSetting(entry, "group2List", second, false);
    return entry;
}

/// A continuous field "x" and a field "g" with the categories 1 and 2.
inline harness::Fields TwoFields() {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2});
    return fields;
}
inline harness::Fields WeightedFields() {
    harness::Fields fields = TwoFields();
    fields.Weight("w");
    return fields;
}

/// Rows of (value, category index) from the values of each group.
inline Rows RowsOf(const std::vector<std::vector<double>>& samples) {
    Rows rows;
    for (std::size_t group = 0; group < samples.size(); ++group) {
        for (const double value : samples[group]) rows.push_back({value, static_cast<double>(group)});
    }
    return rows;
}

inline harness::Outcome RunEntry(const std::string& test, const QKSettings& entry, harness::Fields fields, Rows rows,
                                 const Common& common = {}) {
    QKSettings settings;
    for (const auto& [key, value] : common) settings.AddSetting(key, value);
    settings.AddSetting(test, entry);
    return harness::Run(settings, fields, std::move(rows));
}

/// The "Algorithm" element of the only test.
inline harness::Table ResultOf(const std::string& test, const QKSettings& entry, harness::Fields fields, Rows rows,
                               const Common& common = {}) {
    const harness::Outcome outcome = RunEntry(test, entry, std::move(fields), std::move(rows), common);
    EXPECT_FALSE(outcome.status.IsError()) << outcome.status.GetErrorCode();
    EXPECT_EQ(outcome.document.TestCount(), 1);
    return outcome.document.Test(0);
}

/// What a test that fails shows beside its decision: the messages, and the fields of its condition.
struct Failure {
    std::vector<std::string> messages;
    std::string testField;
    std::string groupField;

    bool operator==(const Failure&) const = default;
};
inline void PrintTo(const Failure& failure, std::ostream* out) {
    for (const std::string& message : failure.messages) *out << message << ", ";
    *out << "fields " << failure.testField << " and " << failure.groupField;
}

inline Failure FailureOf(const harness::Table& test) {
    EXPECT_EQ(test.ChildNames(),
              std::vector<std::string>({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    return {harness::MessagesOf(test), test.Sub("Condition").Row("%0"), test.Sub("Condition").Row("%1")};
}

}  // namespace groups
