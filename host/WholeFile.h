#pragma once

#include <string>
#include <string_view>

namespace tarn {

/// Writes a file whole or not at all: into a temporary file beside it, which then takes its name. Throws an
/// `InputError` that names the file and the reason; an existing file is then as it was, and nothing is left behind.
void WriteWholeFile(const std::string& path, std::string_view content);

/// For a process that ends in the middle of its work: removes the file that is being written, if there is one, and
/// keeps any from being written from then on. On any thread; whoever is writing waits for good.
void AbandonUnfinishedFile();

}  // namespace tarn
