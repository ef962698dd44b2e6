#include "host/TableLoader.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>

#include "host/ColumnPlan.h"
#include "host/ColumnReader.h"
#include "host/InputError.h"
#include "host/MissingTexts.h"
#include "host/RowBatch.h"
#include "host/RowReader.h"

namespace tarn {

namespace {

// Columns without a described type start as numbers. When one turns out to hold texts, the rows before have to be read
// once more for it, as their numbers may have been written in ways that differ as texts.
class TableLoader {
 public:
    TableLoader(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options)
        : source_(source),
          blockSize_(options.blockSize),
          rows_(source, options.blockSize),
          plan_(PlanTable(source.Name(), rows_.Names(), descriptor, options)),
          missingTexts_(descriptor.missingTexts),
          numbersMayBeMissing_(std::ranges::any_of(missingTexts_.Texts(),
                                                   [](const auto& text) { return ParseDecimal(text).has_value(); })),
          batch_(rows_.Names().size()) {
        std::vector<Column> columns;
        for (const ColumnPlan& column : plan_.columns) {
            readers_.emplace_back(column, missingTexts_);
            columns.emplace_back().name = column.name;
        }
        table_ = Table(std::move(columns));
        table_.SetWeightIndex(plan_.weightIndex);
    }

    Table Load() {
        while (rows_.Next()) ReadBlock();
        if (!lateTexts_.empty()) ReadLateTexts();
        FinishColumns();
        return std::move(table_);
    }

 private:
    // A column that was read as numbers up to a row.
    struct LateText {
        std::size_t column;
        std::size_t rowCount;
    };

    // Reads the row that `rows_` stands at and all that are in memory behind it.
    void ReadBlock() {
        batch_.Clear();
        try {
            do {
                batch_.Add(rows_.Cells(), rows_.Line(), table_.AppendRow());
            } while (rows_.NextInBlock());
        } catch (const InputError&) {
            ReadBatch();  // a row before the bad one may hold the first mistake of the table
            throw;
        }
        ReadBatch();
    }

    void ReadBatch() {
        std::vector<bool> isPlain(readers_.size());
        for (std::size_t i = 0; i < readers_.size(); ++i)
            isPlain[i] = !numbersMayBeMissing_ && readers_[i].TakesPlainNumbers();
        ReadPlainNumbers(batch_, isPlain);
        for (std::size_t row = 0; row < batch_.RowCount(); ++row) ReadRow(row, isPlain);
    }

    // Reads what no plain number was found for: missing cells, texts, categories, dates.
    void ReadRow(std::size_t row, std::vector<bool>& isPlain) {
        const std::span<const std::string_view> cells = batch_.Cells(row);
        double* const values = batch_.Target(row);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            ColumnReader& reader = readers_[i];
            if (isPlain[i] && !std::isnan(values[i])) {
                reader.NotePlainNumber();
            } else if (!reader.Read(cells[i], values[i])) {
                TurnToText(i, row);
                isPlain[i] = false;
            }
        }
    }

    void TurnToText(std::size_t column, std::size_t row) {
        ColumnReader& reader = readers_[column];
        const ColumnPlan& plan = plan_.columns[column];
        const std::string_view cell = batch_.Cells(row)[column];
        if (!plan.MayBecomeText()) {
            throw InputError(rows_.PositionOf(batch_.Line(row)) + "column " + Quoted(plan.name) + ": " + Quoted(cell) +
                             "; expected " + std::string(reader.ExpectedText()));
        }
        reader.BecomeText();
        batch_.Target(row)[column] = reader.ReadText(cell);
        const std::size_t rowsBefore = table_.RowCount() - batch_.RowCount() + row;
        if (reader.HasVoidValues()) lateTexts_.push_back({column, rowsBefore});
    }

    void ReadLateTexts() {
        const auto byRowCount = [](const LateText& a, const LateText& b) { return a.rowCount < b.rowCount; };
        const std::size_t rowCount = std::ranges::max_element(lateTexts_, byRowCount)->rowCount;
        source_.Rewind();
        RowReader rows(source_, blockSize_);
        bool isSame = rows.Names() == rows_.Names();
        for (std::size_t row = 0; isSame && row < rowCount; ++row) {
            isSame = rows.Next();
            for (const LateText& late : lateTexts_) {
                if (!isSame || row >= late.rowCount) continue;
                table_.Row(row)[late.column] = readers_[late.column].ReadText(rows.Cells()[late.column]);
            }
        }
        if (!isSame) throw InputError(source_.Name() + ": changed while it was read; expected it to stay as it is");
    }

    void FinishColumns() {
        struct Coded {
            std::size_t column;
            std::vector<double> categoryByCode;
        };
        std::vector<Coded> codedColumns;
        for (std::size_t i = 0; i < readers_.size(); ++i) {
            Column& column = table_.ColumnAt(i);
            std::vector<double> categoryByCode = readers_[i].Finish(plan_.descriptorName, column);
            if (column.IsCategorical()) codedColumns.push_back({i, std::move(categoryByCode)});
        }
        if (codedColumns.empty()) return;
        for (std::size_t row = 0; row < table_.RowCount(); ++row) {
            double* const cells = table_.Row(row);
            for (const Coded& coded : codedColumns) {
                double& cell = cells[coded.column];
                cell = cell == kMissingNumber ? kMissingCategory : coded.categoryByCode[static_cast<std::size_t>(cell)];
            }
        }
    }

    ByteSource& source_;
    std::size_t blockSize_;
    RowReader rows_;
    TablePlan plan_;
    MissingTexts missingTexts_;
    bool numbersMayBeMissing_;  // a text of a missing cell is a number, so that no cell is one at first sight
    RowBatch batch_;
    std::vector<ColumnReader> readers_;  // borrow from the two above
    Table table_;
    std::vector<LateText> lateTexts_;
};

}  // namespace

Table LoadTable(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options) {
    return TableLoader(source, descriptor, options).Load();
}

}  // namespace tarn
