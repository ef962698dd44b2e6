#include "apps/tarn/AnalyzeCommand.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/Presentation.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/RequestRun.h"
#include "host/TestNames.h"
#include "host/TextTable.h"
#include "host/WholeFile.h"
#include "host/engine/InputNotes.h"
#include "host/engine/OrderedScores.h"
#include "host/engine/SettingsDocument.h"
#include "host/report/ResultOrder.h"

namespace tarn {

namespace {

const std::vector<std::string>& FieldsOf(TestFamily family, const AnalysisOptions& analysis) {
    return family == TestFamily::kOneSample ? analysis.oneSample
           : family == TestFamily::kRelated ? analysis.related
                                            : analysis.independent;
}

/// What was typed, in its order, in the words of the document.
AskedOrder OrderOf(const AnalyzeOptions& options) {
    AskedOrder order;
    for (const TestFamily family : options.familyOrder) {
        const char* const classification = family == TestFamily::kOneSample ? "One_Sample"
                                           : family == TestFamily::kRelated ? "Related_Samples"
                                                                            : "Independent_Samples";
        order.families.push_back({classification, FieldsOf(family, options.analysis)});
    }
    for (const std::string& name : options.analysis.tests) {
        for (const TestName& test : TestNames()) {
            if (test.name == name) order.tests.emplace_back(test.resultName);
        }
    }
    return order;
}

/// The fields of all families and the groups, each once.
std::vector<std::string> FieldsAsked(const AnalysisOptions& analysis) {
    std::vector<std::string> fields;
    for (const auto* list : {&analysis.oneSample, &analysis.related, &analysis.independent}) {
        fields.insert(fields.end(), list->begin(), list->end());
    }
    if (!analysis.group.empty()) fields.push_back(analysis.group);
    std::vector<std::string> once;
    for (const std::string& field : fields) {
        if (std::ranges::find(once, field) == once.end()) once.push_back(field);
    }
    return once;
}

/// The table as the tests are to see it: fields with an order of words as numbers.
Table LoadTableFor(const AnalyzeOptions& options) {
    const AnalysisOptions& analysis = options.analysis;
    const auto group = analysis.group.empty() ? std::nullopt : std::optional(analysis.group);
    Table table = LoadTableOf(options.table, !analysis.includeUserMissing, group);
    CheckOneOrder(table, analysis.related);
    LabelBooleans(table);
    for (const auto* fields : {&analysis.oneSample, &analysis.related, &analysis.independent}) {
        ScoreOrderedFields(table, *fields);
    }
    return table;
}

std::vector<std::string> NotesOn(const Table& table, const AnalyzeOptions& options) {
    const AnalysisOptions& analysis = options.analysis;
    std::vector<std::string> asIndependent = analysis.independent;
    asIndependent.insert(asIndependent.end(), analysis.oneSample.begin(), analysis.oneSample.end());
    std::vector<std::string> notes = UnusedCategoryNotes(table, options.table.orders);
    for (const std::string& field : FieldsAsked(analysis)) {
        const int index = table.FindColumn(field);
        if (index == Table::kNoColumn) continue;
        for (std::string& note : CategoryNotes(table.Columns()[static_cast<std::size_t>(index)])) {
            notes.push_back(std::move(note));
        }
    }
    const auto isNamed = [&](const char* test) {
        return std::ranges::find(analysis.tests, test) != analysis.tests.end();
    };
    for (const std::string& field : analysis.independent) {
        const std::string note = isNamed("moses") ? TiesNote(table, field, "moses") : "";
        if (!note.empty()) notes.push_back(note);
    }
    const auto isCategorical = [&](const std::string& field) {
        const int index = table.FindColumn(field);
        return index != Table::kNoColumn && table.Columns()[static_cast<std::size_t>(index)].IsCategorical();
    };
    if (analysis.probability && analysis.success.empty() && std::ranges::any_of(analysis.oneSample, isCategorical)) {
        notes.emplace_back(
            "--probability is taken for the share of the category of the first record, as the null hypothesis says; "
            "--success names another one");
    }
    if (analysis.descending && !analysis.compare.empty()) {
        notes.emplace_back(
            "--descending is for the pairs and subsets of jonckheere, whose significances are those of falling values; "
            "that of the whole test is two-tailed");
    } else if (analysis.descending) {
        notes.emplace_back(
            "--descending changes nothing without --compare: the significance of jonckheere is two-tailed");
    }
    for (const std::string& note :
         {WeightNote(table, WeightRule::kRounded), RepeatedCasesNote(table, analysis.caseId, asIndependent)}) {
        if (!note.empty()) notes.push_back(note);
    }
    return notes;
}

bool IsNoneDone(const ResultDocument& result) {
    return std::ranges::all_of(result.tests, [](const TestResult& test) { return test.HasError(); });
}

}  // namespace

ExitStatus Analyze(const AnalyzeOptions& options) {
    Interrupt interrupt;
    const Table table = LoadTableFor(options);
    const std::string request = MakeSettingsDocument(BuildRequest(options.analysis, table), "request");
    const RunOutcome outcome = [&] {
        ProgressBar progress(!options.output.quiet);
        return RunRequest(request, table, interrupt, progress);
    }();
    const ExitStatus status = TellRemarks(outcome);
    if (!outcome.succeeded) return status;

    const OutputOptions& output = options.output;
    if (!output.outPath.empty()) WriteWholeFile(output.outPath, outcome.document);
    ResultDocument result = ReadResult(outcome.document);
    PutInOrder(result, OrderOf(options));
    const std::vector<std::string> notes = NotesOn(table, options);
    const ReportFormat format = output.format.value_or(ReportFormat::kText);
    const bool isShown = format != ReportFormat::kText || !output.quiet;
    // Text and JSON have a place for notes.
    if (!isShown || format == ReportFormat::kCsv || format == ReportFormat::kXml) TellNotes(notes);
    if (isShown) PrintResult(format == ReportFormat::kXml ? outcome.document : Present(result, format, notes));
    if (!IsNoneDone(result)) return status;
    return TellMistake("no test could be done; each says why", ExitStatus::kRunFailed);
}

ExitStatus ListTests() {
    for (const TestFamily family : {TestFamily::kOneSample, TestFamily::kRelated, TestFamily::kIndependent}) {
        std::cout << FamilyTitle(family) << "\n";
        TextTable table({{""}, {""}});
        for (const TestName& test : TestNames()) {
            if (test.family != family) continue;
            table.AddRow({"  " + std::string(test.name), Texts().Test(test.resultName)->question});
        }
        std::cout << table.ToText();
    }
    return ExitStatus::kDone;
}

}  // namespace tarn
