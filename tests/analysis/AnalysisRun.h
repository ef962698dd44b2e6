#pragma once

#include <string>

#include "host/ByteSource.h"
#include "host/analysis/Analysis.h"
#include "host/table/TableLoader.h"

/// Analyses of small tables within the process of a test.
namespace analysis_test {

inline tarn::AnalysisEnvironment Environment() {
    tarn::AnalysisEnvironment environment;
    environment.libraryFolders = {TARN_LIBRARY_FOLDER};
    return environment;
}

inline tarn::Table TableOf(const std::string& csv, const tarn::LoadOptions& options = {}) {
    tarn::ByteSource source = tarn::ByteSource::FromMemory("data.csv", csv);
    return tarn::LoadTable(source, tarn::TableDescriptor(), options);
}

/// The answers of two groups, so many records, whose numbers depend on `seed`.
inline std::string GroupsCsv(int records, int seed) {
    std::string csv = "x,y,g\n";
    for (int i = 0; i < records; ++i) {
        csv += std::to_string((i * 7919 + seed * 104729) % 1009) + "," + std::to_string((i * 31 + seed) % 13) +
               (i % 2 == 0 ? ",a\n" : ",b\n");
    }
    return csv;
}

inline tarn::AnalysisOptions GroupTests() {
    tarn::AnalysisOptions options;
    options.independent = {"y", "x"};
    options.group = "g";
    options.related = {"x", "y"};
    options.tests = {"mann-whitney", "kolmogorov-smirnov", "hodges-lehmann", "median", "wilcoxon"};
    options.familyOrder = {tarn::TestFamily::kIndependent, tarn::TestFamily::kRelated};
    return options;
}

inline tarn::LoadOptions NominalGroups() {
    tarn::LoadOptions options;
    options.nominalByDefault = "g";
    return options;
}

}  // namespace analysis_test
