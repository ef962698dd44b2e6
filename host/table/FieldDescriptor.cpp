#include "host/table/FieldDescriptor.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/InputError.h"
#include "host/Json.h"
#include "host/JsonDocument.h"
#include "host/table/CellValue.h"

namespace tarn {

namespace {

using Keys = std::span<const std::string_view>;

template <typename Value>
using Spelling = std::pair<std::string_view, Value>;

constexpr Spelling<FieldType> kTypes[] = {{"number", FieldType::kNumber},    {"integer", FieldType::kInteger},
                                          {"string", FieldType::kString},    {"boolean", FieldType::kBoolean},
                                          {"date", FieldType::kDate},        {"time", FieldType::kTime},
                                          {"datetime", FieldType::kDateTime}};

constexpr Spelling<FieldLevel> kLevels[] = {
    {"continuous", FieldLevel::kContinuous}, {"nominal", FieldLevel::kNominal}, {"ordinal", FieldLevel::kOrdinal}};

constexpr std::string_view kFields = "fields";
constexpr std::string_view kWeightField = "weightField";
constexpr std::string_view kMissingValues = "missingValues";
constexpr std::string_view kName = "name";
constexpr std::string_view kTitle = "title";
constexpr std::string_view kType = "type";
constexpr std::string_view kLevel = "level";
constexpr std::string_view kCategories = "categories";
constexpr std::string_view kCategoriesOrdered = "categoriesOrdered";
constexpr std::string_view kValue = "value";
constexpr std::string_view kLabel = "label";

constexpr std::string_view kTableKeys[] = {kFields, kWeightField, kMissingValues};
constexpr std::string_view kFieldKeys[] = {kName,         kTitle, kType, kLevel, kCategories, kCategoriesOrdered,
                                           kMissingValues};
constexpr std::string_view kValueKeys[] = {kValue, kLabel};

// The other keys of a Table Schema. They annotate or constrain the data; one that would make a cell read in another
// way shows when the cell can't be read in ours.
constexpr std::string_view kIgnoredTableKeys[] = {
    "$schema", "name", "title", "description", "fieldsMatch", "primaryKey", "uniqueKeys", "foreignKeys", "examples"};
constexpr std::string_view kIgnoredFieldKeys[] = {
    "description", "format",     "constraints", "rdfType",     "example",  "examples", "decimalChar",
    "groupChar",   "bareNumber", "trueValues",  "falseValues", "itemType", "delimiter"};

std::string Shown(const Json& value) {
    if (value.is_string()) return Quoted(value.Text());
    return value.is_structured() ? std::string("an ") + value.type_name() : value.dump();
}

// A number as the text of a cell that holds it: whole numbers with all their digits.
std::string TextOfNumber(const Json& number) {
    if (number.is_number_integer()) return number.dump();
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", number.get<double>());
    return text;
}

// Reads the parts of a descriptor. A key is named by its path from the top, like fields[0].type.
class DescriptorReader {
 public:
    explicit DescriptorReader(std::string sourceName) : sourceName_(std::move(sourceName)) {}

    TableDescriptor ReadTable(const Json& table) const {
        if (!table.is_object()) throw InputError(sourceName_ + ": " + Shown(table) + "; expected an object");
        CheckKeys(table, "", kTableKeys, kIgnoredTableKeys);
        TableDescriptor descriptor;
        descriptor.sourceName = sourceName_;
        if (const Json* value = Find(table, kWeightField)) {
            descriptor.weightField = ReadText(*value, std::string(kWeightField));
        }
        if (const Json* values = Find(table, kMissingValues)) {
            descriptor.namesMissingTexts = true;
            descriptor.missingTexts.clear();
            for (const DescribedValue& value : ReadValues(*values, std::string(kMissingValues))) {
                descriptor.missingTexts.emplace_back(TrimBlanks(value.text));
            }
        }
        if (const Json* fields = Find(table, kFields)) descriptor.fields = ReadFields(*fields);
        return descriptor;
    }

 private:
    std::vector<FieldDescriptor> ReadFields(const Json& fields) const {
        CheckList(fields, std::string(kFields));
        std::vector<FieldDescriptor> descriptors;
        std::unordered_set<std::string> names;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const std::string path = Element(kFields, i);
            descriptors.push_back(ReadField(fields[i], path));
            const std::string& name = descriptors.back().name;
            if (!names.insert(name).second) Fail(Member(path, kName), Quoted(name) + " a second time", "unique names");
        }
        return descriptors;
    }

    FieldDescriptor ReadField(const Json& field, const std::string& path) const {
        if (!field.is_object()) Fail(path, Shown(field), "an object");
        CheckKeys(field, path, kFieldKeys, kIgnoredFieldKeys);
        FieldDescriptor descriptor;
        const Json* name = Find(field, kName);
        if (name == nullptr) Fail(path, "no key " + Quoted(kName), "the name of a field");
        descriptor.name = ReadText(*name, Member(path, kName));
        if (const Json* value = Find(field, kTitle)) descriptor.title = ReadText(*value, Member(path, kTitle));
        if (const Json* value = Find(field, kType)) descriptor.type = ReadChoice(*value, Member(path, kType), kTypes);
        if (const Json* value = Find(field, kLevel))
            descriptor.level = ReadChoice(*value, Member(path, kLevel), kLevels);
        if (const Json* value = Find(field, kCategories)) {
            descriptor.categories = ReadValues(*value, Member(path, kCategories));
        }
        if (const Json* value = Find(field, kCategoriesOrdered)) {
            if (!value->is_boolean()) Fail(Member(path, kCategoriesOrdered), Shown(*value), "true or false");
            descriptor.categoriesOrdered = value->get<bool>();
        }
        if (const Json* value = Find(field, kMissingValues)) {
            descriptor.missingValues = ReadValues(*value, Member(path, kMissingValues));
        }
        return descriptor;
    }

    std::vector<DescribedValue> ReadValues(const Json& list, const std::string& path) const {
        CheckList(list, path);
        std::vector<DescribedValue> values;
        for (std::size_t i = 0; i < list.size(); ++i) values.push_back(ReadValue(list[i], Element(path, i)));
        return values;
    }

    // A text, a number, or either of them with a label.
    DescribedValue ReadValue(const Json& json, const std::string& path) const {
        if (json.is_string()) return {json.get<std::string>(), std::nullopt, {}};
        if (json.is_number()) return {TextOfNumber(json), json.get<double>(), {}};
        const Json* value = json.is_object() ? Find(json, kValue) : nullptr;
        if (value == nullptr) Fail(path, Shown(json), "a text, a number or an object with " + Quoted(kValue));
        CheckKeys(json, path, kValueKeys, {});
        if (value->is_structured()) Fail(Member(path, kValue), Shown(*value), "a text or a number");
        DescribedValue described = ReadValue(*value, Member(path, kValue));
        if (const Json* label = Find(json, kLabel)) described.label = ReadText(*label, Member(path, kLabel));
        return described;
    }

    std::string ReadText(const Json& value, const std::string& path) const {
        if (!value.is_string()) Fail(path, Shown(value), "a text");
        return value.get<std::string>();
    }

    template <typename Value, std::size_t count>
    Value ReadChoice(const Json& value, const std::string& path, const Spelling<Value> (&choices)[count]) const {
        std::vector<std::string_view> texts;
        for (const auto& [text, choice] : choices) {
            if (value == text) return choice;
            texts.push_back(text);
        }
        Fail(path, Shown(value), Alternatives(texts));
    }

    void CheckList(const Json& value, const std::string& path) const {
        if (!value.is_array()) Fail(path, Shown(value), "an array");
    }

    void CheckKeys(const Json& object, const std::string& path, Keys known, Keys ignored) const {
        for (const auto& [key, value] : object.items()) {
            const auto isKey = [&key = key](std::string_view other) { return other == key; };
            if (std::ranges::none_of(known, isKey) && std::ranges::none_of(ignored, isKey)) {
                Fail(Member(path, key), "an unknown key", Alternatives(known));
            }
        }
    }

    static const Json* Find(const Json& object, std::string_view key) {
        const auto found = object.find(key);
        return found == object.end() ? nullptr : &*found;
    }

    static std::string Member(const std::string& path, std::string_view key) {
        return path.empty() ? std::string(key) : path + "." + std::string(key);
    }

    static std::string Element(std::string_view path, std::size_t index) {
        return std::string(path) + "[" + std::to_string(index) + "]";
    }

    [[noreturn]] void Fail(const std::string& path, const std::string& found, const std::string& expected) const {
        throw InputError(sourceName_ + ": " + path + ": " + found + "; expected " + expected);
    }

    std::string sourceName_;
};

}  // namespace

std::string_view NameOf(FieldType type) {
    return std::ranges::find(kTypes, type, &Spelling<FieldType>::second)->first;
}

std::string_view NameOf(FieldLevel level) {
    return std::ranges::find(kLevels, level, &Spelling<FieldLevel>::second)->first;
}

TableDescriptor ReadTableDescriptor(ByteSource& source) {
    return DescriptorReader(source.Name()).ReadTable(ReadJson(source));
}

}  // namespace tarn
