#include "apps/tarn/Command.h"

#include <unistd.h>

#include <iostream>

#include "host/InputError.h"

namespace tarn {

void CheckOutput(const OutputOptions& output) {
    if (output.format == ReportFormat::kWorkbook && isatty(STDOUT_FILENO) != 0) {
        throw InputError(
            "--format xlsx: a workbook is nothing for a terminal; expected a file, --format xlsx > FILE.xlsx");
    }
}

void PrintResult(const std::string& text) {
    std::cout << text << std::flush;
    if (!std::cout) throw InputError("standard output: can't be written");
}

ExitStatus TellMistake(const std::string& mistake, ExitStatus status) {
    // What was typed may stand in it, line breaks and all: an InputError keeps its text to one line.
    std::cerr << "tarn: " << InputError(mistake).what() << "\n";
    return status;
}

void TellNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) std::cerr << "tarn: note: " << InputError(note).what() << "\n";
}

ExitStatus TellRemarks(const AnalysisOutcome& outcome) {
    for (const std::string& remark : outcome.remarks) std::cerr << "tarn: " << remark << "\n";
    return outcome.succeeded ? ExitStatus::kDone : ExitStatus::kRunFailed;
}

}  // namespace tarn
