#include "platform/common/QKVarList.h"

#include <utility>

#include "platform/common/QKMV.h"
#include "platform/common/QKXML.h"

QKContVar::QKContVar(std::string name, std::string label, DateType dateType, int kind)
    : name_(std::move(name)), label_(std::move(label)), dateType_(dateType), kind_(kind) {}

double QKContVar::GetCategoryValue(int) const {
    return QKMV::Missing();
}

QKCatVar::QKCatVar(std::string name, std::string label, bool ordinal, std::vector<NumericCategory> categories,
                   DateType dateType)
    : name_(std::move(name)),
      label_(std::move(label)),
      dateType_(dateType),
      kind_(FieldKind::kNumericCategories),
      ordinal_(ordinal) {
    for (NumericCategory& category : categories) {
        const int index = QKCatVar::GetCategoryCount();
        indexByValue_.emplace(category.value, index);
        values_.push_back(category.value);
        texts_.push_back(QKXML::ReplaceSep(category.value, "%.15g"));
        indexByText_.emplace(texts_.back(), index);
        labels_.push_back(std::move(category.label));
    }
}

QKCatVar::QKCatVar(std::string name, std::string label, bool ordinal, std::vector<StringCategory> categories,
                   DateType dateType)
    : name_(std::move(name)),
      label_(std::move(label)),
      dateType_(dateType),
      kind_(FieldKind::kStringCategories),
      ordinal_(ordinal) {
    for (StringCategory& category : categories) {
        indexByText_.emplace(category.value, QKCatVar::GetCategoryCount());
        texts_.push_back(std::move(category.value));
        labels_.push_back(std::move(category.label));
    }
}

std::string QKCatVar::GetCategoryText(int category) const {
    return HasCategory(category) ? texts_[static_cast<std::size_t>(category)] : std::string();
}

double QKCatVar::GetCategoryValue(int category) const {
    const bool known = kind_ == FieldKind::kNumericCategories && HasCategory(category);
    return known ? values_[static_cast<std::size_t>(category)] : QKMV::Missing();
}

std::string QKCatVar::GetCategoryLabel(int category) const {
    return HasCategory(category) ? labels_[static_cast<std::size_t>(category)] : std::string();
}

int QKCatVar::FindCategory(double value) const {
    const auto found = indexByValue_.find(value);
    return found == indexByValue_.end() ? -1 : found->second;
}

int QKCatVar::FindCategory(const std::string& text) const {
    const auto found = indexByText_.find(text);
    return found == indexByText_.end() ? -1 : found->second;
}

const IQKVariable* QKVarList::GetVarAt(int index) const {
    return index >= 0 && index < Size() ? variables_[static_cast<std::size_t>(index)].get() : nullptr;
}

const IQKVariable* QKVarList::GetVariable(const std::string& name) const {
    return GetVarAt(FindVariable(name));
}

int QKVarList::FindVariable(const std::string& name) const {
    const auto found = indexByName_.find(name);
    return found == indexByName_.end() ? -1 : found->second;
}

int QKVarList::AddNewVar(std::shared_ptr<const IQKVariable> variable) {
    const int index = Size();
    indexByName_.emplace(variable->GetName(), index);
    variables_.push_back(std::move(variable));
    return index;
}
