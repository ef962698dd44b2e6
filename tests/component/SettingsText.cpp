#include "tests/component/SettingsText.h"

#include <pugixml.hpp>
#include <sstream>
#include <variant>

#include "platform/common/QKXML.h"
#include "platform/hx/HXDocuments.h"
#include "runtime/common/ScalarSettingValue.h"

namespace component_test {

namespace {

void WriteList(const QKSettings& settings, pugi::xml_node list);

std::string TextOf(const std::string& text) {
    return text;
}
std::string TextOf(double number) {
    return QKXML::ReplaceSep(number, "%.17g");
}
std::string TextOf(int number) {
    return std::to_string(number);
}
std::string TextOf(bool truth) {
    return truth ? HX_TRUE : HX_FALSE;
}

template <typename T>
bool WriteVector(const IQKSettingValue& value, const char* kind, pugi::xml_node node) {
    const auto* vector = dynamic_cast<const IQKVectorElements<T>*>(&value);
    if (vector == nullptr) return false;
    node.append_attribute(HX_SETTING_KIND) = kind;
    for (const T& element : vector->GetElements()) {
        node.append_child(HX_SETTING_ELEMENT).append_attribute(HX_SETTING_VALUE) = TextOf(element).c_str();
    }
    return true;
}

bool WriteListVector(const IQKSettingValue& value, pugi::xml_node node) {
    const auto* vector = dynamic_cast<const IQKVectorElements<QKSettings>*>(&value);
    if (vector == nullptr) return false;
    node.append_attribute(HX_SETTING_KIND) = HX_KIND_LIST_VECTOR;
    for (const QKSettings& element : vector->GetElements()) WriteList(element, node.append_child(HX_SETTING_LIST));
    return true;
}

bool WriteScalar(const IQKSettingValue& value, pugi::xml_node node) {
    constexpr const char* kKinds[] = {HX_KIND_STRING, HX_KIND_DOUBLE, HX_KIND_INT, HX_KIND_BOOL};
    const auto* scalar = dynamic_cast<const ScalarSettingValue*>(&value);
    if (scalar == nullptr) return false;
    node.append_attribute(HX_SETTING_KIND) = kKinds[scalar->GetScalar().index()];
    const std::string text = std::visit([](const auto& single) { return TextOf(single); }, scalar->GetScalar());
    node.append_attribute(HX_SETTING_VALUE) = text.c_str();
    return true;
}

void WriteSetting(const QKSetting& setting, pugi::xml_node node) {
    node.append_attribute(HX_SETTING_NAME) = setting.GetName().c_str();
    if (!setting.GetType().empty()) node.append_attribute(HX_SETTING_TYPE) = setting.GetType().c_str();
    const IQKSettingValue& value = setting.GetValue();
    if (const auto* list = dynamic_cast<const QKSettingListValue*>(&value)) {
        node.append_attribute(HX_SETTING_KIND) = HX_KIND_LIST;
        WriteList(list->GetListValue(), node);
        return;
    }
    WriteScalar(value, node) || WriteListVector(value, node) ||
        WriteVector<std::string>(value, HX_KIND_STRING_VECTOR, node) ||
        WriteVector<double>(value, HX_KIND_DOUBLE_VECTOR, node) || WriteVector<int>(value, HX_KIND_INT_VECTOR, node);
}

void WriteList(const QKSettings& settings, pugi::xml_node list) {
    for (std::size_t i = 0; i < settings.Size(); ++i) {
        WriteSetting(settings.GetSettingAt(i), list.append_child(HX_SETTING));
    }
}

}  // namespace

std::string SettingsText(const QKSettings& settings) {
    pugi::xml_document document;
    WriteList(settings, document.append_child(HX_SETTINGS_ROOT));
    std::ostringstream text;
    document.save(text, "", pugi::format_raw);
    return text.str();
}

}  // namespace component_test
