#pragma once

#include <string>
#include <vector>

#include "apps/tarn/AnalyzeCommand.h"
#include "host/analysis/Report.h"

namespace tarn {

/// Whether the page of an analysis or a plot of it is asked for, in a file or on standard output.
bool WantsReport(const OutputOptions& output);

/// Whether what is shown, in that format, has a place for how it was made. What goes into a paper has none.
bool ShowsRecord(const OutputOptions& output, ReportFormat format);

/// What the page of an analysis says of it besides its results. Reads the file of the table for its hash.
ReportFacts FactsOf(const AnalyzeOptions& options, std::vector<std::string> notes);

/// Writes the page and the plots of an analysis that are asked for into their files, each of them whole or not at all.
/// Throws an `InputError` for a file that can't be written, and, before anything is written, where one plot is asked
/// for and there is not one test to draw.
void WriteReports(const OutputOptions& output, const ReportSource& source, const ReportFacts& facts);

/// Throws an `InputError` where plots of parts are asked for, which have no files of their own.
void CheckReportOfParts(const OutputOptions& output);

}  // namespace tarn
