#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The text makers: every number of a result document passes through one of them.

/// A plain decimal number, a leading "-" where it is negative.
std::string IntToString(std::int64_t value);
/// A plain decimal number.
std::string SizeToString(std::size_t value);
/// At most 15 significant digits, a point, no trailing zeros; "nan", "inf" and "-inf" where it is no number.
std::string DoubleToString(double value);
/// The same at the end of a text that is being made, without a text of their own.
void AppendInt(std::string& text, std::int64_t value);
void AppendDouble(std::string& text, double value);
/// "true" or "false".
std::string BoolToString(bool value);
/// The values of a list joined with ";", without one at the end; empty for an empty list.
std::string JoinValues(const std::vector<double>& values);
std::string JoinValues(const std::vector<std::int32_t>& values);
std::string JoinValues(const std::vector<std::int64_t>& values);
