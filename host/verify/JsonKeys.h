#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "host/Json.h"

namespace tarn {

/// The keys of an object of a pack, read one by one; every mistake is an `InputError` that names the place.
class JsonKeys {
 public:
    /// Throws if `json` is no object, or has a key that isn't among `known`. Both are borrowed.
    JsonKeys(const Json& json, std::string place, std::initializer_list<std::string_view> known);

    bool Has(const char* key) const { return json_.contains(key); }
    /// "" where it may be left out and is.
    std::string Text(const char* key, bool isRequired = true) const;
    /// The list of that key.
    const Json& List(const char* key) const;
    /// The object of that key.
    const Json& Object(const char* key) const;
    /// "file.json: cases[2].source"
    std::string PlaceOf(const std::string& key) const;

 private:
    const Json& Required(const char* key, bool isRight, const char* expected) const;

    const Json& json_;
    std::string place_;
};

}  // namespace tarn
