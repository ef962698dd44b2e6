#include "host/table/CellValue.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>

#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

constexpr std::size_t kDateLength = 10;
constexpr std::size_t kShortTimeLength = 5;
constexpr double kSecondsPerDay = 86400;
constexpr double kSecondsPerHour = 3600;
constexpr double kSecondsPerMinute = 60;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads a text from its front in fixed shapes. After a shape that is not there, nothing else is.
class ShapeReader {
 public:
    explicit ShapeReader(std::string_view text) : rest_(text) {}

    // A number of exactly `count` digits, at most `limit`.
    int Digits(std::size_t count, int limit) {
        int value = 0;
        isGood_ = isGood_ && rest_.size() >= count && std::all_of(rest_.begin(), rest_.begin() + count, IsDigit);
        if (!isGood_) return 0;
        for (const char c : rest_.substr(0, count)) value = 10 * value + (c - '0');
        rest_.remove_prefix(count);
        isGood_ = value <= limit;
        return value;
    }

    void Literal(char c) {
        isGood_ = isGood_ && rest_.starts_with(c);
        if (isGood_) rest_.remove_prefix(1);
    }

    bool StartsWith(char c) const { return isGood_ && rest_.starts_with(c); }
    bool IsGood() const { return isGood_; }
    bool IsDone() const { return isGood_ && rest_.empty(); }

 private:
    std::string_view rest_;
    bool isGood_ = true;
};

double HoursAndMinutes(ShapeReader& reader) {
    const int hours = reader.Digits(2, 23);
    reader.Literal(':');
    return hours * kSecondsPerHour + reader.Digits(2, 59) * kSecondsPerMinute;
}

// ss[.fraction]
std::optional<double> ParseSeconds(std::string_view text) {
    ShapeReader reader(text);
    reader.Digits(2, 59);
    if (reader.IsDone()) return ParseDecimal(text);
    reader.Literal('.');
    const bool hasFraction = reader.IsGood() && text.size() > 3 && std::all_of(text.begin() + 3, text.end(), IsDigit);
    return hasFraction ? ParseDecimal(text) : std::nullopt;
}

// Seconds by which the clock is ahead of UTC.
std::optional<double> ParseOffset(std::string_view text) {
    if (text.empty() || text == "Z") return 0;
    ShapeReader reader(text);
    const bool isBehind = reader.StartsWith('-');
    reader.Literal(isBehind ? '-' : '+');
    const double seconds = HoursAndMinutes(reader);
    if (!reader.IsDone()) return std::nullopt;
    return isBehind ? -seconds : seconds;
}

}  // namespace

std::optional<double> ParseBoolean(std::string_view text) {
    static constexpr std::string_view kTrue[] = {"true", "True", "TRUE", "1"};
    static constexpr std::string_view kFalse[] = {"false", "False", "FALSE", "0"};
    if (std::find(std::begin(kTrue), std::end(kTrue), text) != std::end(kTrue)) return 1;
    if (std::find(std::begin(kFalse), std::end(kFalse), text) != std::end(kFalse)) return 0;
    return std::nullopt;
}

std::optional<double> ParseDate(std::string_view text) {
    ShapeReader reader(text);
    const std::chrono::year year(reader.Digits(4, 9999));
    reader.Literal('-');
    const std::chrono::month month(static_cast<unsigned>(reader.Digits(2, 12)));
    reader.Literal('-');
    const std::chrono::day day(static_cast<unsigned>(reader.Digits(2, 31)));
    const std::chrono::year_month_day date(year, month, day);
    if (!reader.IsDone() || !date.ok()) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch().count();
}

std::optional<double> ParseTime(std::string_view text) {
    ShapeReader reader(text.substr(0, kShortTimeLength));
    const double wholeMinutes = HoursAndMinutes(reader);
    if (!reader.IsDone()) return std::nullopt;
    if (text.size() == kShortTimeLength) return wholeMinutes;
    if (text[kShortTimeLength] != ':') return std::nullopt;
    const std::optional<double> seconds = ParseSeconds(text.substr(kShortTimeLength + 1));
    return seconds ? std::optional(wholeMinutes + *seconds) : std::nullopt;
}

std::optional<double> ParseDateTime(std::string_view text) {
    if (text.size() <= kDateLength || (text[kDateLength] != 'T' && text[kDateLength] != ' ')) return std::nullopt;
    const std::string_view clock = text.substr(kDateLength + 1);
    const std::size_t timeLength = std::min(clock.find_first_of("Z+-"), clock.size());
    const std::optional<double> days = ParseDate(text.substr(0, kDateLength));
    const std::optional<double> seconds = ParseTime(clock.substr(0, timeLength));
    const std::optional<double> offset = ParseOffset(clock.substr(timeLength));
    if (!days || !seconds || !offset) return std::nullopt;
    // The fraction of the seconds is added last, to a whole number, and so rounded only once more.
    return (*days * kSecondsPerDay - *offset) + *seconds;
}

std::optional<double> ParseCell(FieldType type, std::string_view text) {
    switch (type) {
        case FieldType::kNumber:
        case FieldType::kInteger:
            return ParseDecimal(text);
        case FieldType::kBoolean:
            return ParseBoolean(text);
        case FieldType::kDate:
            return ParseDate(text);
        case FieldType::kTime:
            return ParseTime(text);
        case FieldType::kDateTime:
            return ParseDateTime(text);
        case FieldType::kString:
            break;
    }
    return std::nullopt;
}

std::string_view ExpectedText(FieldType type) {
    switch (type) {
        case FieldType::kNumber:
        case FieldType::kInteger:
            return "a decimal number";
        case FieldType::kBoolean:
            return "true or false";
        case FieldType::kDate:
            return "a date YYYY-MM-DD";
        case FieldType::kTime:
            return "a time hh:mm:ss";
        case FieldType::kDateTime:
            return "a date and time YYYY-MM-DDThh:mm:ss";
        case FieldType::kString:
            break;
    }
    return "a text";
}

}  // namespace tarn
