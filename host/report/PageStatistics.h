#pragma once

#include <vector>

#include "host/report/TestPage.h"

namespace tarn {

/// The lines of a test's statistics and significances: that on which the conclusion rests first, then those beside it,
/// then what else the test reports. Empty for a test that has none.
std::vector<PageLine> StatisticLines(const TestReading& reading);

}  // namespace tarn
