#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tarn {

/// A number as a number, whole ones without a point; a text where JSON has no number ("nan", "inf"); null for "".
nlohmann::ordered_json NumberJson(const std::string& text);

/// A text; null for "".
nlohmann::ordered_json TextOrNull(const std::string& text);

}  // namespace tarn
