#include "support/TextMakers.h"

#include <charconv>

#include "platform/common/QKXML.h"

namespace {

template <typename Value, typename Append>
std::string Join(const std::vector<Value>& values, const Append& append) {
    std::string joined;
    for (const Value& value : values) {
        if (&value != values.data()) joined += ';';
        append(joined, value);
    }
    return joined;
}

}  // namespace

void AppendInt(std::string& text, std::int64_t value) {
    char digits[24];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}
void AppendDouble(std::string& text, double value) {
    QKXML::AppendNumber(text, value);
}

std::string IntToString(std::int64_t value) {
    return std::to_string(value);
}
std::string SizeToString(std::size_t value) {
    return std::to_string(value);
}
std::string DoubleToString(double value) {
    std::string text;
    AppendDouble(text, value);
    return text;
}
std::string BoolToString(bool value) {
    return value ? "true" : "false";
}

std::string JoinValues(const std::vector<double>& values) {
    return Join(values, AppendDouble);
}
std::string JoinValues(const std::vector<std::int32_t>& values) {
    return Join(values, AppendInt);
}
std::string JoinValues(const std::vector<std::int64_t>& values) {
    return Join(values, AppendInt);
}
