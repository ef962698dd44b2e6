#pragma once

#include <string>

#include "host/Json.h"

namespace tarn {

/// A request as the settings document that crosses the component boundary: the keys of a JSON object become settings
/// in the order written. Throws an `InputError` that names `source`, the key and what it should hold.
std::string MakeSettingsDocument(const Json& request, const std::string& source);

/// Puts a key of the run in front of a request: the tests of a family end with the request, or with a key that is none
/// of theirs.
void PutInFront(Json& request, const char* key, const Json& value);

}  // namespace tarn
