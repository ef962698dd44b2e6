#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tarn {

/// A request as the settings document that crosses the component boundary: the keys of a JSON object become settings
/// in the order written. Throws an `InputError` that names `source`, the key and what it should hold.
std::string MakeSettingsDocument(const nlohmann::ordered_json& request, const std::string& source);

}  // namespace tarn
