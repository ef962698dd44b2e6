#include "support/TextMakers.h"

#include "platform/common/QKXML.h"

std::string IntToString(std::int32_t value) { return std::to_string(value); }
std::string SizeToString(std::size_t value) { return std::to_string(value); }
std::string DoubleToString(double value) { return QKXML::ReplaceSep(value, "%.15g"); }
std::string BoolToString(bool value) { return value ? "true" : "false"; }
