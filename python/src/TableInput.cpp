#include "python/src/TableInput.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/InputError.h"
#include "host/Utf8.h"
#include "host/engine/RunSize.h"
#include "host/table/ColumnPlan.h"
#include "host/table/ColumnReader.h"
#include "host/table/MissingTexts.h"
#include "host/table/TableShape.h"
#include "machine/WorkShare.h"
#include "python/src/ArrowValues.h"

namespace tarn {

namespace {

constexpr const char* kData = "the data";

class TableReader {
 public:
    TableReader(InputData& data, const WantedColumns& wanted, const LoadOptions& options, bool mayBorrow)
        : data_(data), memory_(options.memory), share_(options.threads), missingTexts_({}), mayBorrow_(mayBorrow) {
        ChooseColumns(wanted);
        plan_ = Plan(OfChosen(options));
        std::vector<Column> columns;
        for (const Chosen& chosen : chosen_) columns.emplace_back().name = chosen.column->name;
        table_ = Table(std::move(columns));
        table_.SetWeightIndex(plan_.weightIndex);
        for (const ColumnPlan& column : plan_.columns) readers_.emplace_back(column, missingTexts_, shape_);
    }

    Table Read(const std::function<void()>& betweenPieces) {
        for (std::size_t i = 0; i < data_.size(); ++i) {
            const std::vector<std::size_t> ofSource = ChosenOf(i);
            std::size_t rowCount = 0;
            while (!ofSource.empty() && data_[i]->Next()) {
                CheckPiece(*data_[i], ofSource, rowCount);
                TakePiece(*data_[i], ofSource, rowCount);
                rowCount += static_cast<std::size_t>(data_[i]->RowCount());
                betweenPieces();
            }
            for (const std::size_t column : ofSource) {
                chosen_[column].rowCount = rowCount;
                taken_.Add(!table_.AreLent(column), readers_[column]);
            }
            // With cells that could not stay where they are, as not all of them are finite.
            CheckMemory(table_.RowCount(), taken_);
        }
        CheckLengths();
        table_.Trim();
        Finish();
        return std::move(table_);
    }

 private:
    /// A column of the table.
    struct Chosen {
        std::size_t source;
        std::size_t place;  // among the columns of the source
        const InputColumn* column;
        bool hasToldOrder = false;
        std::size_t rowCount = 0;
        CellCodes codes;  // of the piece
    };

    /// What columns take that isn't lent to the table.
    struct TakenMemory {
        std::size_t columns = 0;   // whose cells are the table's own
        std::size_t distinct = 0;  // values of categorical columns

        void Add(bool isOwn, const ColumnReader& reader) {
            columns += isOwn ? 1 : 0;
            distinct += reader.DistinctCount();
        }
    };

    void ChooseColumns(const WantedColumns& wanted) {
        std::unordered_set<std::string> found;
        for (std::size_t i = 0; i < data_.size(); ++i) {
            const std::vector<InputColumn>& columns = data_[i]->Columns();
            for (std::size_t j = 0; j < columns.size(); ++j) {
                const InputColumn& column = columns[j];
                known_.emplace_back(column.name);
                if (!wanted.Wants(column.name) || (wanted.IsAll() && !column.format.refused.empty())) continue;
                if (!found.insert(column.name).second) {
                    throw InputError("the data has two columns " + Quoted(column.name) +
                                     "; expected names that differ");
                }
                CheckKind(column);
                chosen_.push_back({i, j, &column, false, 0, {}});
            }
        }
        wanted.Check(known_);
    }

    /// What is said of the chosen columns. What is said of others has to be of some of the data.
    LoadOptions OfChosen(LoadOptions options) const {
        const auto isOther = [this](const std::string& name) {
            const auto isIt = [&](const Chosen& chosen) { return chosen.column->name == name; };
            return std::ranges::find(known_, name) != known_.end() && std::ranges::none_of(chosen_, isIt);
        };
        for (auto* list : {&options.nominal, &options.ordinal, &options.continuous}) std::erase_if(*list, isOther);
        std::erase_if(options.orders, [&](const FieldOrder& order) { return isOther(order.field); });
        return options;
    }

    static void CheckKind(const InputColumn& column) {
        if (column.format.refused.empty()) return;
        throw InputError("column " + Quoted(column.name) + " holds " + column.format.refused +
                         "; expected numbers, booleans, texts or categories");
    }

    TablePlan Plan(const LoadOptions& options) {
        TableDescriptor descriptor;
        descriptor.sourceName = kData;
        std::vector<std::string> names;
        for (const Chosen& chosen : chosen_) {
            FieldDescriptor& field = descriptor.fields.emplace_back();
            field.name = chosen.column->name;
            field.type = chosen.column->type;
            if (chosen.column->isListed) field.categories.emplace();
            field.categoriesOrdered = chosen.column->isOrdered;
            names.push_back(chosen.column->name);
        }
        TablePlan plan = PlanTable(kData, names, descriptor, options);
        for (std::size_t i = 0; i < chosen_.size(); ++i) chosen_[i].hasToldOrder = plan.columns[i].hasToldOrder;
        return plan;
    }

    std::vector<std::size_t> ChosenOf(std::size_t source) const {
        std::vector<std::size_t> columns;
        for (std::size_t i = 0; i < chosen_.size(); ++i) {
            if (chosen_[i].source == source) columns.push_back(i);
        }
        return columns;
    }

    /// Throws where the table would take more with the next piece than it may. A column of nulls has as many rows as it
    /// says, and nothing behind them.
    void CheckPiece(const InputSource& source, const std::vector<std::size_t>& columns, std::size_t firstRow) const {
        const std::size_t rows = firstRow + static_cast<std::size_t>(source.RowCount());
        TakenMemory taken = taken_;
        for (const std::size_t i : columns) taken.Add(firstRow > 0 || !MayBorrow(source, i), readers_[i]);
        CheckMemory(std::max(rows, table_.RowCount()), taken);
    }

    void CheckMemory(std::size_t rows, const TakenMemory& taken) const {
        const double bytes = static_cast<double>(rows) * static_cast<double>(taken.columns * sizeof(double)) +
                             static_cast<double>(taken.distinct * ColumnReader::kBytesOfDistinct);
        if (memory_ == 0 || bytes <= static_cast<double>(memory_)) return;
        std::string needs = std::to_string(rows) + " rows of " + std::to_string(taken.columns) +
                            (taken.columns == 1 ? " column" : " columns");
        if (taken.distinct > 0) needs += ", " + std::to_string(taken.distinct) + " distinct values";
        FailForMemory(kData, bytes, needs, memory_);
    }

    void TakePiece(const InputSource& source, const std::vector<std::size_t>& columns, std::size_t firstRow) {
        const auto count = static_cast<std::size_t>(source.RowCount());
        if (firstRow + count > table_.RowCount()) table_.Resize(firstRow + count);
        // A piece with few rows is done before a thread would have begun.
        constexpr std::size_t kRowsWorthThreads = std::size_t{1} << 15;
        const auto take = [&](std::size_t i) { TakeColumn(source, columns[i], firstRow, count); };
        if (count >= kRowsWorthThreads) {
            share_.Run(columns.size(), take);
        } else {
            for (std::size_t i = 0; i < columns.size(); ++i) take(i);
        }
    }

    void TakeColumn(const InputSource& source, std::size_t index, std::size_t firstRow, std::size_t count) {
        Chosen& chosen = chosen_[index];
        const ColumnPiece piece = source.PieceOf(chosen.place);
        const InputColumn& column = *chosen.column;
        if (column.isListed && !chosen.hasToldOrder) {
            AddEntries(column, *piece.array->dictionary, plan_.columns[index].categories);
        }
        if (firstRow == 0 && count == table_.RowCount() && MayBorrow(source, index) && Borrow(source, piece, index))
            return;
        chosen.codes.Clear();
        const std::span<double> cells = table_.Cells(index).subspan(firstRow, count);
        ReadPiece(column, piece, readers_[index], chosen.codes, cells);
        const std::vector<double> codes = readers_[index].Join(chosen.codes);
        if (!codes.empty()) MapCodes(cells, codes, kMissingNumber);
    }

    /// Whether the cells of a piece can stay where they are, if all of them are there and finite.
    bool MayBorrow(const InputSource& source, std::size_t index) const {
        constexpr std::int64_t kWorthBorrowing = std::int64_t{1} << 15;
        const InputColumn& column = *chosen_[index].column;
        return mayBorrow_ && source.RowCount() >= kWorthBorrowing && column.format.layout == ValueLayout::kDouble &&
               !column.codes && readers_[index].TakesPlainNumbers() && source.Hold() != nullptr;
    }

    /// Leaves the cells where they are, if they lie as those of a table.
    bool Borrow(const InputSource& source, const ColumnPiece& piece, std::size_t index) {
        const double* const cells = FiniteDoubles(*piece.array, piece.first, piece.count);
        if (cells != nullptr) table_.Lend(index, cells, source.Hold());
        return cells != nullptr;
    }

    void CheckLengths() const {
        for (const Chosen& chosen : chosen_) {
            if (chosen.rowCount == table_.RowCount()) continue;
            const auto longest = std::ranges::max_element(chosen_, {}, &Chosen::rowCount);
            throw InputError("column " + Quoted(chosen.column->name) + " has " + std::to_string(chosen.rowCount) +
                             " values and " + Quoted(longest->column->name) + " " + std::to_string(longest->rowCount) +
                             "; expected as many in each");
        }
    }

    void Finish() {
        for (std::size_t i = 0; i < readers_.size(); ++i) {
            Column& column = table_.ColumnAt(i);
            const std::vector<double> categoryByCode = readers_[i].Finish(kData, column);
            if (column.IsCategorical()) MapCodes(table_.Cells(i), categoryByCode, kMissingCategory);
            column.isInferred = !column.IsText() && column.listedCount == 0;  // numbers don't say what they are
            for (const Category& category : column.categories) {
                if (IsUtf8(category.text)) continue;
                throw InputError("column " + Quoted(column.name) + ": a text that is not UTF-8 or has a NUL; " +
                                 "expected UTF-8 without it");
            }
        }
    }

    InputData& data_;
    std::size_t memory_;
    WorkShare share_;
    MissingTexts missingTexts_;  // none: what is missing has no text
    TableShape shape_;
    bool mayBorrow_;
    std::vector<std::string_view> known_;  // the names of all columns
    std::vector<Chosen> chosen_;
    TablePlan plan_;
    std::vector<ColumnReader> readers_;  // borrow from the plan and the missing texts
    TakenMemory taken_;                  // by the sources that were read
    Table table_;
};

}  // namespace

Table ReadTable(InputData& data, const WantedColumns& wanted, const LoadOptions& options, bool mayBorrow,
                const std::function<void()>& betweenPieces) {
    return TableReader(data, wanted, options, mayBorrow).Read(betweenPieces);
}

}  // namespace tarn
