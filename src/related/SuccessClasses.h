#pragma once

#include <string>
#include <vector>

#include "platform/common/Record.h"
#include "related/CategoryMatcher.h"

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
    bool HasSuccess() const { return HasCategory(true); }
    bool HasFailure() const { return HasCategory(false); }

    bool AreKnown() const { return !flags.empty(); }
    /// Successes are the category that the first field has in this record, and the same one in the other fields. That
    /// holds for the whole run, whatever the weight of the record.
    void SetFromRecord(const std::vector<int>& fields, const Record& record);

    /// Whether a category is a success in the field at a position of the list of fields.
    bool IsSuccess(std::size_t position, int category) const;
    /// Whether the value of a field, which may be another one than that at the position, is a success there.
    bool IsSuccess(std::size_t position, const Record& record, int field) const;

 private:
    bool HasCategory(bool success) const;

    CategoryMatcher categories;
    std::vector<std::vector<bool>> flags;  ///< per field a bit per category
};
