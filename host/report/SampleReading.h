#pragma once

#include "host/report/MessageCatalogue.h"
#include "host/report/ResultDocument.h"
#include "host/report/TestReading.h"

namespace tarn {

/// Reads the groups or fields that a test compares, with their box plots and histograms, and the histogram of the test
/// itself. `group` is the field of the groups, which may be null.
void ReadSamples(const TestResult& test, const ResultDocument& document, const ResultField* group,
                 const MessageCatalogue& texts, TestReading& reading);

/// The histogram that a table holds; empty for none.
DataHistogram ReadHistogram(const ResultTable& table);

}  // namespace tarn
