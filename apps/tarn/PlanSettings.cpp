#include "apps/tarn/PlanSettings.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "platform/common/QKXML.h"
#include "support/QKVecValue.h"

namespace tarn {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kTests = "tests";

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
        switch (value.type()) {
            case Json::value_t::null:
                break;
            case Json::value_t::string:
                settings.AddSetting(key, value.get<std::string>());
                break;
            case Json::value_t::boolean:
                settings.AddSetting(key, value.get<bool>());
                break;
            case Json::value_t::object:
                settings.AddSetting(key, Object(value, path + "."));
                break;
            case Json::value_t::array:
                AddArray(settings, key, value, path);
                break;
            default:
                if (IsInt(value)) {
                    settings.AddSetting(key, value.get<int>());
                } else {
                    settings.AddSetting(key, value.get<double>());
                }
        }
    }

    [[noreturn]] void Fail(const std::string& path, const std::string& expected) const {
        throw InputError(source_ + ": key " + Quoted(path) + ": expected " + expected);
    }

 private:
    void AddArray(QKSettings& settings, const std::string& key, const Json& array, const std::string& path) const {
        const auto all = [&](auto predicate) { return std::all_of(array.begin(), array.end(), predicate); };
        const auto isObject = [](const Json& element) { return element.is_object(); };
        const auto isNumber = [](const Json& element) { return element.is_number(); };
        const auto isScalar = [](const Json& element) { return element.is_number() || element.is_string(); };
        if (!array.empty() && all(isObject)) {
            std::vector<QKSettings> elements;
            for (const Json& element : array) elements.push_back(Object(element, path + "."));
            AddVecSetting(settings, key, elements, false);
        } else if (!array.empty() && all(IsInt)) {
            AddVecSetting(settings, key, array.get<std::vector<int>>(), false);
        } else if (!array.empty() && all(isNumber)) {
            AddVecSetting(settings, key, array.get<std::vector<double>>(), false);
        } else if (all(isScalar)) {
            std::vector<std::string> elements;
            for (const Json& element : array) elements.push_back(TextOf(element));
            AddVecSetting(settings, key, elements, false);
        } else {
            Fail(path, "an array of strings and numbers, or of objects alone");
        }
    }

    /// Whether it is written as a whole number and fits the settings' own.
    static bool IsInt(const Json& value) {
        if (value.is_number_unsigned()) return value.get<std::uint64_t>() <= std::numeric_limits<int>::max();
        if (!value.is_number_integer()) return false;
        const auto number = value.get<std::int64_t>();
        return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
    }

    static std::string TextOf(const Json& element) {
        return element.is_string() ? element.get<std::string>() : QKXML::ReplaceSep(element.get<double>(), "%.15g");
    }

    const std::string& source_;
};

void AddTests(PlanSettings& plan, const Json& tests, const Converter& convert) {
    if (!tests.is_array()) convert.Fail(kTests, "an array of tests, each an object with the test's name as its one key");
    for (std::size_t i = 0; i < tests.size(); ++i) {
        const std::string path = std::string(kTests) + "[" + std::to_string(i) + "]";
        const Json& test = tests[i];
        if (!test.is_object() || test.size() != 1) convert.Fail(path, "an object with the test's name as its one key");
        const std::string name = test.begin().key();
        const std::string inner = path + "." + name;
        if (!test.begin()->is_object()) convert.Fail(inner, "an object with the keys of the test");
        plan.settings.AddSetting(name, convert.Object(*test.begin(), inner + "."));
        ++plan.requestedTests;
    }
}

}  // namespace

PlanSettings ReadPlan(ByteSource& source) {
    const Json document = ReadJson(source);
    if (!document.is_object()) throw InputError(source.Name() + ": expected a JSON object with the key \"tests\"");
    const Converter convert(source.Name());
    PlanSettings plan;
    for (const auto& [key, value] : document.items()) {
        if (key == kTests) {
            AddTests(plan, value, convert);
        } else {
            convert.Add(plan.settings, key, value, key);
        }
    }
    return plan;
}

}  // namespace tarn
