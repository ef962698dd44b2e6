#include "runtime/common/SettingConversion.h"

#include "platform/common/QKXML.h"
#include "platform/common/Truncation.h"
#include "runtime/common/DecimalNumber.h"

namespace {

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

}  // namespace

namespace SettingConversion {

std::optional<std::string> ToText(const ScalarSettingValue::Scalar& scalar) {
    using Result = std::optional<std::string>;
    return std::visit(Overloaded{[](const std::string& text) -> Result { return text; },
                                 [](double number) -> Result { return QKXML::ReplaceSep(number, "%.15g"); },
                                 [](int number) -> Result { return std::to_string(number); },
                                 [](bool truth) -> Result { return truth ? "true" : "false"; }},
                      scalar);
}

std::optional<double> ToDouble(const ScalarSettingValue::Scalar& scalar) {
    using Result = std::optional<double>;
    return std::visit(Overloaded{[](const std::string& text) -> Result { return ParseDecimal(text); },
                                 [](auto number) -> Result { return static_cast<double>(number); }},
                      scalar);
}

std::optional<int> ToInt(const ScalarSettingValue::Scalar& scalar) {
    if (const int* whole = std::get_if<int>(&scalar)) return *whole;
    const std::optional<double> number = ToDouble(scalar);
    return number ? std::optional<int>(TruncateToInt32(*number)) : std::nullopt;
}

std::optional<bool> ToBool(const ScalarSettingValue::Scalar& scalar) {
    using Result = std::optional<bool>;
    return std::visit(Overloaded{[](const std::string& text) -> Result {
                                     if (text == "true" || text == "1") return true;
                                     if (text == "false" || text == "0") return false;
                                     return std::nullopt;
                                 },
                                 [](auto number) -> Result { return number != 0; }},
                      scalar);
}

}  // namespace SettingConversion
