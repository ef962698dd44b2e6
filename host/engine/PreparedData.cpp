#include "host/engine/PreparedData.h"

#include <algorithm>
#include <cmath>
#include <optional>

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

bool IsMissing(const Column& column, double cell) {
    return cell == (column.IsCategorical() ? kMissingCategory : kMissingNumber);
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
        data_.values.reserve(table_.RowCount() * data_.fields.size());
        for (std::size_t row = 0; row < table_.RowCount(); ++row) AddRecord(table_.Row(row));
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

    void AddRecord(const double* cells) {
        const std::optional<double> weight = WeightOf(cells);
        const double counted = weight.value_or(0);
        ++data_.counts.totalCount;
        data_.counts.totalFreq += counted;
        if (!(counted > 0)) ++data_.counts.badWeightCount;
        if (!weight || MissesOne(cells)) {
            ++data_.counts.droppedCount;
            data_.counts.droppedFreq += counted;
            return;
        }
        ++data_.recordCount;
        for (const FieldSource& source : sources_)
            data_.values.push_back(ValueOf(source, cells[source.column], *weight));
    }

    /// The weight as used: 1 without a weight field; none for a record that a missing or negative weight drops.
    std::optional<double> WeightOf(const double* cells) const {
        if (weightColumn_ == Table::kNoColumn) return 1;
        const double weight = cells[weightColumn_];
        if (weight < 0) return std::nullopt;  // a missing weight is the smallest number
        return requirements_.roundWeights ? std::round(weight) : weight;
    }

    bool MissesOne(const double* cells) const {
        return std::any_of(deleteColumns_.begin(), deleteColumns_.end(),
                           [&](std::size_t column) { return IsMissing(table_.Columns()[column], cells[column]); });
    }

    static double ValueOf(const FieldSource& source, double cell, double weight) {
        if (source.isWeight) return weight;
        if (!source.takesNumber) return cell;
        return cell == kMissingCategory ? kMissingNumber : source.numberByCategory[static_cast<std::size_t>(cell)];
    }

    const Table& table_;
    const Requirements& requirements_;
    int weightColumn_;
    std::vector<std::size_t> deleteColumns_;
    std::vector<FieldSource> sources_;
    PreparedData data_;
};

}  // namespace

PreparedData PrepareData(const Table& table, const Requirements& requirements) {
    return Preparation(table, requirements).Run();
}

}  // namespace tarn
