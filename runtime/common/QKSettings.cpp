#include "platform/common/QKSettings.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/common/QKDisplay.h"
#include "platform/common/QKMV.h"
#include "platform/common/Truncation.h"
#include "runtime/common/ScalarSettingValue.h"
#include "runtime/common/SettingConversion.h"

using Scalar = ScalarSettingValue::Scalar;

QKSetting::QKSetting(std::string name, std::string type, std::unique_ptr<const IQKSettingValue> value)
    : name_(std::move(name)), type_(std::move(type)), value_(std::move(value)) {}

// ---- Reading ----

namespace {

template <typename T>
bool Store(std::optional<T> value, T& out) {
    if (!value) return false;
    out = *std::move(value);
    return true;
}

/// The scalar under a name; null when there is none or the setting is no scalar.
const Scalar* FindScalar(const QKSettings& settings, const std::string& name) {
    const QKSetting* setting = settings.FindSetting(name);
    if (setting == nullptr) return nullptr;
    const auto* value = dynamic_cast<const ScalarSettingValue*>(&setting->GetValue());
    return value ? &value->GetScalar() : nullptr;
}

/// The elements of a vector as scalars, so that each is converted by the rules of a single value.
template <typename Element, typename Convert, typename Out>
bool ReadElements(const IQKSettingValue& value, Convert convert, std::vector<Out>& out) {
    const auto* vector = dynamic_cast<const IQKVectorElements<Element>*>(&value);
    if (vector == nullptr) return false;
    std::vector<Out> converted;
    converted.reserve(vector->GetElements().size());
    for (const Element& element : vector->GetElements()) converted.push_back(convert(Scalar(element)));
    out = std::move(converted);
    return true;
}

template <typename Convert, typename Out>
bool ReadVector(const QKSettings& settings, const std::string& name, Convert convert, Out whenNotScalar,
                std::vector<Out>& out) {
    const QKSetting* setting = settings.FindSetting(name);
    if (setting == nullptr) return false;
    const IQKSettingValue& value = setting->GetValue();
    if (ReadElements<std::string>(value, convert, out) || ReadElements<double>(value, convert, out) ||
        ReadElements<int>(value, convert, out)) {
        return true;
    }
    const auto* lists = dynamic_cast<const IQKVectorElements<QKSettings>*>(&value);
    if (lists == nullptr) return false;
    out.assign(lists->GetElements().size(), whenNotScalar);
    return true;
}

}  // namespace

const QKSetting* QKSettings::FindSetting(const std::string& name) const {
    const auto found = std::find_if(settings_.begin(), settings_.end(),
                                    [&](const QKSetting& setting) { return setting.GetName() == name; });
    return found == settings_.end() ? nullptr : &*found;
}

std::vector<std::string> QKSettings::GetSettingNames() const {
    std::vector<std::string> names;
    names.reserve(settings_.size());
    for (const QKSetting& setting : settings_) names.push_back(setting.GetName());
    return names;
}

bool QKSettings::GetSettingValByName(const std::string& name, std::string& out) const {
    const Scalar* scalar = FindScalar(*this, name);
    return scalar && Store(SettingConversion::ToText(*scalar), out);
}

bool QKSettings::GetSettingValByName(const std::string& name, double& out) const {
    const Scalar* scalar = FindScalar(*this, name);
    return scalar && Store(SettingConversion::ToDouble(*scalar), out);
}

bool QKSettings::GetSettingValByName(const std::string& name, int& out) const {
    const Scalar* scalar = FindScalar(*this, name);
    return scalar && Store(SettingConversion::ToInt(*scalar), out);
}

bool QKSettings::GetSettingValByName(const std::string& name, bool& out) const {
    const Scalar* scalar = FindScalar(*this, name);
    return scalar && Store(SettingConversion::ToBool(*scalar), out);
}

bool QKSettings::GetSettingValByName(const std::string& name, QKSettings& out) const {
    const QKSetting* setting = FindSetting(name);
    const auto* list = setting ? dynamic_cast<const QKSettingListValue*>(&setting->GetValue()) : nullptr;
    if (list == nullptr) return false;
    out = list->GetListValue();
    return true;
}

bool QKSettings::GetSettingValByName(const std::string& name, std::vector<std::string>& out) const {
    const auto convert = [](const Scalar& scalar) { return SettingConversion::ToText(scalar).value_or(""); };
    return ReadVector(*this, name, convert, std::string(), out);
}

bool QKSettings::GetSettingValByName(const std::string& name, std::vector<double>& out) const {
    const auto convert = [](const Scalar& scalar) {
        return SettingConversion::ToDouble(scalar).value_or(QKMV::Missing());
    };
    return ReadVector(*this, name, convert, QKMV::Missing(), out);
}

bool QKSettings::GetSettingValByName(const std::string& name, std::vector<int>& out) const {
    const int missing = TruncateToInt32(QKMV::Missing());
    const auto convert = [&](const Scalar& scalar) { return SettingConversion::ToInt(scalar).value_or(missing); };
    return ReadVector(*this, name, convert, missing, out);
}

bool QKSettings::GetSettingValByName(const std::string& name, std::vector<QKSettings>& out) const {
    const QKSetting* setting = FindSetting(name);
    if (setting == nullptr) return false;
    const IQKSettingValue& value = setting->GetValue();
    if (const auto* lists = dynamic_cast<const IQKVectorElements<QKSettings>*>(&value)) {
        out = lists->GetElements();
        return true;
    }
    // A vector without elements says nothing of their kind.
    if (value.GetKind() != static_cast<int>(SettingKind::kVector) || value.Count() != 0) return false;
    out.clear();
    return true;
}

// ---- Writing ----

namespace {

QKSetting ScalarSetting(const std::string& name, Scalar scalar, const std::string& type = "") {
    return QKSetting(name, type, std::make_unique<ScalarSettingValue>(std::move(scalar)));
}

}  // namespace

void QKSettings::AddSetting(const std::string& name, const std::string& value) {
    AddSetting(ScalarSetting(name, value));
}
void QKSettings::AddSetting(const std::string& name, const char* value) {
    AddSetting(ScalarSetting(name, std::string(value)));
}
void QKSettings::AddSetting(const std::string& name, double value) {
    AddSetting(ScalarSetting(name, value));
}
void QKSettings::AddSetting(const std::string& name, int value) {
    AddSetting(ScalarSetting(name, value));
}
void QKSettings::AddSetting(const std::string& name, bool value) {
    AddSetting(ScalarSetting(name, value));
}
void QKSettings::AddSetting(const std::string& name, const QKSettings& value) {
    AddSetting(QKSetting(name, "", std::make_unique<QKSettingListValue>(value)));
}
void QKSettings::AddSetting(QKSetting setting) {
    settings_.push_back(std::move(setting));
}

void QKSettings::AddNewSetting(const std::string& name, int value, const std::string& type) {
    AddSetting(ScalarSetting(name, value, type));
}

bool QKSettings::RemoveSetting(const std::string& name, bool all) {
    const auto hasName = [&](const QKSetting& setting) { return setting.GetName() == name; };
    if (all) return std::erase_if(settings_, hasName) > 0;
    const auto found = std::find_if(settings_.begin(), settings_.end(), hasName);
    if (found == settings_.end()) return false;
    settings_.erase(found);
    return true;
}

bool operator==(const QKSettings& a, const QKSettings& b) {
    return std::equal(a.settings_.begin(), a.settings_.end(), b.settings_.begin(), b.settings_.end(),
                      [](const QKSetting& x, const QKSetting& y) {
                          return x.GetName() == y.GetName() && x.GetValue() == y.GetValue();
                      });
}

bool operator<(const QKSettings& a, const QKSettings& b) {
    return std::lexicographical_compare(a.settings_.begin(), a.settings_.end(), b.settings_.begin(), b.settings_.end(),
                                        [](const QKSetting& x, const QKSetting& y) {
                                            if (x.GetName() != y.GetName()) return x.GetName() < y.GetName();
                                            return x.GetValue() < y.GetValue();
                                        });
}

// ---- Value classes ----

bool ScalarSettingValue::operator==(const IQKSettingValue& other) const {
    const auto* scalar = dynamic_cast<const ScalarSettingValue*>(&other);
    return scalar && scalar_ == scalar->scalar_;
}

bool ScalarSettingValue::operator<(const IQKSettingValue& other) const {
    const auto* scalar = dynamic_cast<const ScalarSettingValue*>(&other);
    return scalar && scalar_ < scalar->scalar_;
}

double ScalarSettingValue::GetNumber() const {
    return SettingConversion::ToDouble(scalar_).value_or(QKMV::Missing());
}

std::string ScalarSettingValue::ToString() const {
    return SettingConversion::ToText(scalar_).value_or("");
}

int ScalarSettingValue::GetElementKind() const {
    if (std::holds_alternative<int>(scalar_)) return static_cast<int>(SettingElementKind::kInt);
    if (std::holds_alternative<double>(scalar_)) return static_cast<int>(SettingElementKind::kDouble);
    if (std::holds_alternative<std::string>(scalar_)) return static_cast<int>(SettingElementKind::kString);
    return static_cast<int>(SettingElementKind::kOther);
}

void ScalarSettingValue::Display() const {
    QKDisplay::DisplayS("Setting Value Type", "Scalar");
    QKDisplay::DisplayS("Setting value", ToString());
}

QKSettingListValue* QKSettingListValue::Clone() const {
    return new QKSettingListValue(list_);
}

bool QKSettingListValue::operator==(const IQKSettingValue& other) const {
    const auto* list = dynamic_cast<const QKSettingListValue*>(&other);
    return list && list_ == list->list_;
}

bool QKSettingListValue::operator<(const IQKSettingValue& other) const {
    const auto* list = dynamic_cast<const QKSettingListValue*>(&other);
    return list && list_ < list->list_;
}

unsigned QKSettingListValue::Size() const {
    return static_cast<unsigned>(list_.Size());
}
double QKSettingListValue::GetNumber() const {
    return QKMV::Missing();
}
std::string QKSettingListValue::ToString() const {
    return "List Value: Length of list = " + std::to_string(list_.Size());
}
bool QKSettingListValue::HasValues() const {
    return list_.Size() > 0;
}
int QKSettingListValue::Count() const {
    return static_cast<int>(list_.Size());
}
int QKSettingListValue::GetKind() const {
    return static_cast<int>(SettingKind::kNestedList);
}
int QKSettingListValue::GetElementKind() const {
    return static_cast<int>(SettingElementKind::kSettings);
}

void QKSettingListValue::Display() const {
    QKDisplay::DisplayS("Setting Value Type", "List");
    QKDisplay::DisplayI("Total number of setting value", Count());
}
