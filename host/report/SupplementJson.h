#pragma once

#include <nlohmann/json.hpp>

#include "host/report/Supplement.h"

namespace tarn {

/// The object under "supplement" of a test (docs/result-json.md); null for an empty one.
nlohmann::ordered_json SupplementJson(const Supplement& supplement);

}  // namespace tarn
