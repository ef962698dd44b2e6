#pragma once

#include <string>
#include <string_view>

namespace tarn {

/// Writes a file whole or not at all: into a file without a name in its folder, which then takes the name. Behind a
/// symbolic link the file is written to which it leads. A device or a pipe is written to as it is. Throws an
/// `InputError` that names the file and the reason; an existing file is then as it was, and nothing is left behind.
void WriteWholeFile(const std::string& path, std::string_view content);

/// The same where the file system has no files without a name: into a file beside it. Of a process that is killed in
/// the middle that file stays; for signals that can be caught there is `RemoveUnfinishedFile`.
void WriteWholeFileByName(const std::string& path, std::string_view content);

/// For a process that ends in the middle of its work: removes the file that is being written, if there is one, and
/// keeps any from being written from then on. On any thread; whoever is writing waits for good.
void AbandonUnfinishedFile();

/// The same without a lock, for a signal handler after which the process ends.
void RemoveUnfinishedFile();

}  // namespace tarn
