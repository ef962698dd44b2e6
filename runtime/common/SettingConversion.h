#pragma once

#include <optional>
#include <string>

#include "runtime/common/ScalarSettingValue.h"

/// The conversions of a scalar that is read as another type; no value where a conversion fails.
namespace SettingConversion {

std::optional<std::string> ToText(const ScalarSettingValue::Scalar& scalar);
std::optional<double> ToDouble(const ScalarSettingValue::Scalar& scalar);
std::optional<int> ToInt(const ScalarSettingValue::Scalar& scalar);
std::optional<bool> ToBool(const ScalarSettingValue::Scalar& scalar);

}  // namespace SettingConversion
