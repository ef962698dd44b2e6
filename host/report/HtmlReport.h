#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/report/ResultPage.h"
#include "host/report/TestPage.h"

namespace tarn {

// The page of a result in HTML: one file that needs no script and fetches nothing. It takes what it says from the pages
// of the tests, so that it says no more and nothing else than any other form of the result. A rounded number is a
// `data` element, whose value has all its digits.

/// The plot of a test as an element of SVG, and what a reader has to know of it.
struct HtmlPlot {
    std::string svg;
    std::vector<std::string> notes;
};

/// One run of the page: all of it, or a part of a split analysis.
struct HtmlRun {
    std::string name;     ///< of a part; "" for the whole
    std::string mistake;  ///< why a part wasn't tested
    std::vector<const TestPage*> tests;
    std::vector<std::optional<HtmlPlot>> plots;  ///< of the tests; empty, or as many
    std::vector<std::string> notes;
    PageTable fields;  ///< descriptives of the fields used
    std::vector<PageFact> record;
};

struct HtmlSource {
    std::string title;
    std::string subtitle;  ///< data, time, program
    PageTable summary;     ///< a row for each test of all runs, in their order
    std::string familyLine;
    std::vector<HtmlRun> runs;
    std::vector<std::string> notes;  ///< on all runs
    std::string plotsRemark;         ///< why not every test has a plot; "" where each has one that can have one
    std::vector<PageFact> methods;
    std::vector<std::string> references;
    std::vector<PageFact> record;
    std::string request;  ///< words to type to get the same again
    std::string json;     ///< the result for a machine
};

std::string HtmlReport(const HtmlSource& source);

/// A test as an `article` of its own, within an element of the class `tarn` on a page with `HtmlStyleSheet()`, and with
/// `HtmlExplanationStyle()` (host/report/HtmlExplanation.h) where it has an explanation. `id` begins all identifiers in
/// it. `level` is that of its heading, 2 to 5.
std::string HtmlArticle(const TestPage& test, const std::optional<HtmlPlot>& plot, const std::string& id,
                        int level = 2);

/// The style sheet of pages and articles, light and dark, for screens and for paper.
const std::string& HtmlStyleSheet();

}  // namespace tarn
