#pragma once

#include <string>

#include "apps/tarn/Command.h"

namespace tarn {

/// `tarn show`: shows a stored result document in a format, as text if none is named. Throws an `InputError` for a file
/// that holds no such document.
ExitStatus Show(const std::string& path, const OutputOptions& output);

}  // namespace tarn
