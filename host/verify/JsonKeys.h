#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace tarn {

/// The keys of an object of a pack, read one by one; every mistake is an `InputError` that names the place.
class JsonKeys {
 public:
    /// Throws if `json` is no object, or has a key that isn't among `known`. Both are borrowed.
    JsonKeys(const nlohmann::ordered_json& json, std::string place, std::initializer_list<std::string_view> known);

    bool Has(const char* key) const { return json_.contains(key); }
    /// "" where it may be left out and is.
    std::string Text(const char* key, bool isRequired = true) const;
    /// The list of that key.
    const nlohmann::ordered_json& List(const char* key) const;
    /// The object of that key.
    const nlohmann::ordered_json& Object(const char* key) const;
    /// "file.json: cases[2].source"
    std::string PlaceOf(const std::string& key) const;

 private:
    const nlohmann::ordered_json& Required(const char* key, bool isRight, const char* expected) const;

    const nlohmann::ordered_json& json_;
    std::string place_;
};

}  // namespace tarn
