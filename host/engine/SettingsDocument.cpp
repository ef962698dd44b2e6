#include "host/engine/SettingsDocument.h"

#include <pugixml.hpp>

#include "host/NumberText.h"
#include "host/engine/SettingShape.h"
#include "platform/hx/HXDocuments.h"
#include "runtime/common/XmlNodes.h"

namespace tarn {

namespace {

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
        pugi::xml_node setting = XmlNodes::AppendElement(parent, HX_SETTING);
        XmlNodes::AppendExactAttribute(setting, HX_SETTING_NAME, key.c_str());
        const auto take = [&](const char* kind) { XmlNodes::AppendExactAttribute(setting, HX_SETTING_KIND, kind); };
        switch (shape) {
            case SettingShape::kString:
                take(HX_KIND_STRING);
                AddValue(setting, value.get<std::string>());
                break;
            case SettingShape::kDouble:
                take(HX_KIND_DOUBLE);
                AddValue(setting, ExactText(value.get<double>()));
                break;
            case SettingShape::kInt:
                take(HX_KIND_INT);
                AddValue(setting, std::to_string(value.get<int>()));
                break;
            case SettingShape::kBool:
                take(HX_KIND_BOOL);
                AddValue(setting, value.get<bool>() ? HX_TRUE : HX_FALSE);
                break;
            case SettingShape::kList:
                take(HX_KIND_LIST);
                Add(setting, value, path + ".");
                break;
            case SettingShape::kStringVector:
                take(HX_KIND_STRING_VECTOR);
                for (const Json& element : value) AddElement(setting, ElementText(element));
                break;
            case SettingShape::kDoubleVector:
                take(HX_KIND_DOUBLE_VECTOR);
                for (const Json& element : value) AddElement(setting, ExactText(element.get<double>()));
                break;
            case SettingShape::kIntVector:
                take(HX_KIND_INT_VECTOR);
                for (const Json& element : value) AddElement(setting, std::to_string(element.get<int>()));
                break;
            case SettingShape::kListVector:
                take(HX_KIND_LIST_VECTOR);
                for (const Json& element : value)
                    Add(XmlNodes::AppendElement(setting, HX_SETTING_LIST), element, path + ".");
                break;
            case SettingShape::kAbsent:
                break;
        }
    }

    static void AddElement(pugi::xml_node setting, const std::string& text) {
        AddValue(XmlNodes::AppendElement(setting, HX_SETTING_ELEMENT), text);
    }

    static void AddValue(pugi::xml_node element, const std::string& text) {
        XmlNodes::AppendExactAttribute(element, HX_SETTING_VALUE, text.c_str());
    }

    const std::string& source_;
};

}  // namespace

std::string MakeSettingsDocument(const Json& request, const std::string& source) {
    pugi::xml_document document;
    Writer(source).Add(XmlNodes::AppendElement(document, HX_SETTINGS_ROOT), request, "");
    return XmlNodes::TextOf(document);
}

void PutInFront(Json& request, const char* key, const Json& value) {
    Json whole = Json::object();
    whole[key] = value;
    for (auto& [other, held] : request.items()) {
        if (other != key) whole[other] = std::move(held);
    }
    request = std::move(whole);
}

}  // namespace tarn
