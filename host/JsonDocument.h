#pragma once

#include <nlohmann/json.hpp>

#include "host/ByteSource.h"

namespace tarn {

/// Reads one JSON value (RFC 8259) whose objects keep their keys in the order written.
/// Throws an `InputError` with line and column for what is malformed, a number too large or arrays and objects that
/// nest deeper than 64, with the key for one that stands twice in an object, and for a text of more than 256 MiB.
nlohmann::ordered_json ReadJson(ByteSource& source);

}  // namespace tarn
