#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tarn {

/// The version of the program, "1.2.3".
std::string BuiltVersion();

/// The commit of the sources that it was built from, "+changes" behind it where they had been changed since; "" where
/// nobody knew.
std::string BuiltCommit();

/// The libraries that numbers and tables go through, by their names and versions: shared ones as they are found now,
/// the others as they were built in.
std::vector<std::pair<std::string, std::string>> LinkedLibraries();

}  // namespace tarn
