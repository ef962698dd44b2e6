#include "apps/tarn/RequestRun.h"

#include <utility>

#include "apps/tarn/Presentation.h"
#include "host/engine/EmbeddedHost.h"
#include "host/engine/EngineLibrary.h"

namespace tarn {

RunOutcome RunRequest(const std::string& settingsDocument, const Table& table, Interrupt& interrupt,
                      ProgressBar& progress) {
    const EngineLibrary engine;
    EngineRun run;
    run.settingsDocument = settingsDocument;
    run.applicationName = "tarn";
    run.applicationVersion = TARN_VERSION;
    run.onProgress = [&](double percent) { progress.Show(static_cast<int>(percent)); };
    run.isCancelled = [&] { return interrupt.IsAsked(); };

    EngineOutcome result = RunInEngine(engine, table, run);
    RunOutcome outcome{result.succeeded, std::move(result.document), {}};
    for (const EngineMessage& message : result.messages) {
        outcome.remarks.push_back(DescribeMessage(message.isError, message.code, message.parameters));
    }
    if (!outcome.succeeded && outcome.remarks.empty()) outcome.remarks.push_back("the run failed without a message");
    return outcome;
}

}  // namespace tarn
