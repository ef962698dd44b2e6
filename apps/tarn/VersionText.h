#pragma once

#include <string>

namespace tarn {

/// The version of the program, and what the engine says of itself: its module information, a small XML document.
std::string VersionText();

}  // namespace tarn
