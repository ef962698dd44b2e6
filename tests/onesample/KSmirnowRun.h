#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/harness/EntryRun.h"

/// One Kolmogorov-Smirnov test of a field over a small table.
namespace ksone {

using Parameters = std::vector<std::pair<std::string, double>>;

inline constexpr const char* kNormal = "OKolmogorovSmirnovNormal";
inline constexpr const char* kUniform = "OKolmogorovSmirnovUniform";
inline constexpr const char* kPoisson = "OKolmogorovSmirnovPoisson";
inline constexpr const char* kExponential = "OKolmogorovSmirnovExponential";

inline QKSettings Entry(const Parameters& parameters, const std::string& field = "x") {
    QKSettings entry;
    entry.AddSetting("variableName", field);
    for (const auto& [key, value] : parameters) entry.AddSetting(key, value);
    return entry;
}

inline QKSettings UseSample() {
    QKSettings entry = Entry({});
    entry.AddSetting("isUseSample", true);
    return entry;
}

/// Over a field "x" and, with a second column, its weights.
inline harness::Table ResultOf(const char* test, const QKSettings& entry, harness::Rows rows, double sigLevel = 0.05) {
    harness::Fields fields;
    fields.Continuous("x");
    if (rows.front().size() > 1) fields.Weight("w");
    return harness::ResultOf(test, entry, fields, std::move(rows), {{"sigLevel", sigLevel}});
}

inline harness::Table Result(const char* test, const Parameters& parameters, const std::vector<double>& values) {
    return ResultOf(test, Entry(parameters), harness::Columns({values}));
}

inline harness::Table Statistics(const harness::Table& test) {
    return test.Sub("StatisticsResult");
}
inline harness::Table Extremes(const harness::Table& test) {
    return Statistics(test).Sub("MostExtremeDifferences");
}

}  // namespace ksone
