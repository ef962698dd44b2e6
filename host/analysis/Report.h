#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/analysis/AnalysisEnvironment.h"
#include "host/engine/AnalysisRequest.h"
#include "host/report/PartsReport.h"
#include "host/report/ResultReading.h"
#include "host/report/plot/PlotPicture.h"
#include "host/table/Table.h"

namespace tarn {

// Pages and pictures of an analysis for every client: a result as a page of HTML, one of its tests as a block for a
// page of the client's own, and the plot of a test as SVG. Nothing here writes a file.

/// What they are made from. All is borrowed. Without a table, as for a stored document, nothing is drawn.
struct ReportSource {
    const ResultReading& result;     ///< with its figures, see `SupplyFigures`
    const Table* table = nullptr;    ///< that of the analysis
    const AnalysisOptions& options;  ///< of the analysis; as they stand by default for a stored document
    const AnalysisEnvironment& environment;
};

/// What a page says of a run besides its results, each "" where nobody knows.
struct ReportFacts {
    std::string data;                ///< the name of the table
    std::string dataHash;            ///< of the bytes of its file, with the name of the function: "SHA-256 e3b0..."
    std::string request;             ///< words to type to get the same again
    std::string time;                ///< when it was made, as a reader is shown it
    std::string program;             ///< "tarn 1.2.3"
    std::vector<std::string> notes;  ///< on the whole run, as sentences
};

/// The plot of the test at a place of the result, counted from 0; none for a test that ended in an error or whose
/// values aren't all finite, and without a table.
std::optional<std::string> SvgOfTest(const ReportSource& source, std::size_t place, PictureUse use = PictureUse::kFile);

/// The test at a place as a block of HTML with its plot: an `article`, to stand in an element of the class `tarn` on a
/// page that has `HtmlStyleSheet()` (host/report/HtmlReport.h). `id` is that of the article, and begins those of what
/// is in it.
std::string HtmlOfTest(const ReportSource& source, std::size_t place, const std::string& id = "test");

/// The whole result as a page that stands by itself: no script, and nothing that would be fetched.
std::string HtmlOfResult(const ReportSource& source, const ReportFacts& facts);

/// One of the parts of a split analysis, with its table; null where it wasn't tested.
struct ReportPart {
    const ResultPart& part;
    const Table* table = nullptr;
};
/// The same of a split analysis. `options` are those of all parts.
std::string HtmlOfParts(const std::vector<ReportPart>& parts, const AnalysisOptions& options,
                        const AnalysisEnvironment& environment, const ReportFacts& facts);

/// A name of a file for the plot of the test at a place: letters, digits, dashes and underscores, never longer than 100
/// characters, and another one for each test: "02-mann-whitney-len-by-supp.svg".
std::string PlotFileName(const ResultReading& result, std::size_t place);

}  // namespace tarn
