#pragma once

#include "host/report/ResultDocument.h"
#include "host/report/TestReading.h"

namespace tarn {

/// Reads the comparisons of several samples, in pairs and as homogeneous subsets. `group` is the field of the groups,
/// null where the samples are fields.
void ReadComparisons(const TestResult& test, const ResultDocument& document, const ResultField* group,
                     TestReading& reading);

}  // namespace tarn
