#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "related/CategoryMatcher.h"
#include "support/CategorySet.h"

/// Which categories of several fields are a success: those of a list or, without one, the category that the first field
/// shows in the first record. Not known until one or the other has been said.
class SuccessClasses {
 public:
    explicit SuccessClasses(const CategoryMatcher& fieldCategories) : categories(fieldCategories) {}

    const CategoryMatcher& Categories() const { return categories; }

    /// Successes are the categories of each field that stand in the list: the values for a field whose categories are
    /// numbers, else the texts.
    void SetList(const std::vector<int>& fields, const std::vector<double>& values,
                 const std::vector<std::string>& texts);
    /// Whether any category of any field is a success, and whether any is none.
    bool HasSuccess() const { return HasCategory(1); }
    bool HasFailure() const { return HasCategory(0); }

    bool AreKnown() const { return !successes.empty(); }
    /// Successes are this category of the first field, and the same one in the other fields: that of the first record,
    /// whatever its weight. It holds for the whole run.
    void SetFromFirst(const std::vector<int>& fields, std::int32_t category);

    /// The successes of the field at a position of the list of fields, which may be asked of another field's values.
    const CategorySet& Of(std::size_t position) const {
        return position < successes.size() ? successes[position] : noSuccess;
    }

 private:
    bool HasCategory(std::uint32_t success) const;

    CategoryMatcher categories;
    std::vector<CategorySet> successes;
    CategorySet noSuccess;
};
