#include "apps/tarn/Command.h"

#include <iostream>

#include "host/InputError.h"
#include "host/WholeFile.h"

namespace tarn {

void StoreDocument(const std::string& document, const std::string& outPath) {
    if (!outPath.empty()) {
        WriteWholeFile(outPath, document);
        return;
    }
    std::cout << document << std::flush;
    if (!std::cout) throw InputError("standard output: can't be written");
}

ExitStatus TellRemarks(const RunOutcome& outcome) {
    for (const std::string& remark : outcome.remarks) std::cerr << "tarn: " << remark << "\n";
    return outcome.succeeded ? ExitStatus::kDone : ExitStatus::kRunFailed;
}

}  // namespace tarn
