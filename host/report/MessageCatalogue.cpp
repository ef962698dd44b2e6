#include "host/report/MessageCatalogue.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/TestNames.h"
#include "host/report/EnglishMessages.h"

namespace tarn {

namespace {

constexpr std::string_view kUnknownField = "a field that is not known";

/// The parts of a list as the engine joins names in its messages.
std::vector<std::string> SplitNames(std::string_view joined) {
    constexpr std::string_view kSeparator = " ,";
    std::vector<std::string> names;
    while (!joined.empty()) {
        const std::size_t end = joined.find(kSeparator);
        names.emplace_back(joined.substr(0, end));
        joined.remove_prefix(end == std::string_view::npos ? joined.size() : end + kSeparator.size());
    }
    return names;
}

/// Tests as the engine's messages have them, the key in a request without the letter of its family, by the names that a
/// user types; each once.
std::vector<std::string> TestsByTheirNames(std::string_view joined) {
    std::vector<std::string> names;
    for (const std::string& key : SplitNames(joined)) {
        const auto found =
            std::ranges::find(TestNames(), key, [](const TestName& test) { return test.requestKey.substr(1); });
        const std::string name(found == TestNames().end() ? std::string_view(key) : found->name);
        if (std::ranges::find(names, name) == names.end()) names.push_back(name);
    }
    return names;
}

/// Fills in one text.
class TextFiller {
 public:
    explicit TextFiller(const Placeholders& placeholders) : placeholders_(placeholders) {}

    std::string Fill(std::string_view text) const {
        std::string filled;
        while (!text.empty()) {
            const std::size_t special = text.find_first_of("{[");
            filled += text.substr(0, special);
            if (special == std::string_view::npos) break;
            const bool isOptional = text[special] == '[';
            text.remove_prefix(special + 1);
            const std::size_t end = text.find(isOptional ? ']' : '}');
            const std::string_view inner = text.substr(0, end);
            if (isOptional) {
                if (HasAll(inner)) filled += Fill(inner);
            } else {
                filled += ValueOf(inner).value_or("?");
            }
            if (end == std::string_view::npos) break;
            text.remove_prefix(end + 1);
        }
        return filled;
    }

 private:
    bool HasAll(std::string_view text) const {
        for (std::size_t open = text.find('{'); open != std::string_view::npos; open = text.find('{', open + 1)) {
            const std::size_t close = std::min(text.find('}', open), text.size());
            if (ValueOf(text.substr(open + 1, close - open - 1)).value_or("").empty()) return false;
        }
        return true;
    }

    /// The value of "field:0"; nothing if the message has no such parameter.
    std::optional<std::string> ValueOf(std::string_view placeholder) const {
        const std::size_t colon = placeholder.find(':');
        if (colon == std::string_view::npos) return Positional(placeholder);
        const std::string_view kind = placeholder.substr(0, colon);
        const std::string_view rest = placeholder.substr(colon + 1);
        if (kind == "named") return Named(rest);
        if (kind == "category") return Category(rest);
        std::optional<std::string> value = Positional(rest);
        if (!value) return value;
        if (kind == "field") return FieldName(*value);
        if (kind == "fields") {
            std::vector<std::string> names = SplitList(*value);
            for (std::string& name : names) name = FieldName(name);
            return JoinList(names);
        }
        if (kind == "values") return JoinList(SplitList(*value));
        if (kind == "names") return JoinList(SplitNames(*value));
        if (kind == "tests") return JoinList(TestsByTheirNames(*value));
        if (kind == "number") return ShortNumber(*value);
        return value;
    }

    std::optional<std::string> Positional(std::string_view digits) const {
        std::size_t position = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), position);
        const std::vector<std::string>& all = *placeholders_.positional;
        if (error != std::errc{} || end != digits.data() + digits.size() || position >= all.size()) return {};
        return all[position] == kMissingText ? std::string(kNoValue) : all[position];
    }

    std::optional<std::string> Named(std::string_view name) const {
        if (placeholders_.named == nullptr) return {};
        const auto found = std::ranges::find(*placeholders_.named, name,
                                             [](const auto& pair) { return std::string_view(pair.first); });
        if (found == placeholders_.named->end()) return {};
        return JoinList(SplitList(found->second));
    }

    std::optional<std::string> Category(std::string_view pair) const {
        const std::size_t colon = std::min(pair.find(':'), pair.size() - 1);
        const std::optional<std::string> category = Positional(pair.substr(0, colon));
        const std::optional<std::string> field = Positional(pair.substr(colon + 1));
        if (!category || !field) return {};
        const ResultField* const known = placeholders_.document ? placeholders_.document->FieldAt(*field) : nullptr;
        std::vector<std::string> categories = SplitList(*category);
        for (std::string& one : categories) {
            if (const std::string* const shown = known ? known->CategoryAt(one) : nullptr) one = *shown;
        }
        return JoinList(categories);
    }

    std::string FieldName(const std::string& index) const {
        const ResultField* const field = placeholders_.document ? placeholders_.document->FieldAt(index) : nullptr;
        return field ? field->name : std::string(kUnknownField);
    }

    static constexpr std::string_view kNoValue = "(none)";
    const Placeholders& placeholders_;
};

void ReadTexts(const Json& catalogue, const char* key, std::map<std::string, std::string, std::less<>>& texts) {
    const auto section = catalogue.find(key);
    if (section == catalogue.end()) return;
    for (const auto& [name, text] : section->items()) texts[name] = text.get<std::string>();
}

const std::string* FindText(const std::map<std::string, std::string, std::less<>>& texts, std::string_view key) {
    const auto found = texts.find(key);
    return found == texts.end() ? nullptr : &found->second;
}

}  // namespace

const MessageCatalogue& MessageCatalogue::English() {
    static const MessageCatalogue english = [] {
        MessageCatalogue catalogue;
        catalogue.Add(kEnglishMessages, "the English messages");
        return catalogue;
    }();
    return english;
}

MessageCatalogue MessageCatalogue::OfLanguage(const std::string& language, const std::vector<std::string>& folders) {
    MessageCatalogue catalogue = English();
    for (const std::string& folder : folders) {
        const std::filesystem::path path = std::filesystem::path(folder) / (language + ".json");
        if (!std::filesystem::is_regular_file(path)) continue;
        ByteSource source(path.string());
        catalogue.Add(source.ReadAll(), source.Name());
        break;
    }
    return catalogue;
}

void MessageCatalogue::Add(const std::string& text, const std::string& name) {
    try {
        const Json catalogue = ParseJson(text, name);
        ReadTexts(catalogue, "status", status_);
        ReadTexts(catalogue, "condition", conditions_);
        ReadTexts(catalogue, "limits", limits_);
        ReadTexts(catalogue, "remarks", remarks_);
        ReadTexts(catalogue, "labels", labels_);
        ReadTexts(catalogue, "effects", effects_);
        ReadTexts(catalogue, "intervals", intervals_);
        const auto tests = catalogue.find("tests");
        if (tests == catalogue.end()) return;
        for (const auto& [test, texts] : tests->items()) {
            TestTexts& known = tests_[test];
            const std::pair<const char*, std::string TestTexts::*> members[] = {
                {"title", &TestTexts::title},       {"name", &TestTexts::name},       {"family", &TestTexts::family},
                {"question", &TestTexts::question}, {"assumes", &TestTexts::assumes}, {"chosen", &TestTexts::chosen},
                {"decides", &TestTexts::decides},   {"method", &TestTexts::method},   {"pairs", &TestTexts::pairs},
                {"steps", &TestTexts::steps},       {"source", &TestTexts::source},   {"found", &TestTexts::found},
                {"notFound", &TestTexts::notFound},
            };
            for (const auto& [key, member] : members) {
                const auto found = std::ranges::find(texts.items(), key, &Json::Member::name);
                if (found != texts.items().end()) known.*member = found->value.Text();
            }
        }
    } catch (const JsonError& error) {
        throw InputError(name + ": " + error.what() + "; expected a catalogue of messages as docs/messages.md tells");
    }
}

const std::string* MessageCatalogue::Status(long code) const {
    return FindText(status_, std::to_string(code));
}

const std::string* MessageCatalogue::Condition(std::string_view key) const {
    return FindText(conditions_, key);
}

const std::string* MessageCatalogue::Limit(std::string_view key) const {
    return FindText(limits_, key);
}

const std::string* MessageCatalogue::Remark(std::string_view key) const {
    return FindText(remarks_, key);
}

const std::string* MessageCatalogue::Effect(std::string_view key) const {
    return FindText(effects_, key);
}

const std::string* MessageCatalogue::IntervalOf(std::string_view effectKey) const {
    return FindText(intervals_, effectKey);
}

std::string MessageCatalogue::Label(std::string_view key) const {
    const std::string* const text = FindText(labels_, key);
    return text == nullptr ? std::string(key) : *text;
}

const TestTexts* MessageCatalogue::Test(std::string_view name) const {
    const auto found = tests_.find(name);
    return found == tests_.end() ? nullptr : &found->second;
}

std::string MessageCatalogue::Sentence(const ResultMessage& message, const ResultDocument& document) const {
    const std::string* const text = Status(message.code);
    if (text == nullptr) return "code " + std::to_string(message.code);
    return FillIn(*text, {&message.parameters, &message.named, &document});
}

std::string MessageCatalogue::Sentence(const TestResult& test, const ResultDocument& document) const {
    const std::string* const text = Condition(test.conditionKey);
    if (text == nullptr) return test.conditionKey;
    return FillIn(*text, {&test.parameters, nullptr, &document});
}

std::string MessageCatalogue::Sentence(long code, const std::vector<std::string>& parameters) const {
    const std::string* const text = Status(code);
    if (text == nullptr) return "code " + std::to_string(code);
    return FillIn(*text, {&parameters});
}

std::string FillIn(std::string_view text, const Placeholders& placeholders) {
    return TextFiller(placeholders).Fill(text);
}

}  // namespace tarn
