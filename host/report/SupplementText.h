#pragma once

#include <string>

#include "host/TextTable.h"
#include "host/report/ResultReading.h"

namespace tarn {

/// What stands in a readable block beside the numbers of the document. Each is empty where the test has nothing of it.

/// The groups or fields: cases, median with its interval, quartiles, mean rank, letters.
TextTable SummaryTable(const TestReading& reading, const ResultReading& result);
/// Effects with their intervals; `ofPairs`: those of pairs of several samples, else those of the whole test.
TextTable EffectTable(const TestReading& reading, bool ofPairs);
/// Adds the significances that the document doesn't have to the rows of a label, a number and what it is.
void AddPValueRows(const TestReading& reading, TextTable& table);

/// A number as a reader wants to see it: four digits, or all those before the point.
std::string FewDigits(const Number& number);

}  // namespace tarn
