#pragma once

#include <cstddef>

#include "host/plan/PlanSettings.h"
#include "host/table/Table.h"

namespace tarn {

/// Checks what a plan asks of a table, as `CheckSizeOfRequest` does it with a request.
void CheckSizeOfPlan(const PlanSettings& plan, const Table& table, std::size_t limit);

}  // namespace tarn
