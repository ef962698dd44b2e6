#include "python/src/Calls.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/MachineMemory.h"
#include "host/TextList.h"
#include "host/analysis/Analysis.h"
#include "host/analysis/Record.h"
#include "host/engine/KnownKeys.h"
#include "host/engine/PassedOver.h"
#include "host/engine/SettingsDocument.h"
#include "python/src/AttendedWork.h"
#include "python/src/KeptTable.h"
#include "python/src/TableInput.h"

namespace tarn {

namespace nb = nanobind;

namespace {

const MessageCatalogue& Texts() {
    return MessageCatalogue::English();
}

/// Libraries may want their data to be read on the thread that they lent it on. A table that outlives the call borrows
/// nothing: whose the data is may write to it then. It takes half of the machine at most where nothing else is told.
Table ReadAttended(InputData sources, const WantedColumns& wanted, LoadOptions load, bool outlivesCall) {
    static const std::size_t kHalf = HalfOfMachine();
    if (load.memory == 0) load.memory = kHalf;
    const nb::gil_scoped_release unlocked;
    Table table = ReadTable(sources, wanted, load, !outlivesCall, &AttendedWork::HearSignals);
    sources.clear();
    return table;
}

/// Whether work is done before another thread would have begun, and before anybody would interrupt it.
bool IsQuick(const Table& table, const Request& request, const CallEnvironment& environment) {
    constexpr std::size_t kFewCells = 2000;
    const SupplementOptions& supplement = request.Supplement();
    return table.RowCount() * table.ColumnCount() <= kFewCells && supplement.draws == 0 && !supplement.exact &&
           environment.onProgress.is_none();
}

AnalysisEnvironment EnvironmentOf(AttendedWork& attended, const std::string& libraryFolder, unsigned threads,
                                  std::size_t memory) {
    AnalysisEnvironment environment;
    environment.applicationVersion = TARN_VERSION;
    environment.libraryFolders = {libraryFolder};
    environment.threads = threads;
    environment.memory = memory;
    environment.onProgress = [&attended](double percent) { attended.Report(percent); };
    environment.isCancelled = [&attended] { return attended.IsCancelled(); };
    return environment;
}

void AddTo(std::vector<std::string>& sentences, const std::vector<std::string>& more) {
    sentences.insert(sentences.end(), more.begin(), more.end());
}

/// What adds to a reading when it is asked for. The thread that asks hears signals meanwhile.
Report::Supply LaterSupply(std::shared_ptr<const KeptTable> kept, const SupplementOptions& supplement,
                           AnalysisEnvironment environment, bool isQuick) {
    environment.onProgress = nullptr;  // of the call, which is over by then
    environment.isCancelled = nullptr;
    return [kept = std::move(kept), supplement, environment = std::move(environment), isQuick](ResultReading& reading) {
        const auto supply = [&](const AnalysisEnvironment& ofRun) {
            SupplyFigures(reading, kept->Part().table, kept->Part().options, supplement, ofRun);
        };
        if (isQuick) return supply(environment);
        const nb::gil_scoped_acquire locked;
        AttendedWork attended{nb::object(nb::none())};
        AnalysisEnvironment ofRun = environment;
        ofRun.isCancelled = [&attended] { return attended.IsCancelled(); };
        attended.Run([&] { supply(ofRun); });
    };
}

/// How the parts of a request are analysed.
struct Manner {
    const Json& request;
    const SupplementOptions& supplement;
    const AnalysisEnvironment& environment;
    bool isLater = false;
    bool isQuick = false;
};

Report AnalyzeWhole(AnalysisPart part, std::vector<std::string> notes, const Manner& manner) {
    PrepareTable(part.table, part.options);
    AnalysisOutcome outcome = Analyze(part.table, part.options, manner.environment);
    if (!outcome.succeeded) return {std::move(outcome.remarks), outcome.failureCode};
    AddTo(notes, part.notes);
    AddTo(notes, outcome.notes);
    ResultReading reading = ReadAnalysis(outcome.document, part.options, manner.environment);
    const auto kept = std::make_shared<const KeptTable>(std::move(part), manner.environment.threads);
    Report::Supply supply = LaterSupply(kept, manner.supplement, manner.environment, manner.isQuick);
    if (!manner.isLater) {
        SupplyFigures(reading, kept->Part().table, kept->Part().options, manner.supplement, manner.environment);
        supply = nullptr;
    }
    return {std::move(reading), std::move(outcome.document),
            std::move(notes),   std::move(outcome.remarks),
            std::move(supply),  {kept},
            manner.request};
}

/// Analyses one part and returns its document. What can't be done with it is told at its place.
std::string AnalyzePart(AnalysisPart& part, ResultPart& result, const SupplementOptions& supplement,
                        const AnalysisEnvironment& environment) {
    result.field = part.field;
    result.category = part.category;
    result.notes = part.notes;
    try {
        PrepareTable(part.table, part.options);
        AnalysisOutcome outcome = Analyze(part.table, part.options, environment);
        AddTo(result.notes, outcome.notes);
        if (outcome.lacksMemory) throw std::bad_alloc();  // it holds for the run, not for this part
        if (!outcome.succeeded) {
            result.mistake = JoinList(outcome.remarks, "; ");
            return "";
        }
        AddTo(result.notes, outcome.remarks);
        result.result = ReadAnalysis(outcome.document, part.options, environment);
        SupplyFigures(*result.result, part.table, part.options, supplement, environment);
        return std::move(outcome.document);
    } catch (const InputError& mistake) {
        result.mistake = mistake.what();
    }
    return "";
}

Report AnalyzeParts(std::vector<AnalysisPart> parts, std::vector<std::string> notes, const Manner& manner) {
    const AnalysisEnvironment& environment = manner.environment;
    std::vector<ResultPart> results;
    std::vector<std::string> documents;
    Report::Tables tables;
    for (AnalysisPart& part : parts) {
        AnalysisEnvironment ofPart = environment;
        ofPart.onProgress = [&environment, done = results.size(), all = parts.size()](double percent) {
            environment.onProgress((100.0 * static_cast<double>(done) + percent) / static_cast<double>(all));
        };
        documents.push_back(AnalyzePart(part, results.emplace_back(), manner.supplement, ofPart));
        tables.push_back(std::make_shared<const KeptTable>(std::move(part), environment.threads));
        if (environment.isCancelled && environment.isCancelled())
            return {std::vector<std::string>(), 0};  // which nobody will see
    }
    // What holds for no part is a mistake of the request.
    if (std::ranges::none_of(results, [](const ResultPart& part) { return part.result.has_value(); })) {
        throw InputError(results.front().Name() + ": " + results.front().mistake);
    }
    return {std::move(results), std::move(documents), std::move(notes), std::move(tables), manner.request};
}

// ---- Plans and requests ----

/// Fails for the first thing that the engine would pass over where that is a mistake.
std::vector<std::string> CheckPassedOver(std::vector<std::string> lines, bool isStrict) {
    if (isStrict && !lines.empty()) throw InputError(lines.front());
    return lines;
}

std::vector<std::pair<const char*, bool>> FlagsOf(const RunWishes& wishes) {
    return {{kBrief, wishes.isBrief}, {kExtendedArithmetic, wishes.isExtended}};
}

AnalysisOutcome RunPlanText(const std::string& name, const std::string& json, const RunWishes& wishes,
                            const Table& table, const AnalysisEnvironment& environment) {
    ByteSource source = ByteSource::FromMemory(name, json);
    PlanSettings plan = ReadPlan(source);
    const std::vector<std::string> passedOver = CheckPassedOver(plan.passedOver, wishes.isStrict);
    for (const auto& [key, isWanted] : FlagsOf(wishes)) {
        if (!isWanted) continue;
        plan.settings.RemoveSetting(key, true);
        plan.settings.AddSetting(key, true);
    }
    AnalysisOutcome outcome = RunPlan(plan, table, environment);
    AddTo(outcome.remarks, passedOver);
    return outcome;
}

AnalysisOutcome RunRequestText(const std::string& name, const std::string& json, const RunWishes& wishes,
                               const Table& table, const AnalysisEnvironment& environment) {
    ByteSource source = ByteSource::FromMemory(name, json);
    Json request = ReadJson(source);
    if (!request.is_object()) throw InputError(name + ": expected a JSON object with the keys of a request");
    const std::vector<std::string> passedOver = CheckPassedOver(PassedOverInRequest(request, name), wishes.isStrict);
    for (const auto& [key, isWanted] : FlagsOf(wishes)) {
        if (isWanted) PutInFront(request, key, true);
    }
    AnalysisOutcome outcome = RunRequest(request, name, table, environment);
    AddTo(outcome.remarks, passedOver);
    return outcome;
}

/// The table of a run isn't kept, so that its record is made at once.
void AddRecordOfRun(ResultReading& reading, const Table& table, bool isPlan, const std::string& json,
                    const RunWishes& wishes) {
    const WeightRule weights = isPlan ? WeightRule::kCut : WeightRule::kRounded;
    const CaseRule rule = ListwiseRuleOf(reading, table, weights);
    const RecordSelection selection{table.RowCount(), {}, {}, {}};
    ByteSource source = ByteSource::FromMemory("", json);
    const Json request{{"command", "tarn.run"}, {isPlan ? "plan" : "settings", ReadJson(source)}};
    AddRecord(reading, {table, rule, weights, selection, request}, WorkShare(wishes.threads));
}

}  // namespace

Report AnalyzeData(CallData& data, Request& request, const CallEnvironment& environment, bool isLater) {
    AttendedWork attended(environment.onProgress);
    Table table = ReadAttended(data.Take(), request.Columns(), request.Load(), isLater);
    AnalysisEnvironment ofRun =
        EnvironmentOf(attended, environment.libraryFolder, request.Load().threads, request.Load().memory);
    const bool isQuick = IsQuick(table, request, environment);
    Report report({}, 0);
    const auto analyze = [&] {
        std::vector<std::string> notes;
        std::vector<AnalysisPart> parts = request.Words().PartsOf(std::move(table), request.Levels(), notes);
        const Manner manner{request.Recorded(), request.Supplement(), ofRun, isLater, isQuick};
        report = request.IsSplit() ? AnalyzeParts(std::move(parts), std::move(notes), manner)
                                   : AnalyzeWhole(std::move(parts.front()), std::move(notes), manner);
    };
    if (isQuick) {
        ofRun.threads = 1;
        ofRun.isCancelled = nullptr;  // or a thread would watch for it
        const nb::gil_scoped_release unlocked;
        analyze();
    } else {
        attended.Run(analyze);
    }
    return report;
}

Report RunOnData(CallData& data, bool isPlan, const std::string& name, const std::string& json, const RunWishes& wishes,
                 const CallEnvironment& environment) {
    AttendedWork attended(environment.onProgress);
    LoadOptions load;
    load.threads = wishes.threads;
    load.memory = wishes.memory;
    if (!wishes.weights.empty()) load.weightField = wishes.weights;
    const Table table = ReadAttended(data.Take(), WantedColumns(), load, false);
    Report report({}, 0);
    attended.Run([&] {
        const AnalysisEnvironment ofRun =
            EnvironmentOf(attended, environment.libraryFolder, wishes.threads, wishes.memory);
        AnalysisOutcome outcome = (isPlan ? RunPlanText : RunRequestText)(name, json, wishes, table, ofRun);
        if (!outcome.succeeded) {
            report = Report(std::move(outcome.remarks), outcome.failureCode);
            return;
        }
        ResultDocument document = ReadResult(outcome.document);
        document.arithmetic = outcome.arithmetic;
        ResultReading reading = ReadAll(std::move(document), Texts());
        AddRecordOfRun(reading, table, isPlan, json, wishes);
        report = Report(std::move(reading), std::move(outcome.document), std::move(outcome.notes),
                        std::move(outcome.remarks), nullptr, {});
    });
    return report;
}

DataLook LookAtData(CallData& data, const std::string& name, std::size_t memory) {
    InputData sources = data.Take();
    DataLook found;
    for (const auto& source : sources) {
        for (const InputColumn& column : source->Columns()) {
            if (!column.format.refused.empty()) found.others.emplace_back(column.name, column.format.refused);
        }
    }
    LoadOptions load;
    load.memory = memory;
    Table table = ReadAttended(std::move(sources), WantedColumns(), load, false);
    const nb::gil_scoped_release unlocked;
    PrepareTable(table, {});
    found.look = LookAt(table, name);
    return found;
}

Report LoadDocument(const std::string& path) {
    ByteSource source(path);
    std::string document = source.ReadAll();
    ResultReading reading = ReadAll(ReadResult(document, source.Name()), Texts());
    return {std::move(reading), std::move(document), {}, {}, nullptr, {}};
}

}  // namespace tarn
