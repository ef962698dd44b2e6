#pragma once

#include <string>
#include <string_view>

namespace tarn {

/// Writes a file whole or not at all: into a temporary file beside it, which then takes its name. Throws an
/// `InputError` that names the file and the reason; an existing file is then as it was, and nothing is left behind.
void WriteWholeFile(const std::string& path, std::string_view content);

}  // namespace tarn
