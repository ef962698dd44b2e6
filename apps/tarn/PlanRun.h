#pragma once

#include <string>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/PlanSettings.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/RunOutcome.h"
#include "host/table/Table.h"

namespace tarn {

/// The library path: hands the execution settings of a plan and the whole table straight to the engine's factory, as
/// a program would that links the library. This is the one place of the command that uses the engine's own types.
RunOutcome RunPlan(PlanSettings& plan, Table& table, Interrupt& interrupt, ProgressBar& progress);

}  // namespace tarn
