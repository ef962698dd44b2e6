#include "host/analysis/Analysis.h"

#include <algorithm>
#include <span>
#include <utility>

#include "host/analysis/AnalysisNotes.h"
#include "host/beyond/Supplements.h"
#include "host/beyond/explain/Explanations.h"
#include "host/engine/EmbeddedHost.h"
#include "host/engine/EngineLibrary.h"
#include "host/engine/InputNotes.h"
#include "host/engine/KnownKeys.h"
#include "host/engine/OrderedScores.h"
#include "host/engine/RunSize.h"
#include "host/engine/SettingsDocument.h"
#include "host/plan/PlanRun.h"
#include "host/plan/PlanSize.h"
#include "host/report/PairsAgainst.h"
#include "host/report/ResultOrder.h"
#include "vocabulary/StatusCodes.h"

namespace tarn {

namespace {

constexpr const char* kAnalysis = "request";

/// A message of the engine about a run as one line: whether the run failed, the code, and what it means.
std::string DescribeMessage(const EngineMessage& message, const MessageCatalogue& texts) {
    std::string line = message.isError ? "the run failed with code " : "warning ";
    line += std::to_string(message.code) + ": " + texts.Sentence(message.code, message.parameters);
    const std::string* const text = texts.Status(message.code);
    const bool tellsThem = text != nullptr && text->find('{') != std::string::npos;
    return tellsThem || message.parameters.empty() ? line : line + " (" + JoinList(message.parameters, "; ") + ")";
}

bool TellsOfMemory(const EngineMessage& message) {
    return message.code == StatusCode::kOutOfMemory || message.code == StatusCode::kAllocationFailed;
}

ArithmeticMode ModeOf(bool isExtended) {
    return isExtended ? ArithmeticMode::kExtended : ArithmeticMode::kAsDefined;
}

AnalysisOutcome OutcomeOf(EngineOutcome result, const Table& table, const MessageCatalogue& texts) {
    AnalysisOutcome outcome;
    outcome.notes = table.Notes();
    outcome.succeeded = result.succeeded;
    outcome.document = std::move(result.document);
    outcome.lacksMemory = !outcome.succeeded && std::ranges::any_of(result.messages, TellsOfMemory);
    for (const EngineMessage& message : result.messages) {
        outcome.remarks.push_back(DescribeMessage(message, texts));
        if (message.isError && outcome.failureCode == 0) outcome.failureCode = message.code;
    }
    if (!outcome.succeeded && outcome.remarks.empty()) outcome.remarks.emplace_back("the run failed without a message");
    return outcome;
}

}  // namespace

void PrepareTable(Table& table, const AnalysisOptions& options) {
    CheckOneOrder(table, options.related);
    LabelBooleans(table);
    for (const auto* fields : {&options.oneSample, &options.related, &options.independent}) {
        ScoreOrderedFields(table, *fields);
    }
}

AnalysisOutcome Analyze(const Table& table, const AnalysisOptions& options, const AnalysisEnvironment& environment) {
    AnalysisOutcome outcome = RunRequest(BuildRequest(options, table), kAnalysis, table, environment);
    std::vector<std::string> notes = NotesOn(table, options);
    outcome.notes.insert(outcome.notes.begin() + std::ssize(table.Notes()), notes.begin(), notes.end());
    return outcome;
}

ResultReading ReadAnalysis(std::string document, const AnalysisOptions& options,
                           const AnalysisEnvironment& environment) {
    ResultDocument result = ReadResult(std::move(document));
    result.arithmetic = options.asDefined ? ArithmeticMode::kAsDefined : ArithmeticMode::kExtended;
    PutInOrder(result, OrderOf(options));
    ResultReading reading = ReadAll(std::move(result), *environment.texts);
    if (!options.against.empty()) KeepPairsWith(reading, options.against, *environment.texts);
    return reading;
}

void SupplyFigures(ResultReading& result, const Table& table, const AnalysisOptions& options,
                   const SupplementOptions& wanted, const AnalysisEnvironment& environment) {
    SupplementOptions all = wanted;
    all.shift = options.testValue;
    SupplementSource source{table, all, *environment.texts, WorkShare(environment.threads, environment.isCancelled)};
    source.rule = CaseRuleOf(table, options);
    source.probability = options.probability.value_or(source.probability);
    source.success = options.success;
    AddSupplements(result, source);
}

std::optional<TestExplanation> ExplanationOfTest(const ResultReading& result, std::size_t place, const Table& table,
                                                 const AnalysisOptions& options,
                                                 const AnalysisEnvironment& environment) {
    const CaseRule rule = CaseRuleOf(table, options);
    ExplanationSource source{table, rule, WorkShare(environment.threads, environment.isCancelled)};
    source.success = options.success;
    source.expectsFall = options.descending;
    for (const ExpectedCategory& expected : options.expected) {
        source.expected.emplace_back(expected.category, expected.share);
    }
    return ExplanationOf(result.tests[place], result, source);
}

void ExplainTests(ResultReading& result, const Table& table, const AnalysisOptions& options,
                  const AnalysisEnvironment& environment) {
    const auto isCancelled = [&] { return environment.isCancelled && environment.isCancelled(); };
    for (std::size_t i = 0; i < result.tests.size() && !isCancelled(); ++i) {
        result.tests[i].explanation = ExplanationOfTest(result, i, table, options, environment);
    }
}

CaseRule CaseRuleOf(const Table& table, const AnalysisOptions& options) {
    CaseRule rule;
    if (!options.listwise) return rule;
    for (const auto* fields : {&options.oneSample, &options.related, &options.independent}) {
        for (const std::string& field : *fields) rule.listwise.push_back(table.FindColumn(field));
    }
    if (!options.group.empty()) rule.listwise.push_back(table.FindColumn(options.group));
    rule.isLeftOut.assign(table.RowCount(), 0);
    for (const int index : rule.listwise) {
        const auto column = static_cast<std::size_t>(index);
        const double missing = table.Columns()[column].IsCategorical() ? kMissingCategory : kMissingNumber;
        const std::span<const double> cells = table.Cells(column);
        for (std::size_t row = 0; row < cells.size(); ++row) rule.isLeftOut[row] |= cells[row] == missing ? 1 : 0;
    }
    return rule;
}

bool IsNoneDone(const ResultReading& result) {
    return std::ranges::all_of(result.tests, [](const TestReading& test) { return test.HasError(); });
}

AnalysisOutcome RunRequest(const Json& request, const std::string& source, const Table& table,
                           const AnalysisEnvironment& environment) {
    CheckSizeOfRequest(request, source, table, environment.memory);
    Json budgeted = request;
    // The thread budget crosses the boundary within the request. Without one the engine takes what the machine has.
    if (environment.threads > 0 && !request.contains(kThreads)) PutInFront(budgeted, kThreads, environment.threads);
    EngineRun run;
    run.settingsDocument = MakeSettingsDocument(budgeted, source);
    run.applicationName = environment.applicationName;
    run.applicationVersion = environment.applicationVersion;
    run.onProgress = environment.onProgress;
    run.isCancelled = environment.isCancelled;
    const EngineLibrary engine(environment.libraryFolders);
    AnalysisOutcome outcome = OutcomeOf(RunInEngine(engine, table, run), table, *environment.texts);
    outcome.arithmetic = ModeOf(IsTrue(request, kExtendedArithmetic));
    if (const std::string note = WeightNote(table, WeightRule::kRounded); !note.empty()) outcome.notes.push_back(note);
    return outcome;
}

AnalysisOutcome RunPlan(PlanSettings& plan, const Table& table, const AnalysisEnvironment& environment) {
    CheckSizeOfPlan(plan, table, environment.memory);
    PlanRun run;
    run.applicationName = environment.applicationName;
    run.applicationVersion = environment.applicationVersion;
    run.threads = environment.threads;
    run.onProgress = environment.onProgress;
    run.isCancelled = environment.isCancelled;
    AnalysisOutcome outcome = OutcomeOf(RunInFactory(plan, table, run), table, *environment.texts);
    outcome.arithmetic = ModeOf(IsTrue(plan.settings, kExtendedArithmetic));
    if (const std::string note = WeightNote(table, WeightRule::kCut); !note.empty()) outcome.notes.push_back(note);
    return outcome;
}

}  // namespace tarn
