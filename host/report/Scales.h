#pragma once

#include <string>
#include <vector>

#include "host/report/ResultDocument.h"
#include "host/report/TestReading.h"

namespace tarn {

/// The orders of categories on which a test's numbers rest: of the groups that are expected to rise, of categories that
/// are scored, of ordinal fields that are ranked like numbers. None for any other test.
std::vector<Scale> ScalesOf(const TestResult& test, const ResultDocument& document);

/// "low < high", or "poor 1, good 2" where they count by scores; of many categories the first ones and the last.
std::string OrderText(const Scale& scale);

}  // namespace tarn
