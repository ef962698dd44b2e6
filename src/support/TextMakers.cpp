#include "support/TextMakers.h"

#include "platform/common/QKXML.h"

std::string IntToString(std::int32_t value) {
    return std::to_string(value);
}
std::string SizeToString(std::size_t value) {
    return std::to_string(value);
}
std::string DoubleToString(double value) {
    return QKXML::ReplaceSep(value, "%.15g");
}
std::string BoolToString(bool value) {
    return value ? "true" : "false";
}

namespace {

template <typename Value>
std::string Join(const std::vector<Value>& values, std::string (*toText)(Value)) {
    std::string joined;
    for (const Value& value : values) {
        if (&value != values.data()) joined += ';';
        joined += toText(value);
    }
    return joined;
}

}  // namespace

std::string JoinValues(const std::vector<double>& values) {
    return Join(values, DoubleToString);
}
std::string JoinValues(const std::vector<std::int32_t>& values) {
    return Join(values, IntToString);
}
