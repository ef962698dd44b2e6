#include "host/JsonDocument.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/InputError.h"

namespace tarn {

namespace {

/// Whose parser tells us what it reads, and which never holds a value: its destructor takes memory.
using Parser = nlohmann::ordered_json;

constexpr int kNumberOverflow = 406;

/// Readers of the value walk it by recursion, which must not end with the stack. No input of ours nests as deep.
constexpr std::size_t kDeepestNesting = 64;

/// A plan of a million tests has about 100 MiB.
constexpr std::size_t kLargestText = std::size_t{256} << 20;

/// Up to so many keys of an object are looked through; of more than that a set is kept.
constexpr std::size_t kFewKeys = 16;

// The reason alone of a message like "[json...] parse error at line 1, column 2: reason; last read: 'x'; expected y".
// What was read last may be half a character, and the position shows it anyway.
std::string Reason(const nlohmann::detail::exception& error) {
    constexpr std::string_view kPositionEnd = ": ";
    constexpr std::string_view kIdEnd = "] ";
    constexpr std::string_view kLastRead = "; last read: ";
    constexpr std::string_view kExpected = "; expected ";
    const std::string_view message = error.what();
    if (error.id == kNumberOverflow) {
        const std::size_t start = message.find(kIdEnd) + kIdEnd.size();
        return std::string(message.substr(start)) + "; expected a number in the range of a double";
    }
    const std::size_t start = message.find(kPositionEnd) + kPositionEnd.size();
    const std::size_t expected = message.rfind(kExpected);
    const bool hasExpected = expected != std::string_view::npos;
    const std::size_t end = std::min({message.find(kLastRead), expected, message.size()});
    return std::string(message.substr(start, end - start)) +
           (hasExpected ? std::string(message.substr(expected)) : "; expected JSON");
}

// "LINE:COLUMN" of a byte, both from 1. Columns count characters.
std::string LineAndColumn(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    const auto isCharacterStart = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; };
    return std::to_string(1 + std::count(before.begin(), before.end(), '\n')) + ":" +
           std::to_string(1 + std::count_if(line.begin(), line.end(), isCharacterStart));
}

// Where the value nests deeper than it may, before any of it is built.
void RefuseDeepNesting(const std::string& name, std::string_view text) {
    std::size_t depth = 0;
    bool isInText = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isInText) {
            if (c == '\\') ++at;
            isInText = c != '"';
        } else if (c == '"') {
            isInText = true;
        } else if (c == '[' || c == '{') {
            if (++depth <= kDeepestNesting) continue;
            throw InputError(name + ":" + LineAndColumn(text, at) + ": arrays and objects nest deeper than " +
                             std::to_string(kDeepestNesting) + "; expected fewer in one another");
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
}

// An array or object that isn't closed yet. Large objects are asked for each of their keys, so these are hashed.
class OpenContainer {
 public:
    explicit OpenContainer(Json& value) : value_(value) {}

    bool HasKey(const std::string& key) const { return keys_.empty() ? value_.contains(key) : keys_.contains(key); }

    Json& Append(const std::string& key, Json member) {
        if (value_.is_array()) {
            value_.push_back(std::move(member));
            return value_.back();
        }
        // The object itself would look through its keys once more.
        Json::Object& members = value_.items();
        members.push_back({key, std::move(member)});
        KeepKeys(members);
        return members.back().value;
    }

 private:
    void KeepKeys(const Json::Object& members) {
        if (members.size() <= kFewKeys) return;
        if (keys_.empty()) {
            for (const Json::Member& member : members) keys_.insert(member.name);
        } else {
            keys_.insert(members.back().name);
        }
    }

    Json& value_;
    std::unordered_set<std::string> keys_;  // of an object with many; empty before
};

// Builds the value from the parser's events. The library's own builder neither says where a number is too large nor
// refuses a repeated key, of which it would keep the last value.
class JsonBuilder : public nlohmann::json_sax<Parser> {
 public:
    JsonBuilder(const std::string& name, const std::string& text) : name_(name), text_(text) {}

    Json Take() { return std::move(root_); }

    bool null() override { return Add(nullptr); }
    bool boolean(bool value) override { return Add(value); }
    bool number_integer(number_integer_t value) override { return Add(value); }
    bool number_unsigned(number_unsigned_t value) override { return Add(value); }
    bool number_float(number_float_t value, const string_t&) override { return Add(value); }
    bool string(string_t& value) override { return Add(std::move(value)); }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override { return Open(Json::object()); }
    bool start_array(std::size_t) override { return Open(Json::array()); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }

    bool key(string_t& name) override {
        if (open_.back().HasKey(name)) {
            throw InputError(name_ + ": key " + Quoted(name) + " stands twice in one object; expected once");
        }
        key_ = std::move(name);
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& error) override {
        // The position counts the byte that was read last.
        const std::size_t offset = position == 0 ? 0 : position - 1;
        throw InputError(name_ + ":" + LineAndColumn(text_, offset) + ": " + Reason(error));
    }

 private:
    Json& Place(Json value) {
        if (open_.empty()) return root_ = std::move(value);
        return open_.back().Append(key_, std::move(value));
    }

    bool Add(Json value) {
        Place(std::move(value));
        return true;
    }

    bool Open(Json container) {
        open_.emplace_back(Place(std::move(container)));
        return true;
    }

    bool Close() {
        open_.pop_back();
        return true;
    }

    const std::string& name_;
    const std::string& text_;
    Json root_;
    std::vector<OpenContainer> open_;  // within root_, the outermost first; only the last one grows
    std::string key_;
};

}  // namespace

Json ReadJson(ByteSource& source) {
    return ParseJson(source.ReadText(kLargestText), source.Name());
}

Json ParseJson(const std::string& text, const std::string& name) {
    RefuseDeepNesting(name, text);
    JsonBuilder builder(name, text);
    Parser::sax_parse(text, &builder);
    return builder.Take();
}

}  // namespace tarn
