#include "apps/tarn/AnalyzeCommand.h"

#include <iostream>
#include <optional>
#include <string>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/Presentation.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/RequestRun.h"
#include "host/TestNames.h"
#include "host/TextTable.h"
#include "host/WholeFile.h"
#include "host/engine/SettingsDocument.h"

namespace tarn {

ExitStatus Analyze(const AnalyzeOptions& options) {
    Interrupt interrupt;
    const AnalysisOptions& analysis = options.analysis;
    const auto group = analysis.group.empty() ? std::nullopt : std::optional(analysis.group);
    const Table table = LoadTableOf(options.table, !analysis.includeUserMissing, group);
    const std::string request = MakeSettingsDocument(BuildRequest(analysis, table), "request");
    const RunOutcome outcome = [&] {
        ProgressBar progress(!options.output.quiet);
        return RunRequest(request, table, interrupt, progress);
    }();
    if (outcome.succeeded && !options.output.outPath.empty()) {
        WriteWholeFile(options.output.outPath, outcome.document);
    }
    const ExitStatus status = TellRemarks(outcome);
    const ReportFormat format = options.output.format.value_or(ReportFormat::kText);
    const bool isTable = format == ReportFormat::kText;
    if (outcome.succeeded && !(isTable && options.output.quiet)) PrintResult(Present(outcome.document, format));
    return status;
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
