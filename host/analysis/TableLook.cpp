#include "host/analysis/TableLook.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/InputError.h"
#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/beyond/NamePlaces.h"
#include "host/engine/InputNotes.h"
#include "host/table/CellValue.h"
#include "host/table/LocalNumber.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

/// Words that are usually ranked, from the lowest to the highest. A field with three of them or more, and no other
/// ones, has their order.
constexpr std::array<std::array<std::string_view, 9>, 12> kScales{{
    {"strongly disagree", "disagree", "somewhat disagree", "neutral", "neither agree nor disagree", "somewhat agree",
     "agree", "strongly agree"},
    {"very dissatisfied", "dissatisfied", "neutral", "satisfied", "very satisfied"},
    {"placebo", "control", "none", "very low", "low", "medium", "high", "very high"},
    {"none", "low", "moderate", "high"},
    {"very bad", "bad", "very poor", "poor", "fair", "good", "very good", "excellent"},
    {"never", "rarely", "seldom", "sometimes", "often", "usually", "always"},
    {"none", "minimal", "mild", "moderate", "severe", "very severe"},
    {"no", "a little", "some", "a lot"},
    {"small", "medium", "large"},
    {"xs", "s", "m", "l", "xl", "xxl"},
    {"cold", "warm", "hot"},
    {"primary", "secondary", "tertiary"},
}};

constexpr std::array<std::string_view, 14> kIdentifierWords = {
    "id",   "nr",      "no",          "number",     "key", "code",  "patient",
    "case", "subject", "participant", "respondent", "row", "index", "pid"};

/// Names of a first and a second measurement.
constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kPairs{{{"before", "after"},
                                                                               {"pre", "post"},
                                                                               {"baseline", "followup"},
                                                                               {"baseline", "end"},
                                                                               {"first", "second"},
                                                                               {"left", "right"},
                                                                               {"t0", "t1"},
                                                                               {"t1", "t2"},
                                                                               {"1", "2"}}};

constexpr std::size_t kMostShown = 5;
constexpr std::size_t kMostGroups = 10;
constexpr std::size_t kMostListed = 30;

std::string Number(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string Counted(std::size_t count, const char* one, const char* more) {
    return std::to_string(count) + " " + (count == 1 ? one : more);
}

std::string Lowered(std::string_view text) {
    std::string lowered(TrimBlanks(text));
    std::ranges::transform(lowered, lowered.begin(), [](unsigned char c) { return std::tolower(c); });
    return lowered;
}

/// Whether a name has one of the words for what tells cases apart, by itself or apart from the rest: "patient_id".
bool IsNamedLikeIdentifier(const std::string& name) {
    const std::string lowered = Lowered(name);
    std::string word;
    const auto isWord = [&] { return std::ranges::find(kIdentifierWords, word) != kIdentifierWords.end(); };
    for (const char c : lowered + "_") {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            word += c;
            continue;
        }
        if (isWord()) return true;
        word.clear();
    }
    return name.size() > 2 && name.ends_with("ID");
}

/// A field with what its cells show.
struct Seen {
    const Column* column = nullptr;
    std::vector<double> values;       // of a continuous field, ascending, without the missing ones
    std::vector<std::size_t> counts;  // of a categorical field, by category
    std::size_t missing = 0;
    std::size_t different = 0;
    bool isIdentifier = false;

    bool IsNumber() const { return !column->IsCategorical(); }
    std::size_t Present() const {
        std::size_t sum = values.size();
        for (const std::size_t count : counts) sum += count;
        return sum;
    }
    bool AreWhole() const {
        return std::ranges::all_of(values, [](double value) { return value == std::floor(value); });
    }
};

bool LooksLikeIdentifier(const Seen& seen) {
    constexpr std::size_t kLeast = 5;
    const std::size_t present = seen.Present();
    if (present < kLeast || seen.missing > 0 || seen.different != present) return false;
    if (!seen.IsNumber()) return true;
    if (!seen.AreWhole()) return false;
    const bool isConsecutive = seen.values.back() - seen.values.front() + 1 == static_cast<double>(present);
    return isConsecutive || IsNamedLikeIdentifier(seen.column->name);
}

Seen See(const Table& table, std::size_t index) {
    Seen seen;
    seen.column = &table.Columns()[index];
    seen.counts.assign(seen.column->categories.size(), 0);
    for (const double cell : table.Cells(index)) {
        if (cell == (seen.IsNumber() ? kMissingNumber : kMissingCategory)) {
            ++seen.missing;
        } else if (seen.IsNumber()) {
            seen.values.push_back(cell);
        } else {
            ++seen.counts[static_cast<std::size_t>(cell)];
        }
    }
    std::ranges::sort(seen.values);
    for (std::size_t i = 0; i < seen.values.size(); ++i) {
        if (i == 0 || seen.values[i] != seen.values[i - 1]) ++seen.different;
    }
    seen.different += static_cast<std::size_t>(std::ranges::count_if(seen.counts, [](std::size_t n) { return n > 0; }));
    seen.isIdentifier = LooksLikeIdentifier(seen);
    return seen;
}

double MedianOfSorted(const std::vector<double>& values) {
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// The categories of a field in the order of a scale that is known; empty where none is.
std::vector<std::string> KnownOrder(const Column& column) {
    for (const auto& scale : kScales) {
        std::vector<std::pair<std::size_t, std::string>> found;
        for (const Category& category : column.categories) {
            const auto place = std::ranges::find(scale, Lowered(category.text));
            if (category.text.empty() || place == scale.end() || place->empty()) break;
            found.emplace_back(static_cast<std::size_t>(place - scale.begin()), category.text);
        }
        constexpr std::size_t kLeast = 3;
        if (found.size() < kLeast || found.size() != column.categories.size()) continue;
        std::ranges::sort(found);
        std::vector<std::string> order;
        for (auto& [place, text] : found) order.push_back(std::move(text));
        return order;
    }
    return {};
}

std::string ValuesOf(const Seen& seen) {
    if (seen.Present() == 0) return "nothing but missing cells";
    if (seen.IsNumber()) {
        if (seen.isIdentifier) return std::to_string(seen.different) + " different values";
        if (seen.different == 1) return "always " + Number(seen.values.front());
        return Number(seen.values.front()) + " to " + Number(seen.values.back()) + ", median " +
               Number(MedianOfSorted(seen.values));
    }
    if (seen.isIdentifier) return "each once";
    std::vector<std::size_t> order(seen.counts.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    const bool hasOrder = seen.column->IsOrderTold();
    if (!hasOrder) {
        std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) { return seen.counts[a] > seen.counts[b]; });
    }
    std::vector<std::string> shown;
    for (const std::size_t i : order) {
        if (shown.size() == kMostShown) break;
        shown.push_back(ShownCategory(*seen.column, seen.column->categories[i]) + " " + std::to_string(seen.counts[i]));
    }
    return JoinList(shown) + (order.size() > kMostShown ? ", ..." : "");
}

std::string KindOf(const Seen& seen) {
    if (seen.IsNumber()) {
        switch (seen.column->type) {
            case FieldType::kDate:
            case FieldType::kDateTime:
                return "date";
            case FieldType::kTime:
                return "time";
            default:
                return "number";
        }
    }
    const std::string order = seen.column->IsOrderTold() ? ", ordered" : "";
    if (seen.column->IsText()) return Counted(seen.different, "word", "words") + order;
    return Counted(seen.different, "category", "categories") + order;
}

std::string MissingOf(const Seen& seen) {
    if (seen.missing == 0) return "";
    const std::string texts = ShownMissingTexts(seen.column->missingTexts);
    return std::to_string(seen.missing) + " missing" + (texts.empty() ? "" : " (" + texts + ")");
}

/// Whether a text is a date of some country, or the one that a field of dates is read from.
bool IsDateLike(std::string_view text) {
    if (ParseDate(text) || ParseDateTime(text)) return true;
    std::size_t groups = 0;
    std::size_t digits = 0;
    char mark = '\0';
    for (const char c : text) {
        if (std::isdigit(static_cast<unsigned char>(c)) != 0) {
            ++digits;
            continue;
        }
        if ((c != '.' && c != '/' && c != '-') || (mark != '\0' && c != mark) || digits == 0 || digits > 4)
            return false;
        mark = c;
        ++groups;
        digits = 0;
    }
    return groups == 2 && digits >= 2 && digits <= 4;
}

/// What the words of a field seem to be instead of words; "" for nothing.
std::string DisguiseOf(const Column& column) {
    const auto all = [&](auto is) {
        return !column.categories.empty() && std::ranges::all_of(column.categories, [&](const Category& category) {
            return is(TrimBlanks(category.text));
        });
    };
    const auto parses = [](NumberStyle style) {
        return [style](std::string_view text) { return ParseNumber(text, style).has_value(); };
    };
    const bool mayBeComma = all(parses({',', '.', false}));
    const bool mayBePoint = all(parses({'.', ',', false}));
    if (mayBeComma && mayBePoint)
        return "looks like a decimal comma or a mark of thousands: --decimal , or --decimal .";
    if (mayBeComma) return "looks like a decimal comma: --decimal ,";
    if (mayBePoint) return "looks like marks of thousands: --decimal .";
    if (all(IsDateLike)) {
        return all([](std::string_view text) { return ParseDate(text).has_value(); })
                   ? "looks like dates: \"type\": \"date\" in --fields"
                   : "looks like dates; as numbers they are read from YYYY-MM-DD";
    }
    const auto hasUnit = [](std::string_view text) {
        std::size_t at = 0;
        while (at < text.size() && std::string_view("0123456789+-.,").find(text[at]) != std::string_view::npos) ++at;
        const std::string_view unit = text.substr(at);
        const bool hasDigit = std::ranges::any_of(unit, [](unsigned char c) { return std::isdigit(c) != 0; });
        return !unit.empty() && !hasDigit && ParseDecimal(text.substr(0, at)).has_value();
    };
    if (all(hasUnit)) return "looks like numbers with a unit, which is to be taken away";
    return "";
}

/// What is odd in a field of words, or which order its words may have.
void RemarkOnWords(const Seen& seen, std::vector<std::string>& remarks) {
    const Column& column = *seen.column;
    if (const std::string disguise = DisguiseOf(column); !disguise.empty()) {
        remarks.push_back(disguise);
        return;
    }
    std::size_t numbers = 0;
    std::vector<std::string> words;
    for (std::size_t i = 0; i < column.categories.size(); ++i) {
        if (ParseDecimal(TrimBlanks(column.categories[i].text))) {
            numbers += seen.counts[i];
        } else {
            words.push_back(Quoted(column.categories[i].text));
        }
    }
    if (numbers > 0) {
        const std::string few =
            JoinList(std::vector(words.begin(), words.begin() + std::min<std::ptrdiff_t>(3, std::ssize(words))));
        remarks.push_back(std::to_string(numbers) + " of " + std::to_string(seen.Present()) + " are numbers, but " +
                          few + (words.size() > 3 ? " and others" : "") + (words.size() == 1 ? " is not" : " are not") +
                          "; --na if it marks what is missing");
        return;
    }
    for (std::string& note : CategoryNotes(column)) remarks.push_back(std::move(note));
    const auto hasComma = [](const Category& category) { return category.text.find(',') != std::string::npos; };
    constexpr std::size_t kLeastOrdered = 3;
    if (column.IsOrderTold() || column.categories.size() < kLeastOrdered || column.categories.size() > kMostGroups ||
        std::ranges::any_of(column.categories, hasComma) || column.name.find_first_of(",=") != std::string::npos) {
        return;
    }
    std::vector<std::string> order = KnownOrder(column);
    const bool isKnown = !order.empty();
    if (!isKnown) {
        for (const Category& category : column.categories) order.push_back(category.text);
    }
    remarks.push_back((isKnown ? "" : "no order known: ") + std::string("--order ") +
                      ShellWord(column.name + "=" + JoinList(order, ",")));
}

/// A number that programs write for what is missing, where one stands far from all other values; "" where none does.
std::string CodeForMissing(const Seen& seen) {
    if (!seen.IsNumber() || seen.column->type != FieldType::kNumber || seen.different < 3) return "";
    for (const double code : {99.0, 999.0, 9999.0, 99999.0, -9.0, -99.0, -999.0, -9999.0}) {
        const auto [first, last] = std::equal_range(seen.values.begin(), seen.values.end(), code);
        if (first == last) continue;
        const bool isAbove = code > 0 && last == seen.values.end() && 2 * *(first - 1) <= code;
        const bool isBelow = code < 0 && first == seen.values.begin() && *last >= 0;
        if (!isAbove && !isBelow) continue;
        const std::string text = Number(code);
        return text + " occurs " + Counted(static_cast<std::size_t>(last - first), "time", "times") +
               ", far from the rest; if it means missing: --na NA," + text;
    }
    return "";
}

FieldLook LookOf(const Seen& seen) {
    FieldLook look{seen.column->name, KindOf(seen), ValuesOf(seen), {}};
    if (const std::string missing = MissingOf(seen); !missing.empty()) look.remarks.push_back(missing);
    if (seen.isIdentifier) {
        look.remarks.emplace_back("looks like an identifier");
        return look;
    }
    const std::size_t present = seen.Present();
    const bool isWholeOrWord = !seen.IsNumber() || seen.AreWhole();
    if (isWholeOrWord && IsNamedLikeIdentifier(look.name) && seen.different < present && 2 * seen.different > present) {
        look.remarks.push_back("an identifier that repeats: " + std::to_string(seen.different) + " different in " +
                               std::to_string(present));
    } else if (seen.column->IsText()) {
        RemarkOnWords(seen, look.remarks);
    } else if (const std::string code = CodeForMissing(seen); !code.empty()) {
        look.remarks.push_back(code);
    } else if (seen.IsNumber() && seen.AreWhole() && seen.different == 2 && seen.column->type == FieldType::kNumber &&
               2 * seen.different <= present) {
        look.remarks.push_back("two values: --nominal " + ShellWord(look.name) + " if they are categories");
    }
    return look;
}

// ---- calls ----

bool IsMeasure(const Seen& seen) {
    return seen.IsNumber() && !seen.isIdentifier && seen.different > 2 && !IsNamedLikeIdentifier(seen.column->name);
}

/// What the second field of a pair may be called, in small letters: the same but for one word, "hours_after" of
/// "hours_before".
std::vector<std::string> NamesOfSecond(const std::string& first) {
    std::vector<std::string> names;
    const std::string lowered = Lowered(first);
    for (const auto& [former, latter] : kPairs) {
        const std::size_t place = lowered.rfind(former);
        if (place == std::string::npos) continue;
        names.push_back(lowered);
        names.back().replace(place, former.size(), latter);
    }
    return names;
}

/// The first field that has a second one, with the first of these. Looked up by name, as there may be many fields.
std::optional<std::pair<const Seen*, const Seen*>> FindPair(const std::vector<Seen>& fields) {
    std::vector<const Seen*> measures;
    std::vector<std::string> names;
    for (const Seen& seen : fields) {
        if (!IsMeasure(seen)) continue;
        measures.push_back(&seen);
        names.push_back(Lowered(seen.column->name));
    }
    const NamePlaces places(names);
    for (const Seen* const first : measures) {
        std::size_t second = measures.size();
        for (const std::string& name : NamesOfSecond(first->column->name)) second = std::min(second, places.Of(name));
        if (second < measures.size()) return std::pair(first, measures[second]);
    }
    return std::nullopt;
}

/// The field that a user would most likely group by: one of few words, or else of two or three whole numbers.
const Seen* FindGroup(const std::vector<Seen>& fields) {
    for (const Seen& seen : fields) {
        const bool areFew =
            seen.different >= 2 && seen.different <= kMostGroups && 2 * seen.different <= seen.Present();
        if (!seen.IsNumber() && areFew && !seen.isIdentifier && DisguiseOf(*seen.column).empty()) return &seen;
    }
    for (const Seen& seen : fields) {
        const bool areFew = seen.different >= 2 && seen.different <= 3 && 2 * seen.different <= seen.Present();
        if (seen.IsNumber() && areFew && seen.AreWhole()) return &seen;
    }
    return nullptr;
}

/// A name can stand among others between commas if it has none itself.
bool CanBeTyped(const Seen& seen) {
    return seen.column->name.find(',') == std::string::npos && !seen.column->name.starts_with('-');
}

std::vector<std::string> CallsOf(std::vector<Seen> fields) {
    std::erase_if(fields, [](const Seen& seen) { return !CanBeTyped(seen); });
    std::vector<std::string> calls;
    const Seen* const group = FindGroup(fields);
    const auto measure =
        std::ranges::find_if(fields, [&](const Seen& seen) { return IsMeasure(seen) && &seen != group; });
    const auto pair = FindPair(fields);
    if (measure != fields.end() && group != nullptr) {
        calls.push_back("--independent " + ShellWord(measure->column->name) + " --group " +
                        ShellWord(group->column->name));
    }
    if (pair) calls.push_back("--related " + ShellWord(pair->first->column->name + "," + pair->second->column->name));
    if (measure != fields.end()) calls.push_back("--one-sample " + ShellWord(measure->column->name));
    if (measure == fields.end() && group != nullptr) {
        calls.push_back("--one-sample " + ShellWord(group->column->name));
    }
    return calls;
}

// ---- the descriptor ----

Json ValueOf(const Column& column, const Category& category) {
    if (column.IsText()) return category.text;
    return category.number;
}

Json CategoriesOf(const Column& column) {
    Json categories = Json::array();
    for (const Category& category : column.categories) {
        if (category.label.empty()) {
            categories.push_back(ValueOf(column, category));
        } else {
            categories.push_back({{"value", ValueOf(column, category)}, {"label", category.label}});
        }
    }
    return categories;
}

constexpr std::pair<FieldType, const char*> kTypeNames[] = {
    {FieldType::kNumber, "number"},    {FieldType::kInteger, "integer"}, {FieldType::kString, "string"},
    {FieldType::kBoolean, "boolean"},  {FieldType::kDate, "date"},       {FieldType::kTime, "time"},
    {FieldType::kDateTime, "datetime"}};

/// Whether the descriptor names a text as missing in that field alone.
bool IsGiven(const FieldDescriptor* given, const std::string& text) {
    return given != nullptr &&
           std::ranges::find(given->missingValues, text, &DescribedValue::text) != given->missingValues.end();
}

/// What is asked for each field of a table, of which there may be many, and of each text that is missing in it. Borrows
/// the table and what was given for it.
class DescriptorFacts {
 public:
    DescriptorFacts(const Table& table, const TableDescriptor& given) {
        for (const FieldDescriptor& field : given.fields) given_.emplace(field.name, &field);
        for (const Column& column : table.Columns()) {
            if (!column.IsText()) continue;
            for (const Category& category : column.categories) words_.insert(TrimBlanks(category.text));
        }
    }

    /// What was given for a field; null for nothing.
    const FieldDescriptor* GivenFor(const Column& column) const {
        const auto found = given_.find(column.name);
        return found == given_.end() ? nullptr : found->second;
    }
    /// Whether a text stands for itself in a field of words.
    bool IsWord(std::string_view text) const { return words_.contains(text); }

 private:
    std::unordered_map<std::string_view, const FieldDescriptor*> given_;
    std::unordered_set<std::string_view> words_;
};

Json FieldOf(const Column& column, const DescriptorFacts& facts) {
    const FieldDescriptor* const given = facts.GivenFor(column);
    Json field;
    field["name"] = column.name;
    if (!column.title.empty()) field["title"] = column.title;
    // What is read as words because of a few of them stays open, so that it is told again.
    const bool isOpen = !WordsAmongNumbers(column).empty();
    const auto* const type = std::ranges::find(kTypeNames, column.type, [](const auto& named) { return named.first; });
    if (!isOpen) field["type"] = type->second;
    const bool hasOtherLevel = column.IsCategorical() != (column.IsText() || column.type == FieldType::kBoolean);
    if (hasOtherLevel || column.level == FieldLevel::kOrdinal) {
        field["level"] = column.level == FieldLevel::kOrdinal   ? "ordinal"
                         : column.level == FieldLevel::kNominal ? "nominal"
                                                                : "continuous";
    }
    const bool isListed =
        column.listedCount > 0 || (column.IsText() && !isOpen && column.categories.size() <= kMostListed);
    if (column.IsCategorical() && isListed && !column.categories.empty()) {
        field["categories"] = CategoriesOf(column);
        if (column.IsOrderTold()) field["categoriesOrdered"] = true;
    }
    Json missing = Json::array();
    if (given != nullptr) {
        for (const DescribedValue& value : given->missingValues) {
            Json shown = value.number ? Json(*value.number) : Json(value.text);
            missing.push_back(value.label.empty() ? shown : Json{{"value", shown}, {"label", value.label}});
        }
    }
    for (const MissingText& text : column.missingTexts) {
        if (!IsGiven(given, text.text) && facts.IsWord(text.text)) missing.push_back(text.text);
    }
    if (!missing.empty()) field["missingValues"] = missing;
    return field;
}

}  // namespace

TableLook LookAt(const Table& table, const std::string& name) {
    TableLook look;
    look.title =
        name + ": " + Counted(table.RowCount(), "row", "rows") + ", " + Counted(table.ColumnCount(), "field", "fields");
    for (const std::string& note : table.Notes()) {
        look.title += "; " + (note.starts_with(name + ": ") ? note.substr(name.size() + 2) : note);
    }
    std::vector<Seen> fields;
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) fields.push_back(See(table, i));
    for (const Seen& seen : fields) look.fields.push_back(LookOf(seen));
    look.calls = CallsOf(std::move(fields));
    return look;
}

Json DescriptorOf(const Table& table, const TableDescriptor& given) {
    const DescriptorFacts facts(table, given);
    std::vector<std::string> texts{"", "NA"};
    for (const Column& column : table.Columns()) {
        for (const MissingText& missing : column.missingTexts) {
            const bool isKnown = std::ranges::find(texts, missing.text) != texts.end();
            const bool isOfField = IsGiven(facts.GivenFor(column), missing.text) || facts.IsWord(missing.text);
            if (!isKnown && !isOfField) texts.push_back(missing.text);
        }
    }
    if (given.namesMissingTexts) texts = given.missingTexts;
    Json descriptor;
    descriptor["missingValues"] = texts;
    if (given.weightField) descriptor["weightField"] = *given.weightField;
    descriptor["fields"] = Json::array();
    for (const Column& column : table.Columns()) {
        descriptor["fields"].push_back(FieldOf(column, facts));
    }
    return descriptor;
}

std::string ShellWord(const std::string& word) {
    const auto isPlain = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || static_cast<unsigned char>(c) >= 0x80 ||
               std::string_view("_-./,=:@%+").find(c) != std::string_view::npos;
    };
    if (!word.empty() && std::ranges::all_of(word, isPlain)) return word;
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

}  // namespace tarn
