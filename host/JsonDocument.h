#pragma once

#include <nlohmann/json.hpp>

#include "host/ByteSource.h"

namespace tarn {

/// Reads one JSON value (RFC 8259) whose objects keep their keys in the order written.
/// Throws an `InputError` with line and column for what is malformed or a number too large, and with the key for one
/// that stands twice in an object.
nlohmann::ordered_json ReadJson(ByteSource& source);

}  // namespace tarn
