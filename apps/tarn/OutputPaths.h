#pragma once

#include <span>
#include <string>
#include <vector>

namespace tarn {

/// A file that a command reads or writes, with what messages call it: "--out", "the table".
struct NamedPath {
    std::string name;
    std::string path;  ///< empty, or "-" of what is read: none
};

/// Throws an `InputError` if a file that is written is one of those that are read, or another one that is written: it
/// would be lost. A device or a pipe may be several.
void CheckOutputPaths(std::span<const NamedPath> written, std::span<const NamedPath> read);

/// The path typed for an option. Throws an `InputError` for an empty one.
std::string PathTyped(const char* option, const std::string& typed);

}  // namespace tarn
