#include "host/table/TableLoader.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "host/InputError.h"
#include "host/table/ColumnPlan.h"
#include "host/table/ColumnReader.h"
#include "host/table/MissingTexts.h"
#include "host/table/RowBatch.h"
#include "host/table/RowReader.h"

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
          batch_(rows_.Names().size()),
          gathered_(rows_.Names().size()),
          secondThread_(options.threads) {
        std::vector<Column> columns;
        for (const ColumnPlan& column : plan_.columns) {
            readers_.emplace_back(column, missingTexts_);
            columns.emplace_back().name = column.name;
        }
        table_ = Table(std::move(columns));
        table_.SetWeightIndex(plan_.weightIndex);
    }

    Table Load() {
        std::exception_ptr badRow;
        for (bool hasRows = true; hasRows;) {
            try {
                hasRows = GatherBlock();
            } catch (const InputError&) {
                badRow = std::current_exception();
                hasRows = false;
            }
            FinishBatch();  // a row before the bad one may hold the first mistake of the table
            StartBatch();
        }
        FinishBatch();
        if (badRow) std::rethrow_exception(badRow);
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

    // Gathers the next row and all that are in memory behind it; false at the end of the input.
    bool GatherBlock() {
        if (!rows_.Next()) return false;
        do {
            gathered_.Add(rows_.Cells(), rows_.Line(), table_.AppendRow());
        } while (rows_.NextInBlock());
        return true;
    }

    // Starts to read the numbers of the gathered rows.
    void StartBatch() {
        std::swap(batch_, gathered_);
        gathered_.Clear();
        isPlain_.assign(readers_.size(), false);
        std::vector<std::size_t> plainColumns;
        for (std::size_t i = 0; i < readers_.size(); ++i) {
            if (numbersMayBeMissing_ || !readers_[i].TakesPlainNumbers()) continue;
            isPlain_[i] = true;
            plainColumns.push_back(i);
        }
        numbers_.emplace(batch_, std::move(plainColumns), secondThread_);
    }

    // Reads all that is left of the rows that were started with.
    void FinishBatch() {
        if (!numbers_) return;
        const bool areAllNumbers = numbers_->Finish();
        numbers_.reset();
        const std::size_t rowCount = batch_.RowCount();
        const bool isDone = areAllNumbers && std::ranges::find(isPlain_, false) == isPlain_.end();
        if (isDone && rowCount > 0) {
            for (ColumnReader& reader : readers_) reader.NotePlainNumber();
        } else {
            for (std::size_t row = 0; row < rowCount; ++row) ReadRow(row);
        }
        rowsRead_ += rowCount;
    }

    // Reads what no plain number was found for: missing cells, texts, categories, dates.
    void ReadRow(std::size_t row) {
        const std::span<const std::string_view> cells = batch_.Cells(row);
        double* const values = batch_.Target(row);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            ColumnReader& reader = readers_[i];
            if (isPlain_[i] && !std::isnan(values[i])) {
                reader.NotePlainNumber();
            } else if (!reader.Read(cells[i], values[i])) {
                TurnToText(i, row);
                isPlain_[i] = false;
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
        if (reader.HasVoidValues()) lateTexts_.push_back({column, rowsRead_ + row});
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
    bool numbersMayBeMissing_;           // a text of a missing cell is a number, so that no cell is one at first sight
    RowBatch batch_;                     // whose cells are being read
    RowBatch gathered_;                  // the rows behind them
    std::vector<bool> isPlain_;          // the columns of batch_ that `numbers_` reads
    std::size_t rowsRead_ = 0;           // before batch_
    std::vector<ColumnReader> readers_;  // borrow from the plan and the missing texts
    Table table_;
    std::vector<LateText> lateTexts_;
    SecondThread secondThread_;
    std::optional<NumberReading> numbers_;  // the last member: it may still write into the table
};

}  // namespace

Table LoadTable(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options) {
    return TableLoader(source, descriptor, options).Load();
}

}  // namespace tarn
