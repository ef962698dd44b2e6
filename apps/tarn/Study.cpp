#include "apps/tarn/Study.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/analysis/TableLook.h"
#include "host/table/FieldDescriptor.h"

namespace tarn {

namespace {

// The formats of results, which have a study in their record.
constexpr const char* kResultFormat = "tarn-result-2";
constexpr const char* kPartsFormat = "tarn-parts-1";

/// Of more categories a study keeps the number alone.
constexpr std::size_t kMostCategories = 100;

Json FieldOf(const Column& column) {
    Json field{{"name", column.name}, {"type", NameOf(column.type)}, {"level", NameOf(column.level)}};
    if (!column.IsCategorical()) return field;
    if (column.categories.size() > kMostCategories) {
        field["categories"] = column.categories.size();
        return field;
    }
    field["categories"] = Json::array();
    for (const Category& category : column.categories) field["categories"].push_back(ShownCategory(column, category));
    return field;
}

Json DataOf(const Table& table, const std::string& path) {
    Json data{{"file", path}, {"records", table.RowCount()}, {"fields", Json::array()}};
    for (const Column& column : table.Columns()) data["fields"].push_back(FieldOf(column));
    return data;
}

[[noreturn]] void Fail(const std::string& path, const std::string& mistake) {
    throw InputError(path + ": " + mistake);
}

/// The value of a key of that kind; null where it isn't there.
const Json* Find(const Json& json, const char* key, Json::value_t type, const std::string& path, const char* expected) {
    const auto found = json.find(key);
    if (found == json.end()) return nullptr;
    if (found->type() != type) Fail(path, std::string(key) + ": expected " + expected);
    return &*found;
}

/// The same where null, too, says that it isn't there.
const Json* FindIfAny(const Json& json, const char* key, Json::value_t type, const std::string& path,
                      const char* expected) {
    const auto found = json.find(key);
    return found == json.end() || found->is_null() ? nullptr : Find(json, key, type, path, expected);
}

bool IsOfOption(const Json& value) {
    const auto isText = [](const Json& each) { return each.is_string(); };
    return value.is_string() || value.is_number() || value.is_boolean() ||
           (value.is_array() && std::ranges::all_of(value, isText));
}

/// "a, b" of the categories of a field, or how many there are.
std::string Shown(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) return value.dump();
    std::vector<std::string> texts;
    for (const Json& each : value) texts.push_back(each.is_string() ? each.get<std::string>() : each.dump());
    return JoinList(texts);
}

/// The words of a study's option as they are typed.
std::string WordsOf(const StudyOption& option) {
    const std::string name = "--" + option.name;
    const Json& value = option.value;
    if (value.is_boolean()) return value.get<bool>() ? name : "";
    if (value.is_string()) return name + " " + ShellWord(value.get<std::string>());
    if (!value.is_array()) return name + " " + ShellWord(value.dump());
    std::vector<std::string> parts;
    for (const auto& part : value) parts.push_back(part.is_string() ? part.get<std::string>() : part.dump());
    return name + " " + ShellWord(JoinList(parts, ","));
}

Json OptionsJson(const Study& study) {
    Json options = Json::object();
    for (const StudyOption& option : study.options) options[option.name] = option.value;
    return options;
}

void ReadOptions(const Json& json, const std::string& path, Study& study) {
    const Json* options = Find(json, "options", Json::value_t::object, path, "an object");
    if (options == nullptr) return;
    for (const Json::Member& member : options->items()) {
        if (!IsOfOption(member.value)) {
            Fail(path, "options." + member.name + ": expected a text, a number, true or a list of texts");
        }
        study.options.push_back({member.name, member.value});
    }
}

Study StudyOfFile(const Json& json, const std::string& path) {
    for (const Json::Member& member : json.items()) {
        static constexpr std::array<std::string_view, 5> kKeys{"format", "tarn", "data", "formula", "options"};
        if (std::ranges::find(kKeys, member.name) == kKeys.end()) {
            Fail(path, Quoted(member.name) + " is no key of a study; expected one of " + JoinList(kKeys));
        }
    }
    Study study;
    if (const Json* data = Find(json, "data", Json::value_t::object, path, "an object")) {
        study.data = *data;
        const Json* file = Find(*data, "file", Json::value_t::string, path, "the name of a table");
        if (file != nullptr) study.dataPath = file->get<std::string>();
    }
    if (const Json* formula = Find(json, "formula", Json::value_t::string, path, "a text")) {
        study.formula = formula->get<std::string>();
    }
    ReadOptions(json, path, study);
    return study;
}

/// The table that a result was made from, as it was named; "" where it doesn't say.
std::string FileOfRecord(const Json& result) {
    const Json* place = &result;
    for (const char* const key : {"record", "data", "file"}) {
        const auto found = place->find(key);
        if (found == place->end()) return "";
        place = &*found;
    }
    return place->is_string() ? place->get<std::string>() : "";
}

/// That of the result, or of the first part that was tested.
std::string TableOfResult(const Json& result) {
    if (std::string file = FileOfRecord(result); !file.empty()) return file;
    const auto parts = result.find("parts");
    if (parts == result.end() || !parts->is_array()) return "";
    for (const Json& part : *parts) {
        const auto ofPart = part.find("result");
        std::string file = ofPart == part.end() ? "" : FileOfRecord(*ofPart);
        if (!file.empty()) return file;
    }
    return "";
}

Study StudyOfResult(Json result, const std::string& path) {
    const Json* const record = FindIfAny(result, "record", Json::value_t::object, path, "an object");
    if (record == nullptr) {
        Fail(path, "has no record of how it was made; expected a result that tarn analyze --format json wrote");
    }
    const Json* const request = FindIfAny(*record, "request", Json::value_t::object, path, "an object");
    const bool hasCommand = request != nullptr && request->contains("command");
    const Json command = hasCommand ? (*request)["command"] : Json();
    if (command != "analyze") {
        Fail(path, "record.request.command: " + (command.is_string() ? Quoted(command.get<std::string>()) : "none") +
                       "; expected \"analyze\", a result that tarn analyze made");
    }
    Study study;
    if (const Json* formula = FindIfAny(*request, "formula", Json::value_t::string, path, "a text")) {
        study.formula = formula->get<std::string>();
    }
    ReadOptions(*request, path, study);
    study.dataPath = TableOfResult(result);
    study.result = std::move(result);
    return study;
}

}  // namespace

std::string WordsOf(const Study& study) {
    std::string request = "tarn " + study.command;
    if (!study.dataPath.empty()) request += " " + ShellWord(study.dataPath);
    if (!study.formula.empty()) request += " " + ShellWord(study.formula);
    for (const StudyOption& option : study.options) {
        if (const std::string words = WordsOf(option); !words.empty()) request += " " + words;
    }
    return request;
}

Json RequestOf(const Study& study) {
    return {{"command", study.command},
            {"words", WordsOf(study)},
            {"formula", study.formula.empty() ? Json(nullptr) : Json(study.formula)},
            {"options", OptionsJson(study)}};
}

std::string StudyText(const Study& study, const Table& table) {
    Json json{{"format", kStudyFormat}, {"tarn", TARN_VERSION}, {"data", DataOf(table, study.dataPath)}};
    if (!study.formula.empty()) json["formula"] = study.formula;
    json["options"] = OptionsJson(study);
    return json.dump(2) + "\n";
}

Study ReadStudy(const std::string& path) {
    ByteSource source(path);
    Json json = ReadJson(source);
    const auto format = json.is_object() ? json.find("format") : json.end();
    if (json.is_object() && format != json.end()) {
        if (*format == kResultFormat || *format == kPartsFormat) return StudyOfResult(std::move(json), path);
        if (*format == kStudyFormat) return StudyOfFile(json, path);
    }
    Fail(path, "is no study; expected a file that tarn analyze --save or --format json wrote");
}

std::vector<std::string> DifferencesFrom(const Json& data, const Table& table) {
    std::vector<std::string> differences;
    if (!data.is_object()) return differences;
    const auto add = [&](const std::string& difference) {
        differences.push_back("other than in the study: " + difference);
    };
    if (const auto records = data.find("records"); records != data.end() && *records != table.RowCount()) {
        add("the table has " + std::to_string(table.RowCount()) + " records, the study " + records->dump());
    }
    const auto fields = data.find("fields");
    if (fields == data.end() || !fields->is_array()) return differences;
    std::vector<std::string> known;
    for (const Json& then : *fields) {
        if (!then.is_object() || !then.contains("name") || !then["name"].is_string()) continue;
        const std::string name = then["name"].get<std::string>();
        known.push_back(name);
        const int index = table.FindColumn(name);
        if (index == Table::kNoColumn) {
            add("the table has no field " + Quoted(name));
            continue;
        }
        const Json now = FieldOf(table.Columns()[static_cast<std::size_t>(index)]);
        for (const char* key : {"type", "level", "categories"}) {
            const Json before = then.contains(key) ? then[key] : Json();
            const Json after = now.contains(key) ? now[key] : Json();
            // A field that changes its level has other categories by that.
            if (before == after || (std::string_view(key) == "categories" && (before.is_null() || after.is_null())))
                continue;
            add(std::string(key) + " of " + name + ": " + Shown(after) + ", in the study " + Shown(before));
        }
    }
    std::vector<std::string> added;
    for (const Column& column : table.Columns()) {
        if (std::ranges::find(known, column.name) == known.end()) added.push_back(column.name);
    }
    if (!added.empty()) add("the table has further fields: " + JoinList(added));
    return differences;
}

}  // namespace tarn
