#pragma once

#include <string>

#include "host/Json.h"

namespace tarn {

/// What a JSON value becomes as a setting.
enum class SettingShape {
    kAbsent,  ///< null
    kString,
    kDouble,
    kInt,  ///< a number written as a whole one that fits 32 bits
    kBool,
    kList,
    kStringVector,  ///< an empty array, or one with a text in it
    kDoubleVector,
    kIntVector,
    kListVector
};

/// Returns the shape, the same on the way to the engine's factory and to its component. Throws an `InputError` that
/// names `source` and `path`, the key from the top of the document, for an array that has none.
SettingShape ShapeOf(const Json& value, const std::string& source, const std::string& path);

/// An element of a vector of texts: a text as it is, a number by "%.15g".
std::string ElementText(const Json& element);

/// Throws the `InputError` for a key that holds something else than expected.
[[noreturn]] void FailAtKey(const std::string& source, const std::string& path, const std::string& expected);

}  // namespace tarn
