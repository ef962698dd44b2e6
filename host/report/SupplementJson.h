#pragma once

#include "host/Json.h"
#include "host/report/Supplement.h"

namespace tarn {

/// The object under "supplement" of a test (docs/result-json.md); null for an empty one.
Json SupplementJson(const Supplement& supplement);

}  // namespace tarn
