#include "host/engine/SettingsDocument.h"

#include <pugixml.hpp>
#include <sstream>

#include "host/NumberText.h"
#include "host/engine/SettingShape.h"
#include "platform/hx/HXDocuments.h"

namespace tarn {

namespace {

using Json = nlohmann::ordered_json;

class Writer {
 public:
    explicit Writer(const std::string& source) : source_(source) {}

    void Add(pugi::xml_node parent, const Json& object, const std::string& path) const {
        for (const auto& [key, value] : object.items()) AddSetting(parent, key, value, path + key);
    }

 private:
    void AddSetting(pugi::xml_node parent, const std::string& key, const Json& value, const std::string& path) const {
        const SettingShape shape = ShapeOf(value, source_, path);
        if (shape == SettingShape::kAbsent) return;
        pugi::xml_node setting = parent.append_child(HX_SETTING);
        setting.append_attribute(HX_SETTING_NAME) = key.c_str();
        pugi::xml_attribute kind = setting.append_attribute(HX_SETTING_KIND);
        switch (shape) {
            case SettingShape::kString:
                kind = HX_KIND_STRING;
                AddValue(setting, value.get<std::string>());
                break;
            case SettingShape::kDouble:
                kind = HX_KIND_DOUBLE;
                AddValue(setting, ExactText(value.get<double>()));
                break;
            case SettingShape::kInt:
                kind = HX_KIND_INT;
                AddValue(setting, std::to_string(value.get<int>()));
                break;
            case SettingShape::kBool:
                kind = HX_KIND_BOOL;
                AddValue(setting, value.get<bool>() ? HX_TRUE : HX_FALSE);
                break;
            case SettingShape::kList:
                kind = HX_KIND_LIST;
                Add(setting, value, path + ".");
                break;
            case SettingShape::kStringVector:
                kind = HX_KIND_STRING_VECTOR;
                for (const Json& element : value) AddElement(setting, ElementText(element));
                break;
            case SettingShape::kDoubleVector:
                kind = HX_KIND_DOUBLE_VECTOR;
                for (const Json& element : value) AddElement(setting, ExactText(element.get<double>()));
                break;
            case SettingShape::kIntVector:
                kind = HX_KIND_INT_VECTOR;
                for (const Json& element : value) AddElement(setting, std::to_string(element.get<int>()));
                break;
            case SettingShape::kListVector:
                kind = HX_KIND_LIST_VECTOR;
                for (const Json& element : value) Add(setting.append_child(HX_SETTING_LIST), element, path + ".");
                break;
            case SettingShape::kAbsent:
                break;
        }
    }

    static void AddElement(pugi::xml_node setting, const std::string& text) {
        AddValue(setting.append_child(HX_SETTING_ELEMENT), text);
    }

    static void AddValue(pugi::xml_node element, const std::string& text) {
        element.append_attribute(HX_SETTING_VALUE) = text.c_str();
    }

    const std::string& source_;
};

}  // namespace

std::string MakeSettingsDocument(const Json& request, const std::string& source) {
    pugi::xml_document document;
    Writer(source).Add(document.append_child(HX_SETTINGS_ROOT), request, "");
    std::ostringstream text;
    document.save(text, "", pugi::format_raw);
    return std::move(text).str();
}

void PutInFront(nlohmann::ordered_json& request, const char* key, const nlohmann::ordered_json& value) {
    nlohmann::ordered_json whole = nlohmann::ordered_json::object();
    whole[key] = value;
    for (auto& [other, held] : request.items()) {
        if (other != key) whole[other] = std::move(held);
    }
    request = std::move(whole);
}

}  // namespace tarn
