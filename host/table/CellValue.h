#pragma once

#include <optional>
#include <string_view>

#include "host/table/FieldType.h"

namespace tarn {

/// `text` without the blanks and tabs at both ends.
inline std::string_view TrimBlanks(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// 1 for "true", 0 for "false", also written "True", "TRUE" or "1" and alike.
std::optional<double> ParseBoolean(std::string_view text);

/// Days since 1970-01-01 of a date YYYY-MM-DD of the Gregorian calendar, which is extended to before its beginning.
std::optional<double> ParseDate(std::string_view text);

/// Seconds since midnight of a time hh:mm[:ss[.fraction]].
std::optional<double> ParseTime(std::string_view text);

/// Seconds since 1970-01-01T00:00Z of a date and a time with a "T" or a blank between them. An offset "Z", "+hh:mm" or
/// "-hh:mm" may follow; without it the time is taken as UTC.
std::optional<double> ParseDateTime(std::string_view text);

/// The number that the text, without outer blanks, stands for in a column of that type, which is not `kString`.
std::optional<double> ParseCell(FieldType type, std::string_view text);

/// What `ParseCell` expects, for a message: "a date YYYY-MM-DD".
std::string_view ExpectedText(FieldType type);

}  // namespace tarn
