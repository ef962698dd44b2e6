#include "apps/tarn/VerifyCommand.h"

#include <algorithm>

#include "apps/tarn/CommandEnvironment.h"
#include "apps/tarn/Interrupt.h"
#include "apps/tarn/ProgressBar.h"
#include "host/InputError.h"
#include "host/verify/FunctionCheck.h"
#include "host/verify/ReferencePack.h"
#include "host/verify/VerifyReport.h"

namespace tarn {

namespace {

constexpr const char* kPublished = "/published";
constexpr const char* kFunctions = "/functions";

/// One case by itself is shown with its source and its data.
std::string Shown(const std::vector<CheckedCase>& cases, const VerifyOptions& options) {
    if (options.format == VerifyFormat::kJson) return VerifyJson(cases, TARN_VERSION);
    if (options.format == VerifyFormat::kHtml) return VerifyHtml(ReportOf(cases), TARN_VERSION);
    if (cases.size() == 1 && !options.quiet) return CaseText(cases.front());
    return VerifyText(ReportOf(cases), options.quiet);
}

std::string Shown(const std::vector<CheckedRange>& ranges, const VerifyOptions& options) {
    if (options.format == VerifyFormat::kJson) return VerifyJson(ranges, TARN_VERSION);
    if (options.format == VerifyFormat::kHtml) return VerifyHtml(ReportOf(ranges), TARN_VERSION);
    return VerifyText(ReportOf(ranges), options.quiet);
}

template <typename Checked>
ExitStatus Tell(const std::vector<Checked>& checked, const VerifyOptions& options) {
    PrintResult(Shown(checked, options));
    const bool isRight = std::ranges::all_of(checked, &Checked::IsRight);
    return isRight ? ExitStatus::kDone : ExitStatus::kRunFailed;
}

std::vector<const ReferenceCase*> CasesOf(const ReferencePack& pack, const VerifyOptions& options) {
    std::vector<const ReferenceCase*> cases;
    if (options.names.empty()) {
        for (const ReferenceCase& each : pack.cases) cases.push_back(&each);
    }
    for (const std::string& name : options.names) {
        for (const ReferenceCase* const found : pack.Named(name)) {
            if (std::ranges::find(cases, found) == cases.end()) cases.push_back(found);
        }
    }
    return cases;
}

ExitStatus VerifyPublished(const std::string& folder, const VerifyOptions& options, const WordReader& readWords,
                           const AnalysisEnvironment& environment) {
    const ReferencePack pack = ReadReferencePack(folder + kPublished);
    const ArithmeticMode arithmetic = options.asDefined ? ArithmeticMode::kAsDefined : ArithmeticMode::kExtended;
    std::vector<CheckedCase> checked;
    for (const ReferenceCase* const each : CasesOf(pack, options)) {
        if (environment.isCancelled()) return TellMistake("cancelled; nothing is shown", ExitStatus::kRunFailed);
        checked.push_back(CheckCase(*each, arithmetic, readWords, environment));
    }
    return Tell(checked, options);
}

}  // namespace

ExitStatus Verify(const VerifyOptions& options, const WordReader& readWords) {
    Interrupt interrupt;
    ProgressBar hidden(false);
    const AnalysisEnvironment environment = EnvironmentOf(interrupt, hidden, TableOptions());
    const std::string folder = options.packFolder.empty() ? ReferenceFolder() : options.packFolder;
    if (!options.functions) return VerifyPublished(folder, options, readWords, environment);
    if (!options.names.empty()) {
        throw InputError("--functions: checks all distribution functions; expected no names beside it");
    }
    if (options.asDefined) {
        throw InputError("--functions: the functions are the same in both ways to compute; expected no --as-defined");
    }
    const std::vector<FunctionTable> tables = ReadFunctionTables(folder + kFunctions);
    return Tell(CheckFunctions(tables, readWords, environment), options);
}

}  // namespace tarn
