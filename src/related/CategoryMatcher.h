#pragma once

#include <string>
#include <vector>

#include "platform/common/QKVarList.h"

/// Equality of categories across fields. A category index means something in its own field only; here two categories
/// are the same if their fields are of one kind and their values are equal, or their texts where these are the values.
/// Borrows the fields, which outlive every test.
class CategoryMatcher {
 public:
    explicit CategoryMatcher(const QKVarList& fields) : varList(&fields) {}

    bool AreSame(int field, int category, int otherField, int otherCategory) const;

    /// A bit per category of `field`: it is the same as that category of the other field.
    std::vector<bool> FlagsOfSame(int field, int otherField, int otherCategory) const;
    /// A bit per category of `field`: it stands in the list of values, or of texts where its values are texts.
    std::vector<bool> FlagsOfListed(int field, const std::vector<double>& values,
                                    const std::vector<std::string>& texts) const;

    enum class Classes { kTwo, kUnusable, kThirdSingleCategory };

    /// Whether the categories that occur in the fields make up two classes over all of them. `categoryCounts` has the
    /// number of categories of each field. Good are single categories of exactly two kinds, or fields of one or two
    /// categories that all occur in the first field with two.
    Classes CheckTwoClasses(const std::vector<int>& fields, const std::vector<int>& categoryCounts) const;

 private:
    template <typename Test>
    std::vector<bool> Flags(int field, Test test) const;
    Classes CheckSingleCategories(const std::vector<int>& fields) const;
    bool OccursIn(int field, int category, int reference, int referenceCount) const;

    const QKVarList* varList;
};
