#include "host/verify/JsonKeys.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/InputError.h"
#include "host/NearestNames.h"

namespace tarn {

JsonKeys::JsonKeys(const Json& json, std::string place, std::initializer_list<std::string_view> known)
    : json_(json), place_(std::move(place)) {
    if (!json.is_object()) throw InputError(place_ + ": expected an object");
    for (const Json::Member& member : json.items()) {
        if (std::ranges::find(known, member.name) != known.end()) continue;
        const std::vector<std::string_view> names(known);
        const std::vector<std::string_view> nearest = NearestNames(member.name, names);
        throw InputError(PlaceOf(member.name) + ": unknown key" +
                         (nearest.empty() ? "; expected " + Alternatives(names) : DidYouMean(nearest)));
    }
}

std::string JsonKeys::Text(const char* key, bool isRequired) const {
    if (!Has(key) && !isRequired) return "";
    return Required(key, Has(key) && json_[key].is_string(), "a text").get<std::string>();
}

const Json& JsonKeys::List(const char* key) const {
    return Required(key, Has(key) && json_[key].is_array(), "a list");
}

const Json& JsonKeys::Object(const char* key) const {
    return Required(key, Has(key) && json_[key].is_object(), "an object");
}

std::string JsonKeys::PlaceOf(const std::string& key) const {
    const bool isWholeFile = place_.ends_with(".json");
    return place_ + (isWholeFile ? ": " : ".") + key;
}

const Json& JsonKeys::Required(const char* key, bool isRight, const char* expected) const {
    if (!isRight) {
        throw InputError(PlaceOf(key) + (Has(key) ? ": expected " : ": missing; expected ") + std::string(expected));
    }
    return json_[key];
}

}  // namespace tarn
