#include "apps/tarn/OutputPaths.h"

#include <filesystem>
#include <system_error>

#include "host/InputError.h"

namespace tarn {

namespace {

/// Whether both are one file, or will be one when it is there.
bool IsSameFile(const std::string& left, const std::string& right) {
    namespace files = std::filesystem;
    std::error_code none;
    const bool isThere = files::exists(left, none);
    if (isThere != files::exists(right, none)) return false;
    if (isThere) return files::is_regular_file(left, none) && files::equivalent(left, right, none);
    return files::weakly_canonical(left, none) == files::weakly_canonical(right, none);
}

void CheckApart(const NamedPath& output, const NamedPath& other) {
    if (output.path.empty() || other.path.empty() || other.path == "-") return;
    if (!IsSameFile(output.path, other.path)) return;
    throw InputError(output.name + ": " + output.path + " is " + other.name + " as well; expected another file");
}

}  // namespace

void CheckOutputPaths(std::span<const NamedPath> written, std::span<const NamedPath> read) {
    for (std::size_t i = 0; i < written.size(); ++i) {
        for (const NamedPath& input : read) CheckApart(written[i], input);
        for (const NamedPath& earlier : written.first(i)) CheckApart(written[i], earlier);
    }
}

std::string PathTyped(const char* option, const std::string& typed) {
    if (typed.empty()) throw InputError(std::string(option) + ": \"\"; expected the path of a file");
    return typed;
}

}  // namespace tarn
