#pragma once

#include <string>
#include <vector>

#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"

/// Field names, labels and category lookups by field index, for plan builders and for the document. A small value
/// that borrows the fields. A field index outside the list answers like a field without a name and categories.
class TARNVariableInfo {
 public:
    explicit TARNVariableInfo(const QKVarList& fields) : varList(&fields) {}

    std::string GetName(int field) const;
    std::string GetLabel(int field) const;
    /// Whether the field is categorical and its categories are in an order that has a meaning.
    bool IsOrdinal(int field) const;
    bool HaveSameKind(int first, int second) const;

    /// The text of a category as lists join it: in a string field each ";" and "\" has a backslash in front of it;
    /// a number is taken as it is.
    std::string GetCategoryDisplayText(int field, int category) const;

    /// The indices of the categories with these texts or values, -1.0 for one that the field does not know.
    std::vector<double> MapCategories(int field, const std::vector<std::string>& texts) const;
    std::vector<double> MapCategories(int field, const std::vector<double>& values) const;
    /// The indices of the field's categories that are not in the list, in index order.
    std::vector<double> CategoriesNotIn(int field, const std::vector<double>& categories) const;

 private:
    const IQKVariable* Find(int field) const { return varList->GetVarAt(field); }

    const QKVarList* varList;
    QKStatus status;
};
