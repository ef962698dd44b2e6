#pragma once

#include <nlohmann/json.hpp>

#include "host/report/Supplement.h"

namespace tarn {

/// The object under "supplement" of a test (docs/result-json.md); null for an empty one.
nlohmann::ordered_json SupplementJson(const Supplement& supplement);

/// A number as a number, whole ones without a point; a text where JSON has no number ("nan", "inf"); null for "".
nlohmann::ordered_json NumberJson(const std::string& text);

}  // namespace tarn
