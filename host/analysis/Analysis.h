#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/Json.h"
#include "host/analysis/AnalysisEnvironment.h"
#include "host/beyond/SupplementOptions.h"
#include "host/beyond/TestCases.h"
#include "host/engine/AnalysisRequest.h"
#include "host/plan/PlanSettings.h"
#include "host/report/ResultReading.h"
#include "host/table/Table.h"

namespace tarn {

// The one door of every client, from a table and what is asked of it to a result. Nothing here prints, and several
// analyses may go on in one process at the same time, each with a table of its own.

/// What an analysis left.
struct AnalysisOutcome {
    /// Whether there is a document.
    bool succeeded = false;
    /// Whether it failed for want of memory.
    bool lacksMemory = false;
    std::string document;
    /// How the engine was asked to compute.
    ArithmeticMode arithmetic = ArithmeticMode::kAsDefined;
    /// The code of what made the run fail; 0 where it did not, or has none.
    long failureCode = 0;
    /// What the engine says of the run, a line each: why it failed, or warnings of one that did not.
    std::vector<std::string> remarks;
    /// What a reader of the results should know of the data, as sentences.
    std::vector<std::string> notes;
};

/// Turns a table into what the tests of an analysis are to see: words with a given order as numbers with labels. Throws
/// an `InputError` for orders that contradict one another.
void PrepareTable(Table& table, const AnalysisOptions& options);

/// Runs what a user asks for in the words of the command line, on a table that `PrepareTable` has prepared. Throws an
/// `InputError` for a wish that can't be met, a `std::runtime_error` if the engine can't be had.
AnalysisOutcome Analyze(const Table& table, const AnalysisOptions& options, const AnalysisEnvironment& environment);

/// Reads the document of such an analysis, with its tests in the order in which they were asked for. The document's
/// text is used up by it.
ResultReading ReadAnalysis(std::string document, const AnalysisOptions& options,
                           const AnalysisEnvironment& environment);

/// Adds to such a reading what analysts publish beside the document: effects with intervals, exact significances,
/// adjusted families. `table` is that of the analysis. Cut short where the analysis is cancelled.
void SupplyFigures(ResultReading& result, const Table& table, const AnalysisOptions& options,
                   const SupplementOptions& wanted, const AnalysisEnvironment& environment);

/// Adds to such a reading how the numbers of each test came about. `table` is that of the analysis. Tests that it has
/// not come to when the analysis is cancelled stay without.
void ExplainTests(ResultReading& result, const Table& table, const AnalysisOptions& options,
                  const AnalysisEnvironment& environment);

/// The same of one test by its place; none for a test that ended in an error, or whose values aren't all finite.
std::optional<TestExplanation> ExplanationOfTest(const ResultReading& result, std::size_t place, const Table& table,
                                                 const AnalysisOptions& options,
                                                 const AnalysisEnvironment& environment);

/// Which records the tests of such an analysis saw, besides those that their own fields left them.
CaseRule CaseRuleOf(const Table& table, const AnalysisOptions& options);

/// Whether all tests of a document ended in an error of their own.
bool IsNoneDone(const ResultReading& result);

/// Runs a request in the user's terms, the way of a host. `source` stands for the request in the `InputError` that is
/// thrown for a value of a shape that no setting has.
AnalysisOutcome RunRequest(const Json& request, const std::string& source, const Table& table,
                           const AnalysisEnvironment& environment);

/// Runs a plan, straight through the engine's C++ factory.
AnalysisOutcome RunPlan(PlanSettings& plan, const Table& table, const AnalysisEnvironment& environment);

}  // namespace tarn
