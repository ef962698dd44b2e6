#include "host/TableLoader.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/ColumnPlan.h"
#include "host/ColumnReader.h"
#include "host/InputError.h"
#include "host/MissingTexts.h"

namespace tarn {

namespace {

std::string Position(const ByteSource& source, const CsvReader& reader) {
    return source.Name() + ":" + std::to_string(reader.Line()) + ": ";
}

// The records of a table after its header: rows of equal width, without the empty lines that are none.
class RowReader {
 public:
    RowReader(ByteSource& source, std::size_t blockSize) : source_(source), csv_(source, blockSize) { ReadHeader(); }

    const std::vector<std::string>& Names() const { return names_; }
    const CsvReader& Csv() const { return csv_; }

    bool Next() {
        do {
            if (!csv_.Next()) return false;
        } while (csv_.IsEmptyLine() && names_.size() > 1);
        const std::size_t width = csv_.Cells().size();
        if (width == names_.size()) return true;
        throw InputError(Position(source_, csv_) + std::to_string(width) + (width == 1 ? " cell" : " cells") +
                         "; expected " + std::to_string(names_.size()) + " as in the header");
    }

 private:
    void ReadHeader() {
        bool hasEmptyLine = false;
        bool hasRow = csv_.Next();
        for (; hasRow && csv_.IsEmptyLine(); hasRow = csv_.Next()) hasEmptyLine = true;
        if (!hasRow) throw InputError(source_.Name() + ": no header; expected a row with the names of the fields");
        const std::span<const std::string_view> cells = csv_.Cells();
        if (hasEmptyLine && cells.size() == 1) {
            // An empty line is a row of a table with one column, and here it stands in the header's place.
            throw InputError(source_.Name() + ":1: an empty line; expected the name of the field");
        }
        std::unordered_map<std::string_view, std::size_t> columns;
        for (const std::string_view name : cells) {
            const std::size_t column = names_.size() + 1;
            const std::string where = Position(source_, csv_) + "column " + std::to_string(column) + ": ";
            if (name.empty()) throw InputError(where + "an empty name; expected the name of the field");
            const std::size_t first = columns.emplace(name, column).first->second;
            if (first != column) {
                throw InputError(where + "name " + Quoted(name) + " as in column " + std::to_string(first) +
                                 "; expected unique names");
            }
            names_.emplace_back(name);
        }
    }

    ByteSource& source_;
    CsvReader csv_;
    std::vector<std::string> names_;
};

// Columns without a described type start as numbers. When one turns out to hold texts, the rows before have to be read
// once more for it, as their numbers may have been written in ways that differ as texts.
class TableLoader {
 public:
    TableLoader(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options)
        : source_(source),
          blockSize_(options.blockSize),
          rows_(source, options.blockSize),
          plan_(PlanTable(source.Name(), rows_.Names(), descriptor, options)),
          missingTexts_(descriptor.missingTexts) {
        std::vector<Column> columns;
        for (const ColumnPlan& column : plan_.columns) {
            readers_.emplace_back(column, missingTexts_);
            columns.emplace_back().name = column.name;
        }
        table_ = Table(std::move(columns));
        table_.SetWeightIndex(plan_.weightIndex);
    }

    Table Load() {
        while (rows_.Next()) ReadRow(rows_.Csv().Cells());
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

    void ReadRow(std::span<const std::string_view> cells) {
        double* const row = table_.AppendRow();
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (!readers_[i].Read(cells[i], row[i])) TurnToText(i, cells[i], row[i]);
        }
    }

    void TurnToText(std::size_t column, std::string_view cell, double& value) {
        ColumnReader& reader = readers_[column];
        const ColumnPlan& plan = plan_.columns[column];
        if (!plan.MayBecomeText()) {
            throw InputError(Position(source_, rows_.Csv()) + "column " + Quoted(plan.name) + ": " + Quoted(cell) +
                             "; expected " + std::string(reader.ExpectedText()));
        }
        reader.BecomeText();
        value = reader.ReadText(cell);
        if (reader.HasVoidValues()) lateTexts_.push_back({column, table_.RowCount() - 1});
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
                table_.Row(row)[late.column] = readers_[late.column].ReadText(rows.Csv().Cells()[late.column]);
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
    std::vector<ColumnReader> readers_;  // borrow from the two above
    Table table_;
    std::vector<LateText> lateTexts_;
};

}  // namespace

Table LoadTable(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options) {
    return TableLoader(source, descriptor, options).Load();
}

}  // namespace tarn
