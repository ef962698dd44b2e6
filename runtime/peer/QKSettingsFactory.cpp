#include "platform/peer/QKSettingsFactory.h"

#include <charconv>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/hx/HXDocuments.h"
#include "platform/hx/HXStatus.h"
#include "runtime/common/DecimalNumber.h"
#include "runtime/common/ScalarSettingValue.h"
#include "runtime/peer/VectorSettingValue.h"

using HxCppHelperV1::XMLElement;
using HxCppHelperV1::XMLElementIterator;

namespace {

/// Lists in lists are read by recursion, which must not end with the stack.
constexpr int kDeepestNesting = 64;

std::optional<QKSettings> ReadList(const XMLElement& list, int depth);

// ---- Single values, from their text ----

template <typename T>
std::optional<T> Read(const std::string& text);

template <>
std::optional<std::string> Read(const std::string& text) {
    return text;
}

template <>
std::optional<double> Read(const std::string& text) {
    if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (text == "inf") return std::numeric_limits<double>::infinity();
    if (text == "-inf") return -std::numeric_limits<double>::infinity();
    return ParseDecimal(text);
}

template <>
std::optional<int> Read(const std::string& text) {
    int number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    return number;
}

template <>
std::optional<bool> Read(const std::string& text) {
    if (text == HX_TRUE) return true;
    if (text == HX_FALSE) return false;
    return std::nullopt;
}

template <typename T>
std::optional<T> ReadValue(const XMLElement& element) {
    if (!element.hasAttribute(HX_SETTING_VALUE)) return std::nullopt;
    return Read<T>(element.getAttribute(HX_SETTING_VALUE));
}

// ---- Values of settings; null for an element that can't be one ----

using ValuePointer = std::unique_ptr<const IQKSettingValue>;

template <typename T>
ValuePointer MakeScalar(const XMLElement& setting) {
    std::optional<T> value = ReadValue<T>(setting);
    return value ? std::make_unique<ScalarSettingValue>(*std::move(value)) : nullptr;
}

template <typename T>
ValuePointer MakeVector(const XMLElement& setting) {
    std::vector<T> elements;
    for (XMLElementIterator children(setting); children.hasNext();) {
        const XMLElement child = children.next();
        std::optional<T> value = ReadValue<T>(child);
        if (child.getName() != HX_SETTING_ELEMENT || !value) return nullptr;
        elements.push_back(*std::move(value));
    }
    return std::make_unique<VectorSettingValue<T>>(std::move(elements));
}

ValuePointer MakeList(const XMLElement& setting, int depth) {
    std::optional<QKSettings> list = ReadList(setting, depth);
    return list ? std::make_unique<QKSettingListValue>(*std::move(list)) : nullptr;
}

ValuePointer MakeListVector(const XMLElement& setting, int depth) {
    std::vector<QKSettings> lists;
    for (XMLElementIterator children(setting); children.hasNext();) {
        const XMLElement child = children.next();
        std::optional<QKSettings> list = ReadList(child, depth);
        if (child.getName() != HX_SETTING_LIST || !list) return nullptr;
        lists.push_back(*std::move(list));
    }
    return std::make_unique<VectorSettingValue<QKSettings>>(std::move(lists));
}

ValuePointer MakeValue(const XMLElement& setting, int depth) {
    const std::string kind = setting.getAttribute(HX_SETTING_KIND);
    if (kind == HX_KIND_STRING) return MakeScalar<std::string>(setting);
    if (kind == HX_KIND_DOUBLE) return MakeScalar<double>(setting);
    if (kind == HX_KIND_INT) return MakeScalar<int>(setting);
    if (kind == HX_KIND_BOOL) return MakeScalar<bool>(setting);
    if (kind == HX_KIND_STRING_VECTOR) return MakeVector<std::string>(setting);
    if (kind == HX_KIND_DOUBLE_VECTOR) return MakeVector<double>(setting);
    if (kind == HX_KIND_INT_VECTOR) return MakeVector<int>(setting);
    if (kind == HX_KIND_LIST) return MakeList(setting, depth + 1);
    if (kind == HX_KIND_LIST_VECTOR) return MakeListVector(setting, depth + 1);
    return nullptr;
}

/// Adds the settings that stand in an element; false at the first child that is no setting.
bool AddSettings(const XMLElement& list, int depth, QKSettings& settings) {
    if (depth > kDeepestNesting) return false;
    for (XMLElementIterator children(list); children.hasNext();) {
        const XMLElement child = children.next();
        if (child.getName() != HX_SETTING || !child.hasAttribute(HX_SETTING_NAME)) return false;
        ValuePointer value = MakeValue(child, depth);
        if (value == nullptr) return false;
        settings.AddSetting(
            QKSetting(child.getAttribute(HX_SETTING_NAME), child.getAttribute(HX_SETTING_TYPE), std::move(value)));
    }
    return true;
}

std::optional<QKSettings> ReadList(const XMLElement& list, int depth) {
    QKSettings settings;
    return AddSettings(list, depth, settings) ? std::optional<QKSettings>(std::move(settings)) : std::nullopt;
}

}  // namespace

unsigned QKSettingsFactory::MakeModelSettings(const HxCppHelperV1::XMLDocument& model, QKSettings& settings,
                                              int* errorCode) {
    const XMLElement root = model.getRoot();
    if (root.getName() == HX_SETTINGS_ROOT && AddSettings(root, 0, settings)) return HX_OK;
    *errorCode = HX_ERROR_SETTINGS;
    return HX_FAILED;
}
