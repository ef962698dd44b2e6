#include "host/report/JsonValues.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "host/report/ResultDocument.h"

namespace tarn {

Json NumberJson(const std::string& text) {
    if (text.empty()) return nullptr;
    std::int64_t whole = 0;
    const char* const end = text.data() + text.size();
    if (const auto [rest, error] = std::from_chars(text.data(), end, whole); error == std::errc{} && rest == end) {
        return whole;
    }
    double number = 0;
    if (ReadNumber(text, number) && std::isfinite(number)) return number;
    return text;
}

Json TextOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

}  // namespace tarn
