#include "host/report/ResultComparison.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "host/TextList.h"
#include "host/TextTable.h"

namespace tarn {

namespace {

const Json& At(const Json& json, const std::string& key) {
    static const Json kNone;
    const auto found = json.is_object() ? json.find(key) : json.end();
    return json.is_object() && found != json.end() ? *found : kNone;
}

const Json& At(const Json& json, const char* outer, const char* inner) {
    return At(At(json, outer), inner);
}

/// A value as a reader is shown it.
std::string Shown(const Json& value) {
    if (value.is_null()) return "";
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void AddFact(std::vector<ChangedFact>& facts, const std::string& what, const Json& before, const Json& after) {
    if (before != after) facts.push_back({what, Shown(before), Shown(after)});
}

/// The keys of both, in the order of the first one.
std::vector<std::string> KeysOf(const Json& before, const Json& after) {
    std::vector<std::string> keys;
    std::set<std::string> known;
    for (const Json* const each : {&before, &after}) {
        if (!each->is_object()) continue;
        for (const auto& item : each->items()) {
            if (known.insert(item.name).second) keys.push_back(item.name);
        }
    }
    return keys;
}

/// What JSON has no number for stands there as a text.
bool IsNumber(const Json& value) {
    return value.is_number() || (value.is_string() && (value == "nan" || value == "inf" || value == "-inf"));
}

/// A value whose change is a change of the result: numbers, what is decided, and what decides.
bool Counts(const Json& value, std::string_view key) {
    return IsNumber(value) || value.is_boolean() || (value.is_string() && key == "decision");
}

class Comparing {
 public:
    ResultComparison Run(const Json& before, const Json& after) {
        CompareProgram(At(before, "record"), At(after, "record"));
        if (At(before, "parts").is_array() || At(after, "parts").is_array()) {
            CompareParts(At(before, "parts"), At(after, "parts"));
        } else {
            CompareOne(before, after, "");
        }
        return std::move(found_);
    }

 private:
    void CompareProgram(const Json& before, const Json& after) {
        for (const char* const key : {"version", "commit"}) {
            AddFact(found_.program, key, At(before, key), At(after, key));
        }
        const Json& libraries = At(before, "libraries");
        const Json& librariesNow = At(after, "libraries");
        for (const std::string& name : KeysOf(libraries, librariesNow)) {
            AddFact(found_.program, name, At(libraries, name), At(librariesNow, name));
        }
    }

    void CompareParts(const Json& before, const Json& after) {
        for (const std::string& category : CategoriesOf(before, after)) {
            const Json& then = PartOf(before, category);
            const Json& now = PartOf(after, category);
            const auto isTested = [](const Json& part) { return At(part, "result").is_object(); };
            if (isTested(then) && isTested(now)) {
                CompareOne(At(then, "result"), At(now, "result"), category + ": ");
            } else if (isTested(then) != isTested(now) || then.is_null() != now.is_null()) {
                found_.tests.push_back({category, StateOf(then), StateOf(now)});
            }
        }
    }

    static std::vector<std::string> CategoriesOf(const Json& before, const Json& after) {
        std::vector<std::string> categories;
        for (const Json* const parts : {&before, &after}) {
            if (!parts->is_array()) continue;
            for (const Json& part : *parts) {
                const std::string category = Shown(At(part, "category"));
                if (std::ranges::find(categories, category) == categories.end()) categories.push_back(category);
            }
        }
        return categories;
    }
    static const Json& PartOf(const Json& parts, const std::string& category) {
        static const Json kNone;
        if (!parts.is_array()) return kNone;
        const auto found =
            std::ranges::find_if(parts, [&](const Json& part) { return Shown(At(part, "category")) == category; });
        return found == parts.end() ? kNone : *found;
    }
    static std::string StateOf(const Json& part) {
        return part.is_null() ? "" : At(part, "result").is_object() ? "tested" : "not tested";
    }

    void CompareOne(const Json& before, const Json& after, const std::string& part) {
        CompareData(At(before, "record", "data"), At(after, "record", "data"), part);
        for (const auto& [key, what] : {std::pair("arithmetic", "arithmetic"),
                                        {"significance_level", "significance level"},
                                        {"confidence_level", "confidence level"},
                                        {"missing", "missing values"}}) {
            AddFact(found_.manner, part + what, At(before, key), At(after, key));
        }
        CompareTests(ListOf(At(before, "tests")), ListOf(At(after, "tests")), part);
        CompareValues(At(before, "counts"), At(after, "counts"), {part + "counts", "", ""});
        CompareValues(At(before, "descriptives"), At(after, "descriptives"), {part + "descriptives", "", ""});
    }

    // ---- Data ----

    void CompareData(const Json& before, const Json& after, const std::string& part) {
        if (At(before, "sha256") == At(after, "sha256")) return;
        found_.data.push_back({part + "SHA-256", Shown(At(before, "sha256")), Shown(At(after, "sha256"))});
        AddFact(found_.data, part + "records", At(before, "records"), At(after, "records"));
        const Json& fields = At(before, "fields");
        const Json& fieldsNow = At(after, "fields");
        std::vector<std::string> names;
        for (const Json* const list : {&fields, &fieldsNow}) {
            for (const Json& field : *list) {
                const std::string name = Shown(At(field, "name"));
                if (std::ranges::find(names, name) == names.end()) names.push_back(name);
            }
        }
        for (const std::string& name : names)
            CompareField(FieldOf(fields, name), FieldOf(fieldsNow, name), part + name);
    }

    static const Json& FieldOf(const Json& fields, const std::string& name) {
        static const Json kNone;
        const auto found =
            std::ranges::find_if(fields, [&](const Json& field) { return Shown(At(field, "name")) == name; });
        return found == fields.end() ? kNone : *found;
    }

    void CompareField(const Json& before, const Json& after, const std::string& name) {
        if (before.is_null() || after.is_null()) {
            found_.data.push_back({name, before.is_null() ? "" : "there", after.is_null() ? "" : "there"});
            return;
        }
        const std::size_t known = found_.data.size();
        for (const auto& [key, what] : {std::pair("values", ", what counts"),
                                        {"level", ", level"},
                                        {"is_weight", ", is the weight"},
                                        {"missing", ", missing"}}) {
            AddFact(found_.data, name + what, At(before, key), At(after, key));
        }
        if (At(before, "sha256") == At(after, "sha256") || found_.data.size() > known) return;
        AddFact(found_.data, name + ", values", At(before, "sha256"), At(after, "sha256"));
    }

    // ---- Numbers ----

    /// Tests of the same kind on the same fields follow in the order in which they stand.
    void CompareTests(const Json& before, const Json& after, const std::string& part) {
        std::vector<bool> isMatched(after.size(), false);
        for (const Json& test : before) {
            const std::string name = NameOf(test);
            std::size_t place = 0;
            while (place < after.size() && (isMatched[place] || NameOf(after[place]) != name)) ++place;
            if (place == after.size()) {
                found_.tests.push_back({part + name, "there", ""});
                continue;
            }
            isMatched[place] = true;
            CompareValues(test, after[place], {part + name, "", ""});
        }
        for (std::size_t i = 0; i < after.size(); ++i) {
            if (!isMatched[i]) found_.tests.push_back({part + NameOf(after[i]), "", "there"});
        }
    }

    /// "mann-whitney of hours_after by arm"; of tests with one name the document's name tells them apart.
    static std::string NameOf(const Json& test) {
        std::vector<std::string> fields;
        for (const Json& field : At(test, "fields")) fields.push_back(Shown(field));
        const std::string group = Shown(At(test, "group"));
        std::string name = Shown(At(test, "name"));
        if (name.empty() || name == "kolmogorov-smirnov") name = Shown(At(test, "test"));
        return name + " of " + JoinList(fields) + (group.empty() ? "" : " by " + group);
    }

    struct Place {
        std::string of;
        std::string path;
        std::string_view key;
    };

    void CompareValues(const Json& before, const Json& after, const Place& place) {
        if (before.is_array() || after.is_array()) {
            const Json none;
            for (std::size_t i = 0; i < std::max(SizeOf(before), SizeOf(after)); ++i) {
                CompareValues(i < SizeOf(before) ? before[i] : none, i < SizeOf(after) ? after[i] : none,
                              {place.of, place.path + "[" + std::to_string(i) + "]", place.key});
            }
        } else if (before.is_object() || after.is_object()) {
            for (const std::string& key : KeysOf(before, after)) {
                CompareValues(At(before, key), At(after, key),
                              {place.of, place.path.empty() ? key : place.path + "." + key, key});
            }
        } else if (Counts(before, place.key) || Counts(after, place.key)) {
            ++found_.numberCount;
            if (before != after) found_.numbers.push_back({place.of, place.path, before, after});
        }
    }

    static const Json& ListOf(const Json& value) {
        static const Json kEmpty = Json::array();
        return value.is_array() ? value : kEmpty;
    }
    static std::size_t SizeOf(const Json& value) { return value.is_array() ? value.size() : 0; }

    ResultComparison found_;
};

// ---- For a reader ----

/// A hash is long enough to be told from another one by its beginning.
std::string FactText(const std::string& value) {
    constexpr std::size_t kHash = 64;
    constexpr std::size_t kBeginning = 12;
    if (value.empty()) return "not there";
    const bool isHash = value.size() == kHash && value.find_first_not_of("0123456789abcdef") == std::string::npos;
    return isHash ? value.substr(0, kBeginning) + "..." : value;
}

std::string TextOf(const std::vector<ChangedFact>& facts) {
    std::string text;
    for (const ChangedFact& fact : facts) {
        text += "   " + fact.what + ": " + FactText(fact.after) + ", was " + FactText(fact.before) + "\n";
    }
    return text;
}

std::string NumbersText(const std::vector<ChangedNumber>& numbers) {
    constexpr std::size_t kMost = 20;
    std::string text;
    for (std::size_t i = 0; i < std::min(numbers.size(), kMost);) {
        const std::string& of = numbers[i].of;
        TextTable table({{"   "}, {"before", Alignment::kRight}, {"now", Alignment::kRight}});
        for (; i < std::min(numbers.size(), kMost) && numbers[i].of == of; ++i) {
            const auto shown = [](const Json& value) { return value.is_null() ? "none" : Shown(value); };
            table.AddRow({"   " + numbers[i].place, shown(numbers[i].before), shown(numbers[i].after)});
        }
        text += of + "\n" + table.ToText();
    }
    if (numbers.size() > kMost) text += "and " + std::to_string(numbers.size() - kMost) + " more\n";
    return text;
}

std::string CountText(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " value" : " values");
}

Json FactsJson(const std::vector<ChangedFact>& facts) {
    Json json = Json::array();
    const auto orNull = [](const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); };
    for (const ChangedFact& fact : facts) {
        json.push_back({{"what", fact.what}, {"before", orNull(fact.before)}, {"after", orNull(fact.after)}});
    }
    return json;
}

}  // namespace

ResultComparison CompareResults(const Json& before, const Json& after) {
    return Comparing().Run(before, after);
}

std::string ComparisonText(const ResultComparison& comparison) {
    std::string text;
    const auto add = [&](const char* title, const std::vector<ChangedFact>& facts) {
        if (!facts.empty()) text += std::string(title) + "\n" + TextOf(facts);
    };
    add("other data", comparison.data);
    add("another way to compute", comparison.manner);
    add("other tests", comparison.tests);
    const std::string all = CountText(comparison.numberCount);
    if (!comparison.numbers.empty()) {
        text +=
            std::to_string(comparison.numbers.size()) + " of " + all + " changed\n" + NumbersText(comparison.numbers);
    } else {
        text += std::string(comparison.IsSame() ? "same to the last digit" : "numbers the same to the last digit") +
                ": " + all + "\n";
    }
    add("by another program", comparison.program);
    return text;
}

Json ComparisonJson(const ResultComparison& comparison) {
    Json json{{"format", "tarn-comparison-1"},
              {"same", comparison.IsSame()},
              {"program", FactsJson(comparison.program)},
              {"data", FactsJson(comparison.data)},
              {"manner", FactsJson(comparison.manner)},
              {"tests", FactsJson(comparison.tests)},
              {"values", comparison.numberCount},
              {"changed", Json::array()}};
    for (const ChangedNumber& number : comparison.numbers) {
        json["changed"].push_back(
            {{"of", number.of}, {"place", number.place}, {"before", number.before}, {"after", number.after}});
    }
    return json;
}

}  // namespace tarn
