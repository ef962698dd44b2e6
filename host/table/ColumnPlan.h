#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/table/FieldDescriptor.h"
#include "host/table/FieldType.h"
#include "host/table/Table.h"
#include "host/table/TableLoader.h"

namespace tarn {

/// How a column is to be read, as far as that is settled before its cells are seen.
struct ColumnPlan {
    std::string name;
    std::string title;
    std::optional<FieldType> type;            ///< none: number or string, as the cells show
    std::optional<FieldLevel> level;          ///< none: what is usual for the type
    std::vector<DescribedValue> categories;   ///< the listed ones
    bool hasToldOrder = false;                ///< the list came with the request and has to be complete
    std::vector<DescribedValue> userMissing;  ///< the values that count as missing
    bool isUnnamed = false;                   ///< all of its cells are to be empty, and it is no field
    bool isRead = true;                       ///< whether its numbers count, and not only which of them are missing

    FieldLevel LevelAs(FieldType someType) const;
    /// Whether cells that are no numbers may make it a string column.
    bool MayBecomeText() const { return !isUnnamed && !type && level != FieldLevel::kContinuous; }
};

/// The plans of all columns, with where they come from.
struct TablePlan {
    std::string descriptorName;
    std::vector<ColumnPlan> columns;
    int weightIndex = Table::kNoColumn;
    std::vector<std::string> notes;  ///< which names were taken for which fields, as sentences
};

/// Joins what the descriptor and the request say about the columns of `sourceName`, which have the names `names`.
/// Throws an `InputError` for a name that is in neither of them, and for what contradicts itself.
TablePlan PlanTable(const std::string& sourceName, const std::vector<std::string>& names,
                    const TableDescriptor& descriptor, const LoadOptions& options);

/// The number that a described value stands for in a column of that type, which is not `kString`.
std::optional<double> NumberOf(const DescribedValue& value, FieldType type);

/// The listed categories of a column of that type, without those that count as missing.
/// Throws an `InputError` for one that is no value of the type or stands twice.
std::vector<Category> ListedCategories(const ColumnPlan& plan, FieldType type, const std::string& descriptorName);

/// The option by which a user gives the order of a field's categories.
inline constexpr const char* kOrderOption = "--order";

}  // namespace tarn
