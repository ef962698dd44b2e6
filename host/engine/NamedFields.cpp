#include "host/engine/NamedFields.h"

#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

std::string Lowered(std::string name) {
    for (char& c : name) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return name;
}

}  // namespace

void NamedFields::AddLike(const std::string& name) {
    names_.insert(name);
    likeNames_.insert(Lowered(name));
    isAny_ = isAny_ || name == "all" || name.find_first_of("*?") != std::string::npos;
}

bool NamedFields::MayMean(const std::string& field, std::size_t place) const {
    constexpr std::size_t kDescribedByPlace = 2;
    return isAny_ || place < kDescribedByPlace || names_.contains(field) ||
           (!likeNames_.empty() && likeNames_.contains(Lowered(field))) || ParseDecimal(field) || field == "true" ||
           field == "false";
}

void NamedFields::AddTexts(const Json& value) {
    if (value.is_string()) Add(value.get<std::string>());
    if (!value.is_structured()) return;
    for (const Json& part : value) AddTexts(part);
}

}  // namespace tarn
