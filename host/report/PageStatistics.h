#pragma once

#include <string>
#include <vector>

#include "host/report/TestPage.h"

namespace tarn {

/// The lines of a test's statistics and significances: that on which the conclusion rests first, then those beside it,
/// then what else the test reports. Empty for a test that has none.
/// `classes`: the two classes of the field, where the test has such.
std::vector<PageLine> StatisticLines(const TestReading& reading, const std::vector<std::string>& classes);

}  // namespace tarn
