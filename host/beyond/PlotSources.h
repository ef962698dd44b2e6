#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/beyond/TestCases.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"
#include "host/report/plot/PlotData.h"
#include "host/table/Table.h"
#include "machine/WorkShare.h"

namespace tarn {

/// What the plots of a run are made from. `table`, `texts` and `rule` are borrowed.
struct PlotSource {
    const Table& table;
    const MessageCatalogue& texts;
    const CaseRule& rule;
    WorkShare work;
    std::vector<std::string> success = {};  ///< categories that count as successes; empty for those of the data
};

/// The plot of a test of a document that was made from the table and has its supplement, of the cases that the test
/// took:
///
/// - groups and related fields side by side, each case where there are few; those of a pair also as their differences;
/// - a sample against a distribution, and two samples against one another, as distribution functions;
/// - shares and frequencies as bars beside what is expected;
/// - two classes in their order, for tests of runs;
/// - changes between categories as a flow;
/// - estimates, and pairs that are compared, as intervals.
///
/// None for a test that ended in an error, or whose values aren't all finite.
std::optional<PlotData> PlotOf(const TestReading& reading, const ResultReading& result, const PlotSource& source);

}  // namespace tarn
