#pragma once

#include <string>

#include "host/ByteSource.h"
#include "host/Json.h"

namespace tarn {

/// Reads one JSON value (RFC 8259) whose objects keep their keys in the order written.
/// Throws an `InputError` with line and column for what is malformed, a number too large or arrays and objects that
/// nest deeper than 64, with the key for one that stands twice in an object, and for a text of more than 256 MiB.
Json ReadJson(ByteSource& source);

/// The same of a text, which messages call by that name.
Json ParseJson(const std::string& text, const std::string& name);

}  // namespace tarn
