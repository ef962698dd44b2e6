#pragma once

#include <string>

namespace tarn {

/// The SHA-256 of a file's bytes in hexadecimal digits, as sha256sum prints it. Throws an `InputError` for a file that
/// can't be read.
std::string HashOfFile(const std::string& path);

}  // namespace tarn
