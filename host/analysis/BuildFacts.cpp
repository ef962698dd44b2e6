#include "host/analysis/BuildFacts.h"

#include <gnu/libc-version.h>
#include <nettle/version.h>
#include <zlib.h>
#include <zstd.h>

#include <boost/version.hpp>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

namespace tarn {

namespace {

/// "1.81.0" of 108100.
std::string BoostVersion() {
    constexpr int kPatches = 100;
    constexpr int kMinors = 1000;
    return std::to_string(BOOST_VERSION / kPatches / kMinors) + "." +
           std::to_string(BOOST_VERSION / kPatches % kMinors) + "." + std::to_string(BOOST_VERSION % kPatches);
}

/// "1.13" of 1130, the last digit a patch that most releases have none of.
std::string PugixmlVersion() {
    constexpr int kMajors = 1000;
    constexpr int kMinors = 10;
    const int patch = PUGIXML_VERSION % kMinors;
    return std::to_string(PUGIXML_VERSION / kMajors) + "." + std::to_string(PUGIXML_VERSION % kMajors / kMinors) +
           (patch == 0 ? "" : "." + std::to_string(patch));
}

std::string JsonVersion() {
    return std::to_string(NLOHMANN_JSON_VERSION_MAJOR) + "." + std::to_string(NLOHMANN_JSON_VERSION_MINOR) + "." +
           std::to_string(NLOHMANN_JSON_VERSION_PATCH);
}

}  // namespace

std::string BuiltVersion() {
    return TARN_VERSION;
}

std::string BuiltCommit() {
    return TARN_BUILT_FROM;
}

std::vector<std::pair<std::string, std::string>> LinkedLibraries() {
    std::vector<std::pair<std::string, std::string>> libraries{
        {"Boost", BoostVersion()},
        {"GNU C Library", gnu_get_libc_version()},
        {"Highway", TARN_HIGHWAY},
        {"Nettle", std::to_string(nettle_version_major()) + "." + std::to_string(nettle_version_minor())},
        {"nlohmann-json", JsonVersion()},
        {"pugixml", PugixmlVersion()},
        {"zlib", zlibVersion()},
        {"zstd", ZSTD_versionString()}};
    std::erase_if(libraries, [](const auto& library) { return library.second.empty(); });
    return libraries;
}

}  // namespace tarn
