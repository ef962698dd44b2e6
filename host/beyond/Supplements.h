#pragma once

#include <string>
#include <vector>

#include "host/beyond/SupplementOptions.h"
#include "host/beyond/TestCases.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"
#include "machine/WorkShare.h"

namespace tarn {

/// What the figures of a run are made from. `table` and `texts` are borrowed.
struct SupplementSource {
    const Table& table;
    const SupplementOptions& wanted;
    const MessageCatalogue& texts;
    WorkShare work;
    CaseRule rule = {};
    double probability = 0.5;               ///< of the first class, as the binomial test expects it
    std::vector<std::string> success = {};  ///< categories of the first class; empty for that of the data
};

/// Adds its supplement to each test of a reading that was made from the table. Each test is worked out by itself, and
/// none depends on the number of threads. Where the work is stopped, the tests that had not begun stay without.
void AddSupplements(ResultReading& result, const SupplementSource& source);

/// Adjusts the significances of all tests together, by the method that the user names: of each the one on which its
/// conclusion rests.
void AdjustTests(ResultReading& result, Adjustment adjustment);

}  // namespace tarn
