#include "host/engine/PreparedData.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

#include "host/InputError.h"

namespace tarn {

namespace {

/// Where the value of a field comes from.
struct FieldSource {
    std::size_t column;
    bool isWeight;
    /// Whether the cell is a category whose number goes over. A field without any category has such cells, too: all
    /// of them are missing, which is another number there than here.
    bool takesNumber;
    std::vector<double> numberByCategory;
};

double MissingIn(const Column& column) {
    return column.IsCategorical() ? kMissingCategory : kMissingNumber;
}

FieldLevel LevelOf(const RequiredField& field, const Column& column) {
    // A column of texts has no numbers; a case-ID of texts keeps its categories.
    if (field.encoding == FieldEncoding::kNone && !column.IsText()) return FieldLevel::kContinuous;
    return field.encoding == FieldEncoding::kNone      ? column.level
           : field.encoding == FieldEncoding::kOrdinal ? FieldLevel::kOrdinal
                                                       : FieldLevel::kNominal;
}

class Preparation {
 public:
    Preparation(const Table& table, const Requirements& requirements)
        : table_(table), requirements_(requirements), weightColumn_(table.FindColumn(requirements.weightField)) {
        for (const RequiredField& field : requirements.fields) AddField(field);
        CheckNames();
        for (const std::string& name : requirements.listwiseDelete) {
            const int column = table.FindColumn(name);
            if (column != Table::kNoColumn) deleteColumns_.push_back(static_cast<std::size_t>(column));
        }
    }

    PreparedData Run() {
        WeighAndDrop();
        for (const FieldSource& source : sources_) data_.columns.push_back(ValuesOf(source));
        return std::move(data_);
    }

 private:
    void AddField(const RequiredField& field) {
        const int index = table_.FindColumn(field.name);
        if (index == Table::kNoColumn) return;
        const auto column = static_cast<std::size_t>(index);
        const Column& source = table_.Columns()[column];
        PreparedField prepared{field.rename.empty() ? field.name : field.rename, &source, LevelOf(field, source),
                               index == weightColumn_};
        FieldSource from{
            column, prepared.isWeight, source.IsCategorical() && prepared.level == FieldLevel::kContinuous, {}};
        if (from.takesNumber) {
            for (const Category& category : source.categories) from.numberByCategory.push_back(category.number);
        }
        sources_.push_back(std::move(from));
        data_.fields.push_back(std::move(prepared));
    }

    /// The engine gives the copy of a field a name that is free, but takes that of the first column for free, too.
    void CheckNames() const {
        for (const RequiredField& field : requirements_.fields) {
            if (field.rename.empty() || table_.FindColumn(field.rename) == Table::kNoColumn) continue;
            const auto bearers = std::count_if(data_.fields.begin(), data_.fields.end(),
                                               [&](const PreparedField& other) { return other.name == field.rename; });
            if (bearers < 2) continue;
            throw InputError("the first column of the table, " + Quoted(field.rename) +
                             ": the engine gives that name to the numbers of the ordinal field " + Quoted(field.name) +
                             "; expected another name, or another column in front");
        }
    }

    /// Decides for every record whether it is dropped, and counts what became of them.
    void WeighAndDrop() {
        const std::size_t rowCount = table_.RowCount();
        FindMissing();
        if (weightColumn_ != Table::kNoColumn) isDropped_.resize(rowCount);
        for (std::size_t row = 0; row < rowCount; ++row) {
            const std::optional<double> weight = WeightOf(row);
            const double counted = weight.value_or(0);
            ++data_.counts.totalCount;
            data_.counts.totalFreq += counted;
            if (!(counted > 0)) ++data_.counts.badWeightCount;
            if (!weight) isDropped_[row] = true;
            if (!IsDropped(row)) continue;
            ++data_.counts.droppedCount;
            data_.counts.droppedFreq += counted;
        }
        data_.recordCount = rowCount - static_cast<std::size_t>(data_.counts.droppedCount);
    }

    /// Drops the records that miss a value in one of the columns that ask for it.
    void FindMissing() {
        for (const std::size_t column : deleteColumns_) {
            isDropped_.resize(table_.RowCount());
            const std::span<const double> cells = table_.Cells(column);
            const double missing = MissingIn(table_.Columns()[column]);
            for (std::size_t row = 0; row < cells.size(); ++row) isDropped_[row] |= cells[row] == missing ? 1 : 0;
        }
    }

    bool IsDropped(std::size_t row) const { return !isDropped_.empty() && isDropped_[row] != 0; }

    /// The weight as used: 1 without a weight field; none for a record that a missing or negative weight drops.
    std::optional<double> WeightOf(std::size_t row) const {
        if (weightColumn_ == Table::kNoColumn) return 1;
        const double weight = table_.Cells(static_cast<std::size_t>(weightColumn_))[row];
        if (weight < 0) return std::nullopt;  // a missing weight is the smallest number
        return requirements_.roundWeights ? std::round(weight) : weight;
    }

    /// The values of a field in the records that are left: those of the table where nothing about them changes.
    const double* ValuesOf(const FieldSource& source) {
        const std::span<const double> cells = table_.Cells(source.column);
        const bool areAllLeft = data_.recordCount == cells.size();
        const bool areRounded = source.isWeight && requirements_.roundWeights &&
                                std::ranges::any_of(cells, [](double weight) { return weight != std::round(weight); });
        if (areAllLeft && !source.takesNumber && !areRounded) return cells.data();
        double* value = data_.made.emplace_back(data_.recordCount).data();
        for (std::size_t row = 0; row < cells.size(); ++row) {
            if (!IsDropped(row)) *value++ = source.isWeight ? *WeightOf(row) : ValueOf(source, cells[row]);
        }
        return data_.made.back().data();
    }

    static double ValueOf(const FieldSource& source, double cell) {
        if (!source.takesNumber) return cell;
        return cell == kMissingCategory ? kMissingNumber : source.numberByCategory[static_cast<std::size_t>(cell)];
    }

    const Table& table_;
    const Requirements& requirements_;
    int weightColumn_;
    std::vector<std::size_t> deleteColumns_;
    std::vector<FieldSource> sources_;
    std::vector<unsigned char> isDropped_;  // for each record; empty where none can be
    PreparedData data_;
};

}  // namespace

PreparedData PrepareData(const Table& table, const Requirements& requirements) {
    return Preparation(table, requirements).Run();
}

}  // namespace tarn
