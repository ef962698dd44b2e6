#include "related/CategoryMatcher.h"

#include <algorithm>
#include <unordered_set>

bool CategoryMatcher::AreSame(int field, int category, int otherField, int otherCategory) const {
    const IQKVariable* a = varList->GetVarAt(field);
    const IQKVariable* b = varList->GetVarAt(otherField);
    if (a == nullptr || b == nullptr || a->GetKind() != b->GetKind()) return false;
    return a->GetKind() == FieldKind::kNumericCategories
               ? a->GetCategoryValue(category) == b->GetCategoryValue(otherCategory)
               : a->GetCategoryText(category) == b->GetCategoryText(otherCategory);
}

template <typename Test>
std::vector<bool> CategoryMatcher::Flags(int field, Test test) const {
    const IQKVariable* variable = varList->GetVarAt(field);
    std::vector<bool> flags;
    for (int category = 0; variable != nullptr && category < variable->GetCategoryCount(); ++category) {
        flags.push_back(test(*variable, category));
    }
    return flags;
}

std::vector<bool> CategoryMatcher::FlagsOfSame(int field, int otherField, int otherCategory) const {
    return Flags(field,
                 [&](const IQKVariable&, int category) { return AreSame(field, category, otherField, otherCategory); });
}

std::vector<bool> CategoryMatcher::FlagsOfListed(int field, const std::vector<double>& values,
                                                 const std::vector<std::string>& texts) const {
    // Both the list and the categories may be long.
    const std::unordered_set<double> listedValues(values.begin(), values.end());
    const std::unordered_set<std::string> listedTexts(texts.begin(), texts.end());
    return Flags(field, [&](const IQKVariable& variable, int category) {
        return variable.GetKind() == FieldKind::kNumericCategories
                   ? listedValues.contains(variable.GetCategoryValue(category))
                   : listedTexts.contains(variable.GetCategoryText(category));
    });
}

CategoryMatcher::Classes CategoryMatcher::CheckTwoClasses(const std::vector<int>& fields,
                                                          const std::vector<int>& categoryCounts) const {
    const auto oneOrTwo = [](int count) { return count == 1 || count == 2; };
    if (!std::all_of(categoryCounts.begin(), categoryCounts.end(), oneOrTwo)) return Classes::kUnusable;
    const auto largest = std::max_element(categoryCounts.begin(), categoryCounts.end());
    if (largest == categoryCounts.end()) return Classes::kUnusable;
    if (*largest == 1) return CheckSingleCategories(fields);
    const int reference = fields[static_cast<std::size_t>(largest - categoryCounts.begin())];
    for (std::size_t i = 0; i < fields.size(); ++i) {
        for (int category = 0; category < categoryCounts[i]; ++category) {
            if (!OccursIn(fields[i], category, reference, *largest)) return Classes::kUnusable;
        }
    }
    return Classes::kTwo;
}

CategoryMatcher::Classes CategoryMatcher::CheckSingleCategories(const std::vector<int>& fields) const {
    const auto isSameAs = [&](int field, int other) { return AreSame(field, 0, other, 0); };
    const auto second =
        std::find_if(fields.begin(), fields.end(), [&](int field) { return !isSameAs(field, fields.front()); });
    if (second == fields.end()) return Classes::kUnusable;
    const bool noThird = std::all_of(
        second, fields.end(), [&](int field) { return isSameAs(field, fields.front()) || isSameAs(field, *second); });
    return noThird ? Classes::kTwo : Classes::kThirdSingleCategory;
}

bool CategoryMatcher::OccursIn(int field, int category, int reference, int referenceCount) const {
    for (int other = 0; other < referenceCount; ++other) {
        if (AreSame(field, category, reference, other)) return true;
    }
    return false;
}
