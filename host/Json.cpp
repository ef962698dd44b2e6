#include "host/Json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "host/Utf8.h"

namespace tarn {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// The two characters of an escaped one that has a letter of its own; 0 for the others.
char EscapeLetter(char c) {
    switch (c) {
        case '"':
        case '\\':
            return c;
        case '\b':
            return 'b';
        case '\f':
            return 'f';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
        default:
            return 0;
    }
}

bool IsEscaped(char c) {
    constexpr unsigned char kFirstPlain = 0x20;
    return c == '"' || c == '\\' || static_cast<unsigned char>(c) < kFirstPlain;
}

void AppendEscaped(std::string& text, char c) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr unsigned kHalfByte = 4;
    constexpr unsigned kLowHalf = 0xf;
    text += '\\';
    if (const char letter = EscapeLetter(c)) {
        text += letter;
        return;
    }
    const unsigned code = static_cast<unsigned char>(c);
    text += "u00";
    text += kDigits[code >> kHalfByte];
    text += kDigits[code & kLowHalf];
}

/// A part of a text that is UTF-8.
void AppendCharacters(std::string& text, std::string_view characters) {
    while (!characters.empty()) {
        const auto* const escaped = std::ranges::find_if(characters, IsEscaped);
        const auto plain = static_cast<std::size_t>(escaped - characters.begin());
        text.append(characters.substr(0, plain));
        characters.remove_prefix(plain);
        if (characters.empty()) return;
        AppendEscaped(text, characters.front());
        characters.remove_prefix(1);
    }
}

void AppendQuoted(std::string& text, std::string_view value) {
    text += '"';
    while (!value.empty()) {
        const char* const end = value.data() + value.size();
        const char* const bad = FindInvalidUtf8(value.data(), end);
        const auto length = static_cast<std::size_t>(bad - value.data());
        AppendCharacters(text, value.substr(0, length));
        if (bad == end) break;
        // A NUL is a character of a text in JSON.
        if (*bad == '\0') {
            AppendEscaped(text, *bad);
        } else {
            text += kReplacement;
        }
        value.remove_prefix(length + 1);
    }
    text += '"';
}

/// The shortest digits that give the number back, with a point or an exponent, so that it stays no whole one: plain for
/// exponents from -4 to 14, like 1e-05 and 1.5e+15 beyond.
void AppendNumber(std::string& text, double number) {
    if (!std::isfinite(number)) {
        text += "null";
        return;
    }
    constexpr double kSmallestPlain = 1e-4;
    constexpr double kFirstWithExponent = 1e15;
    constexpr std::size_t kLongest = 32;
    std::array<char, kLongest> digits{};
    const double size = std::abs(number);
    const bool isPlain = size == 0 || (size >= kSmallestPlain && size < kFirstWithExponent);
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number, format).ptr;
    const std::string_view written(digits.data(), static_cast<std::size_t>(end - digits.data()));
    text += written;
    if (isPlain && written.find('.') == std::string_view::npos) text += ".0";
}

}  // namespace

/// Writes a value as text.
class JsonText {
 public:
    explicit JsonText(int indent) : indent_(indent) {}

    std::string Of(const Json& json) {
        Write(json, 0);
        return std::move(text_);
    }

 private:
    void Write(const Json& json, int depth) {
        std::visit([&](const auto& value) { WriteValue(value, depth); }, json.value_);
    }

    void WriteValue(std::monostate, int) { text_ += "null"; }
    void WriteValue(bool value, int) { text_ += value ? "true" : "false"; }
    void WriteValue(std::int64_t value, int) { text_ += std::to_string(value); }
    void WriteValue(std::uint64_t value, int) { text_ += std::to_string(value); }
    void WriteValue(double value, int) { AppendNumber(text_, value); }
    void WriteValue(const std::string& value, int) { AppendQuoted(text_, value); }
    void WriteValue(const Json::Array& elements, int depth) {
        WriteList('[', ']', elements, depth, [&](const Json& element) { Write(element, depth + 1); });
    }
    void WriteValue(const Json::Object& members, int depth) {
        WriteList('{', '}', members, depth, [&](const Json::Member& member) {
            AppendQuoted(text_, member.name);
            text_ += indent_ < 0 ? ":" : ": ";
            Write(member.value, depth + 1);
        });
    }

    template <typename List, typename WriteOne>
    void WriteList(char open, char close, const List& list, int depth, WriteOne writeOne) {
        text_ += open;
        bool isFirst = true;
        for (const auto& one : list) {
            if (!isFirst) text_ += ',';
            isFirst = false;
            BreakLine(depth + 1);
            writeOne(one);
        }
        if (!isFirst) BreakLine(depth);
        text_ += close;
    }

    void BreakLine(int depth) {
        if (indent_ < 0) return;
        text_ += '\n';
        text_.append(static_cast<std::size_t>(indent_) * static_cast<std::size_t>(depth), ' ');
    }

    int indent_;  // below 0 for one line
    std::string text_;
};

Json::Json(Parts parts) {
    const bool isObject = std::ranges::all_of(parts, [](const Part& part) {
        const auto* const pair = std::get_if<Array>(&part.Seen().value_);
        return pair != nullptr && pair->size() == 2 && pair->front().is_string();
    });
    if (!isObject) {
        *this = array(parts);
        return;
    }
    Object members;
    members.reserve(parts.size());
    for (const Part& part : parts) {
        Json pair = part.Taken();
        auto& nameAndValue = std::get<Array>(pair.value_);
        members.push_back(
            {std::move(std::get<std::string>(nameAndValue.front().value_)), std::move(nameAndValue.back())});
    }
    value_ = std::move(members);
}

Json Json::array(Parts parts) {
    Array elements;
    elements.reserve(parts.size());
    for (const Part& part : parts) elements.push_back(part.Taken());
    return Json(std::move(elements));
}

Json Json::object() {
    Json made;
    made.value_ = Object();
    return made;
}

const char* Json::type_name() const {
    switch (type()) {
        case value_t::null:
            return "null";
        case value_t::boolean:
            return "boolean";
        case value_t::string:
            return "string";
        case value_t::array:
            return "array";
        case value_t::object:
            return "object";
        default:
            return "number";
    }
}

std::size_t Json::size() const {
    if (const auto* const elements = std::get_if<Array>(&value_)) return elements->size();
    const auto* const members = std::get_if<Object>(&value_);
    return members == nullptr ? 0 : members->size();
}

const Json::Object& Json::items() const {
    static const Object none;
    return is_null() ? none : Held<Object>();
}

Json::Object& Json::items() {
    if (is_null()) value_ = Object();
    return Held<Object>();
}

std::size_t Json::PlaceOf(std::string_view key) const {
    const auto* const members = std::get_if<Object>(&value_);
    if (members == nullptr) return size();
    return static_cast<std::size_t>(std::ranges::find(*members, key, &Member::name) - members->begin());
}

const Json& Json::operator[](std::string_view key) const {
    const const_iterator found = find(key);
    if (found == end()) throw JsonError("no key \"" + std::string(key) + "\"");
    return *found;
}

Json& Json::operator[](std::string_view key) {
    Object& members = items();
    const auto found = std::ranges::find(members, key, &Member::name);
    if (found != members.end()) return found->value;
    return members.emplace_back(Member{std::string(key), nullptr}).value;
}

void Json::push_back(Json element) {
    if (is_null()) value_ = Array();
    Held<Array>().push_back(std::move(element));
}

void Json::update(Json other) {
    for (Member& member : other.items()) (*this)[member.name] = std::move(member.value);
}

std::string Json::dump(int indent) const {
    return JsonText(indent).Of(*this);
}

bool Json::operator==(const Json& other) const {
    if (type() == other.type() || !is_number() || !other.is_number()) return value_ == other.value_;
    if (!is_number_integer() || !other.is_number_integer()) return get<double>() == other.get<double>();
    // One has a sign and the other none.
    const auto* const one = std::get_if<std::int64_t>(&value_);
    const std::int64_t withSign = one != nullptr ? *one : std::get<std::int64_t>(other.value_);
    const auto without = one != nullptr ? other.get<std::uint64_t>() : get<std::uint64_t>();
    return std::cmp_equal(withSign, without);
}

const Json& Json::At(std::size_t place) const {
    if (const auto* const elements = std::get_if<Array>(&value_)) return (*elements)[place];
    return Held<Object>()[place].value;
}

const std::string& Json::KeyAt(std::size_t place) const {
    return Held<Object>()[place].name;
}

void Json::ThrowOtherThan(const char* expected) const {
    throw JsonError(std::string("type must be ") + expected + ", but is " + type_name());
}

}  // namespace tarn
