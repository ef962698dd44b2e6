#pragma once

#include <string>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/RunOutcome.h"
#include "host/table/Table.h"

namespace tarn {

/// The host path: hands a settings document to a component of the engine through its C functions, which tell how the
/// data are to be prepared.
RunOutcome RunRequest(const std::string& settingsDocument, const Table& table, Interrupt& interrupt,
                      ProgressBar& progress);

}  // namespace tarn
