#pragma once

#include <string>

#include "host/report/Markup.h"
#include "host/report/ResultPage.h"

namespace tarn {

/// A run in a language of documents: the summary of many tests, and of each test its tables, statistics, effects,
/// method and conclusion.
std::string MarkupReport(const ResultPage& page, const Markup& markup);
/// The parts of a split analysis, below a summary of all tests.
std::string MarkupReport(const PartsPage& page, const Markup& markup);

/// The effects of a test as a table: what it is, value, interval and method. Empty where there is none.
PageTable EffectsTable(const TestPage& page);

}  // namespace tarn
