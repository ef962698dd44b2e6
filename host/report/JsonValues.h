#pragma once

#include <string>

#include "host/Json.h"

namespace tarn {

/// A number as a number, whole ones without a point; a text where JSON has no number ("nan", "inf"); null for "".
Json NumberJson(const std::string& text);

/// A text; null for "".
Json TextOrNull(const std::string& text);

}  // namespace tarn
