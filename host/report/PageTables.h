#pragma once

#include <string>
#include <vector>

#include "host/report/TestPage.h"

namespace tarn {

/// The tables of a test; each is empty where the test has nothing of it.

/// A row for each group or field.
PageTable SampleTable(const TestReading& reading, const ResultReading& result);
/// `classes`: the two classes of the field, where the test has such.
PageTable CountsTable(const TestReading& reading, const std::vector<std::string>& classes);
/// A row for each pair, in the order of the reading; their effects are in it.
PageTable PairTable(const TestReading& reading);
/// A row for each sample, an "x" in the column of each subset that it is in, and the significances of the subsets.
PageTable SubsetTable(const TestReading& reading);

/// The effects of the whole test, or what an estimate found.
std::vector<PageEffect> EffectsOf(const TestReading& reading);

/// "95 %"
std::string PercentText(double share);

}  // namespace tarn
