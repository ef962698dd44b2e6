#include "host/engine/SettingShape.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "host/InputError.h"

namespace tarn {

namespace {

bool IsInt(const Json& value) {
    if (value.is_number_unsigned()) return value.get<std::uint64_t>() <= std::numeric_limits<std::int32_t>::max();
    if (!value.is_number_integer()) return false;
    const auto number = value.get<std::int64_t>();
    return number >= std::numeric_limits<std::int32_t>::min() && number <= std::numeric_limits<std::int32_t>::max();
}

bool IsNumber(const Json& value) {
    return value.is_number();
}
bool IsScalar(const Json& value) {
    return value.is_number() || value.is_string();
}
bool IsObject(const Json& value) {
    return value.is_object();
}

SettingShape ShapeOfArray(const Json& array, const std::string& source, const std::string& path) {
    const auto all = [&](auto predicate) { return std::all_of(array.begin(), array.end(), predicate); };
    if (array.empty()) return SettingShape::kStringVector;
    if (all(IsObject)) return SettingShape::kListVector;
    if (all(IsInt)) return SettingShape::kIntVector;
    if (all(IsNumber)) return SettingShape::kDoubleVector;
    if (all(IsScalar)) return SettingShape::kStringVector;
    FailAtKey(source, path, "an array of strings and numbers, or of objects alone");
}

}  // namespace

SettingShape ShapeOf(const Json& value, const std::string& source, const std::string& path) {
    switch (value.type()) {
        case Json::value_t::null:
            return SettingShape::kAbsent;
        case Json::value_t::string:
            return SettingShape::kString;
        case Json::value_t::boolean:
            return SettingShape::kBool;
        case Json::value_t::object:
            return SettingShape::kList;
        case Json::value_t::array:
            return ShapeOfArray(value, source, path);
        default:
            return IsInt(value) ? SettingShape::kInt : SettingShape::kDouble;
    }
}

std::string ElementText(const Json& element) {
    if (element.is_string()) return element.get<std::string>();
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", element.get<double>());
    return text;
}

void FailAtKey(const std::string& source, const std::string& path, const std::string& expected) {
    throw InputError(source + ": key " + Quoted(path) + ": expected " + expected);
}

}  // namespace tarn
