#pragma once

#include <string>

#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"

namespace tarn {

/// The tests of a document as tidy comma-separated values (RFC 4180): a row for each test, and below it one for each
/// further set of statistics, interval, pair and subset. Numbers are those of the document, digit by digit. Throws an
/// `InputError` where naming the fields of a test in each of its rows takes more than 512 MiB.
std::string CsvReport(const ResultReading& result, const MessageCatalogue& texts);

/// A text as a cell, in quotes where it has to be.
std::string CsvCell(const std::string& cell);

}  // namespace tarn
