#pragma once

#include <functional>
#include <string>

#include "host/engine/EmbeddedHost.h"
#include "host/plan/PlanSettings.h"
#include "host/table/Table.h"

namespace tarn {

/// What a run of a plan needs besides its table.
struct PlanRun {
    std::string applicationName;
    std::string applicationVersion;
    unsigned threads = 0;  ///< that may work at a time; 0: as many as the machine has
    /// Called with 0 to 100, on the thread of the run. May be empty.
    std::function<void(double percent)> onProgress;
    /// Asked once per record, on the thread of the run; true stops it. May be empty.
    std::function<bool()> isCancelled;
};

/// The library path: hands the execution settings of a plan and the whole table straight to the engine's factory, as a
/// program that links the library would. This room is the one place of the host that uses the engine's own types.
EngineOutcome RunInFactory(PlanSettings& plan, const Table& table, const PlanRun& run);

}  // namespace tarn
