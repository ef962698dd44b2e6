#include "contract/TARNVariableInfo.h"

#include <algorithm>

std::string TARNVariableInfo::GetName(int field) const {
    const IQKVariable* variable = Find(field);
    return variable ? variable->GetName() : std::string();
}

std::string TARNVariableInfo::GetLabel(int field) const {
    const IQKVariable* variable = Find(field);
    return variable ? variable->GetLabel() : std::string();
}

bool TARNVariableInfo::IsOrdinal(int field) const {
    const auto* variable = dynamic_cast<const QKCatVar*>(Find(field));
    return variable != nullptr && variable->GetOrdinalFlag();
}

bool TARNVariableInfo::HaveSameKind(int first, int second) const {
    const IQKVariable* a = Find(first);
    const IQKVariable* b = Find(second);
    return a != nullptr && b != nullptr && a->GetKind() == b->GetKind();
}

std::string TARNVariableInfo::GetCategoryDisplayText(int field, int category) const {
    const IQKVariable* variable = Find(field);
    if (variable == nullptr) return {};
    std::string text = variable->GetCategoryText(category);
    if (variable->GetKind() != FieldKind::kStringCategories) return text;
    std::string escaped;
    for (const char character : text) {
        if (character == ';' || character == '\\') escaped += '\\';
        escaped += character;
    }
    return escaped;
}

namespace {

template <typename Value>
std::vector<double> Map(const IQKVariable* variable, const std::vector<Value>& values) {
    std::vector<double> indices;
    indices.reserve(values.size());
    for (const Value& value : values) indices.push_back(variable ? variable->FindCategory(value) : -1);
    return indices;
}

}  // namespace

std::vector<double> TARNVariableInfo::MapCategories(int field, const std::vector<std::string>& texts) const {
    return Map(Find(field), texts);
}

std::vector<double> TARNVariableInfo::MapCategories(int field, const std::vector<double>& values) const {
    return Map(Find(field), values);
}

std::vector<double> TARNVariableInfo::CategoriesNotIn(int field, const std::vector<double>& categories) const {
    const IQKVariable* variable = Find(field);
    std::vector<double> others;
    for (int category = 0; variable != nullptr && category < variable->GetCategoryCount(); ++category) {
        if (std::find(categories.begin(), categories.end(), category) == categories.end()) others.push_back(category);
    }
    return others;
}
