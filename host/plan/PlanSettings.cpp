#include "host/plan/PlanSettings.h"

#include <string>
#include <vector>

#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/engine/KnownKeys.h"
#include "host/engine/PassedOver.h"
#include "host/engine/PlanTestNames.h"
#include "host/engine/SettingShape.h"
#include "support/QKVecValue.h"

namespace tarn {

namespace {

/// Turns JSON values into settings and knows where it stands, for its messages.
class Converter {
 public:
    explicit Converter(const std::string& source) : source_(source) {}

    QKSettings Object(const Json& object, const std::string& path) const {
        QKSettings settings;
        for (const auto& [key, value] : object.items()) Add(settings, key, value, path + key);
        return settings;
    }

    void Add(QKSettings& settings, const std::string& key, const Json& value, const std::string& path) const {
        switch (ShapeOf(value, source_, path)) {
            case SettingShape::kAbsent:
                break;
            case SettingShape::kString:
                settings.AddSetting(key, value.get<std::string>());
                break;
            case SettingShape::kDouble:
                settings.AddSetting(key, value.get<double>());
                break;
            case SettingShape::kInt:
                settings.AddSetting(key, value.get<int>());
                break;
            case SettingShape::kBool:
                settings.AddSetting(key, value.get<bool>());
                break;
            case SettingShape::kList:
                settings.AddSetting(key, Object(value, path + "."));
                break;
            case SettingShape::kStringVector:
                AddVector<std::string>(settings, key, value, ElementText);
                break;
            case SettingShape::kDoubleVector:
                AddVector<double>(settings, key, value, [](const Json& element) { return element.get<double>(); });
                break;
            case SettingShape::kIntVector:
                AddVector<int>(settings, key, value, [](const Json& element) { return element.get<int>(); });
                break;
            case SettingShape::kListVector:
                AddVector<QKSettings>(settings, key, value,
                                      [&](const Json& element) { return Object(element, path + "."); });
                break;
        }
    }

    std::string PlanTest(const std::string& name, const Json& entry, const std::string& path) const {
        return PlanTestName(name, entry, source_, path);
    }

    [[noreturn]] void Fail(const std::string& path, const std::string& expected) const {
        FailAtKey(source_, path, expected);
    }

 private:
    template <typename T, typename Convert>
    static void AddVector(QKSettings& settings, const std::string& key, const Json& array, Convert convert) {
        std::vector<T> elements;
        for (const Json& element : array) elements.push_back(convert(element));
        AddVecSetting(settings, key, elements, false);
    }

    const std::string& source_;
};

void AddTests(PlanSettings& plan, const Json& tests, const Converter& convert) {
    constexpr const char* kOneTest = "an object with the test's name as its one key";
    if (!tests.is_array()) convert.Fail(kPlanTests, std::string("an array of tests, each ") + kOneTest);
    for (std::size_t i = 0; i < tests.size(); ++i) {
        const std::string path = std::string(kPlanTests) + "[" + std::to_string(i) + "]";
        const Json& test = tests[i];
        if (!test.is_object() || test.size() != 1) convert.Fail(path, kOneTest);
        const std::string name = test.begin().key();
        const std::string inner = path + "." + name;
        if (!test.begin()->is_object()) convert.Fail(inner, "an object with the keys of the test");
        plan.settings.AddSetting(convert.PlanTest(name, *test.begin(), inner),
                                 convert.Object(*test.begin(), inner + "."));
    }
}

}  // namespace

PlanSettings ReadPlan(ByteSource& source) {
    Json document = ReadJson(source);
    if (!document.is_object()) throw InputError(source.Name() + ": expected a JSON object with the key \"tests\"");
    const Converter convert(source.Name());
    PlanSettings plan;
    plan.fields = NamedFields(document);
    for (const auto& [key, value] : document.items()) {
        if (key == kPlanTests) {
            if (!value.is_null()) AddTests(plan, value, convert);
        } else {
            convert.Add(plan.settings, key, value, key);
        }
    }
    plan.passedOver = PassedOverInPlan(document, source.Name());
    plan.document = std::move(document);
    return plan;
}

bool IsTrue(const QKSettings& settings, const char* key) {
    bool isTrue = false;
    settings.GetSettingValByName(key, isTrue);
    return isTrue;
}

bool IsTrue(const Json& request, const char* key) {
    const auto value = request.find(key);
    if (value == request.end()) return false;
    QKSettings settings;
    Converter("the request").Add(settings, key, *value, key);
    return IsTrue(settings, key);
}

}  // namespace tarn
