#include "host/engine/NamedFields.h"

#include "runtime/common/DecimalNumber.h"

namespace tarn {

bool NamedFields::MayMean(const std::string& field, std::size_t place) const {
    constexpr std::size_t kDescribedByPlace = 2;
    return place < kDescribedByPlace || names_.contains(field) || ParseDecimal(field) || field == "true" ||
           field == "false";
}

void NamedFields::AddTexts(const nlohmann::ordered_json& value) {
    if (value.is_string()) Add(value.get<std::string>());
    if (!value.is_structured()) return;
    for (const nlohmann::ordered_json& part : value) AddTexts(part);
}

}  // namespace tarn
