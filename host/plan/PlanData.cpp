#include "host/plan/PlanData.h"

#include <memory>
#include <utility>
#include <vector>

namespace tarn {

namespace {

DateType DateTypeOf(FieldType type) {
    switch (type) {
        case FieldType::kDate:
            return DateType::kDate;
        case FieldType::kTime:
            return DateType::kTime;
        case FieldType::kDateTime:
            return DateType::kDateTime;
        default:
            return DateType::kNone;
    }
}

std::shared_ptr<const IQKVariable> MakeVariable(const Column& column) {
    const DateType dateType = DateTypeOf(column.type);
    if (!column.IsCategorical()) return std::make_shared<QKContVar>(column.name, column.title, dateType);
    const bool ordinal = column.level == FieldLevel::kOrdinal;
    if (column.IsText()) {
        std::vector<QKCatVar::StringCategory> categories;
        for (const Category& category : column.categories) categories.push_back({category.text, category.label});
        return std::make_shared<QKCatVar>(column.name, column.title, ordinal, std::move(categories));
    }
    std::vector<QKCatVar::NumericCategory> categories;
    for (const Category& category : column.categories) categories.push_back({category.number, category.label});
    return std::make_shared<QKCatVar>(column.name, column.title, ordinal, std::move(categories), dateType);
}

QKRecordCounts CountRecords(const Table& table) {
    QKRecordCounts counts;
    counts.unweightedCount = table.RowCount();
    if (table.WeightIndex() == Table::kNoColumn) {
        counts.weightedCount = static_cast<double>(table.RowCount());
        return counts;
    }
    for (const double weight : table.Cells(static_cast<std::size_t>(table.WeightIndex()))) {
        if (weight > 0) {
            counts.weightedCount += weight;
        } else {
            ++counts.badWeightCount;  // a missing weight is the smallest number
        }
    }
    return counts;
}

}  // namespace

QKVarList MakeVarList(const Table& table) {
    QKVarList varList;
    for (const Column& column : table.Columns()) varList.AddNewVar(MakeVariable(column));
    varList.SetFreqWeightIndex(table.WeightIndex());
    varList.SetCounts(CountRecords(table));
    return varList;
}

Record* TableRecords::Next() {
    for (std::size_t i = 0; i < table_.ColumnCount(); ++i) current_[i] = table_.Cells(i)[next_];
    ++next_;
    return &current_;
}

int TableRecords::Rewind() {
    next_ = 0;
    return 0;
}

}  // namespace tarn
