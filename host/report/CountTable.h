#pragma once

#include <string>
#include <vector>

#include "host/report/ResultDocument.h"

namespace tarn {

/// A table of counts, of two classes or of two fields.
struct CountTable {
    std::string corner;  ///< what the rows and the columns are; "" where that is plain
    std::vector<std::string> columnTitles;
    std::vector<std::string> rowTitles;
    std::vector<std::vector<std::string>> rows;
};

/// The one that a test shows; empty for a test without.
CountTable ReadCounts(const TestResult& test, const ResultDocument& document);

}  // namespace tarn
