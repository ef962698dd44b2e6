#pragma once

#include <map>
#include <set>
#include <string>

#include "host/engine/KnownKeys.h"
#include "platform/common/QKSettings.h"

/// Which keys the engine reads. This program is linked so that each read of a setting comes by here.
namespace read_keys {

/// Settings with this text setting are watched, under the text.
inline constexpr const char* kWatched = "watched";

/// The keys that were read of settings, each with the shapes in which it was.
using Keys = std::map<std::string, std::set<tarn::KeyShape>>;

/// What was read of all watched settings so far, under the texts by which they are watched.
std::map<std::string, Keys>& All();

}  // namespace read_keys
