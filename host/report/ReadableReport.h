#pragma once

#include <string>

#include "host/report/ResultPage.h"
#include "host/report/TextReport.h"

namespace tarn {

/// A run as an analyst reads it and pastes it into a paper: of each test its fields and cases, groups, statistics,
/// effects, comparisons, method and conclusion. From five tests on their summary stands in place of them.
std::string ReadableReport(const ResultPage& page, const TextStyle& style);

/// The parts of a split analysis: a summary of all tests, then the tests of each part where they are few.
std::string ReadableReport(const PartsPage& page, const TextStyle& style);

}  // namespace tarn
