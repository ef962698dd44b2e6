#pragma once

#include "host/report/MessageCatalogue.h"
#include "host/report/ResultDocument.h"
#include "host/report/TestReading.h"

namespace tarn {

/// Reads the statistics, significances, intervals and further figures of a test, and marks the significance on which
/// its decision rests.
void ReadStatistics(const TestResult& test, const MessageCatalogue& texts, TestReading& reading);

}  // namespace tarn
