#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/beyond/TestCases.h"
#include "host/report/ResultReading.h"
#include "host/report/TestExplanation.h"
#include "host/table/Table.h"
#include "machine/WorkShare.h"

namespace tarn {

/// What explanations are made from. `table` and `rule` are borrowed; the rest is what the user asked for.
struct ExplanationSource {
    const Table& table;
    const CaseRule& rule;
    WorkShare work;
    std::vector<std::string> success = {};  ///< categories that count as successes; empty for those of the data
    std::vector<std::pair<std::string, double>> expected = {};  ///< categories with their shares; none: all alike
    bool expectsFall = false;  ///< whether values are to fall with the order of the groups, in a test that has one
};

/// How the numbers of a test of a document came about that was made from the table: its steps, worked out from the
/// cases that the test took, weights and missing values included. None for a test that ended in an error, or whose
/// values aren't all finite.
std::optional<TestExplanation> ExplanationOf(const TestReading& reading, const ResultReading& result,
                                             const ExplanationSource& source);

}  // namespace tarn
