#include "platform/common/FieldTypeText.h"

std::string_view FieldTypeText::DataType(const IQKVariable& field) {
    switch (field.GetDateType()) {
        case DateType::kDate:
            return "dateDaysSince[1970]";
        case DateType::kTime:
            return "timeSeconds";
        case DateType::kDateTime:
            return "dateTimeSecondsSince[1970]";
        case DateType::kNone:
            break;
    }
    return field.GetKind() == FieldKind::kStringCategories ? "string" : "double";
}

std::string_view FieldTypeText::OpType(const IQKVariable& field) {
    if (!FieldKind::IsCategorical(field.GetKind())) return "continuous";
    const auto* categorical = dynamic_cast<const QKCatVar*>(&field);
    return categorical != nullptr && categorical->GetOrdinalFlag() ? "ordinal" : "categorical";
}
