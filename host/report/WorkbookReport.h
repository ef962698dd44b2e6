#pragma once

#include <string>

#include "host/report/ResultPage.h"

namespace tarn {

/// A run as the bytes of a workbook of spreadsheets (Office Open XML), in rows that a program can read, too: sheets of
/// the summary, the groups and fields, the counts, the statistics, the effects, the comparisons, and the methods,
/// conclusions and notes. Numbers have all their digits, texts never become formulas. Throws an `InputError` where the
/// workbook can't be made: no room for its temporary file, or more than a sheet can hold.
std::string WorkbookReport(const ResultPage& page);
/// The parts of a split analysis in the same sheets, each row with its part in front.
std::string WorkbookReport(const PartsPage& page);

}  // namespace tarn
