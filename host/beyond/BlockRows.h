#pragma once

#include <vector>

#include "host/beyond/TestCases.h"
#include "host/beyond/exact/ScoreRows.h"

namespace tarn {

/// The cases of several fields as a block design, a row for each case, and as many equal ones as its weight says.

/// Doubled ranks of the values within each row, tied as the tests tie them.
ScoreRows RankedRowsOf(const CompleteCases& cases);

/// 1 for a success and 0, as `successes` has them, a list for each field.
ScoreRows SuccessRowsOf(const std::vector<std::vector<double>>& successes, const CompleteCases& cases);

}  // namespace tarn
