#pragma once

#include <string>
#include <string_view>

#include "host/Json.h"
#include "host/engine/KnownKeys.h"

namespace tarn {

/// Why the value of a key can't be what was meant: a word that the key doesn't have, a number out of its range. Both
/// have the shape that the engine reads, so that it takes them for something else without a word. "" for any other
/// value. `form` is `kPlan` or `kRequest`, which differ in how they write the confidence level.
std::string WhyNotMeant(std::string_view key, const Json& value, KeyForm form);

}  // namespace tarn
