#include "host/table/TableLoader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "host/InputError.h"
#include "host/table/ColumnPlan.h"
#include "host/table/ColumnReader.h"
#include "host/table/CsvPieces.h"
#include "host/table/MissingTexts.h"
#include "host/table/PieceMistake.h"
#include "host/table/PieceReader.h"
#include "host/table/RowReader.h"
#include "machine/WorkShare.h"

namespace tarn {

namespace {

/// The header is read with a block of this size at most: what is left of it is the first piece, which one thread reads
/// alone, and which shows for nearly every table which columns hold texts.
constexpr std::size_t kHeaderBlockSize = std::size_t{1} << 16;

/// How many pieces are in memory for each thread. With more of them threads wait less for one another at the end of a
/// round, and more memory is taken.
constexpr std::size_t kPiecesOfThread = 3;

// Reads pieces of rows in rounds. In a round each piece is taken from the source and read into columns of its own, by
// as many threads as there are; the pieces are then put in order, and take their places in the table when the next
// round begins.
//
// Columns without a described type start as numbers. When one turns out to hold texts, the pieces of the round are read
// anew, and the rows before them have to be read once more for it at the end, as their numbers may have been written in
// ways that differ as texts.
class TableLoader {
 public:
    TableLoader(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options)
        : source_(source),
          blockSize_(options.blockSize),
          memory_(options.memory),
          shape_(options.shape),
          header_(source, std::min(options.blockSize, kHeaderBlockSize), shape_),
          plan_(PlanFields(source.Name(), header_.Names(), descriptor, options)),
          missingTexts_(options.missingTexts.value_or(descriptor.missingTexts), options.missingAmongNumbers),
          form_{shape_.delimiter, shape_.numbers.decimal, header_.RepeatedHeader()},
          share_(options.threads, options.isCancelled),
          pieces_(source, header_.Csv().Rest(), header_.Csv().IsRestComplete(), options.blockSize, shape_.delimiter),
          nextLine_(header_.Csv().NextLine()) {
        std::vector<Column> columns;
        for (const ColumnPlan& column : plan_.columns) {
            readers_.emplace_back(column, missingTexts_, shape_);
            columns.emplace_back().name = column.name;
        }
        table_ = Table(std::move(columns));
        table_.SetWeightIndex(plan_.weightIndex);
        for (const std::string& note : plan_.notes) table_.AddNote(note);
    }

    Table Load() {
        const std::size_t most = share_.Threads() == 1 ? 1 : kPiecesOfThread * share_.Threads();
        bool hasMore = ReadRound(1) && ReadRound(most);
        ReserveRows();
        while (hasMore) hasMore = ReadRound(most);
        Share(slots_.size(), [&](std::size_t i) { Place(slots_[i]); });
        if (pieces_.Failure()) std::rethrow_exception(pieces_.Failure());
        slots_.clear();
        table_.Trim();
        if (!lateTexts_.empty()) ReadLateTexts();
        FinishColumns();
        table_.KeepColumns(table_.ColumnCount() - shape_.emptyAtEnd);
        NoteRepeatedHeaders();
        return std::move(table_);
    }

 private:
    /// A piece on its way into the table.
    struct Slot {
        CsvPiece piece;
        PieceReader rows;
        PieceReader::Outcome outcome = PieceReader::Outcome::kRead;
        bool isTaken = false;                         // has rows that are not in the table yet
        std::size_t firstRow = 0;                     // their place there
        std::vector<std::vector<double>> codesByOwn;  // for each column, the code in the table by that in the piece
    };

    /// A column that was read as numbers up to a row.
    struct LateText {
        std::size_t column;
        std::size_t rowCount;
    };

    /// The plans of the fields, and of the columns at the end that are none.
    static TablePlan PlanFields(const std::string& sourceName, const std::vector<std::string>& names,
                                const TableDescriptor& descriptor, const LoadOptions& options) {
        const TableShape& shape = options.shape;
        const std::vector<std::string> named(names.begin(),
                                             names.end() - static_cast<std::ptrdiff_t>(shape.emptyAtEnd));
        TablePlan plan = PlanTable(sourceName, named, descriptor, options);
        for (std::size_t i = 0; i < shape.emptyAtEnd; ++i) {
            plan.columns.emplace_back().isUnnamed = true;
            plan.columns.back().isRead = false;
        }
        for (const AmbiguousColumn& ambiguous : shape.ambiguous) {
            const ColumnPlan& column = plan.columns[ambiguous.column];
            if (!options.isRead || !column.isRead || column.type || column.level) continue;
            throw InputError(sourceName + ": column " + Quoted(column.name) + ": " + Quoted(ambiguous.example) +
                             " may have a decimal comma or a mark of thousands; expected to be told: --decimal , or "
                             "--decimal .");
        }
        return plan;
    }

    void NoteRepeatedHeaders() {
        if (repeatedHeaders_ == 0) return;
        table_.AddNote(source_.Name() + ": the header stands there " +
                       (repeatedHeaders_ == 1 ? "a second time" : std::to_string(repeatedHeaders_) + " times more") +
                       "; passed over");
    }

    void Share(std::size_t count, const std::function<void(std::size_t)>& job) const {
        if (!share_.Run(count, job)) throw LoadCancelled();
    }

    /// Reads the next pieces, `pieceCount` of them at most; false where there are no more behind them.
    bool ReadRound(std::size_t pieceCount) {
        while (slots_.size() < pieceCount) slots_.emplace_back();
        Share(pieceCount, [this](std::size_t i) {
            Slot& slot = slots_[i];
            Place(slot);
            {
                const std::lock_guard lock(takingPieces_);
                slot.isTaken = pieces_.Next(slot.piece);
            }
            if (slot.isTaken) slot.outcome = slot.rows.Read(slot.piece, readers_, form_);
        });
        std::vector<Slot*> taken;
        for (Slot& slot : slots_) {
            if (slot.isTaken) taken.push_back(&slot);
        }
        std::ranges::sort(taken, {}, [](const Slot* slot) { return slot->piece.Number(); });
        if (TurnToText(taken)) {
            Share(taken.size(),
                  [&](std::size_t i) { taken[i]->outcome = taken[i]->rows.Read(taken[i]->piece, readers_, form_); });
        }
        for (Slot* const slot : taken) Append(*slot);
        CheckMemory();
        return taken.size() == pieceCount;
    }

    /// Throws where the table takes more than it may.
    void CheckMemory() const {
        if (memory_ == 0) return;
        std::size_t bytes = table_.RowCount() * readers_.size() * sizeof(double);
        if (!source_.Size()) bytes += bytesRead_;  // kept, since it can't be read again
        for (const ColumnReader& reader : readers_) bytes += reader.DistinctCount() * ColumnReader::kBytesOfDistinct;
        if (bytes <= memory_) return;
        constexpr std::size_t kMebibyte = std::size_t{1} << 20;
        throw InputError(source_.Name() + ": more than " + std::to_string(memory_ / kMebibyte) +
                         " MiB of memory after " + std::to_string(table_.RowCount()) +
                         " records; expected a smaller table, or more memory told by --memory");
    }

    /// Makes room for as many rows as the whole input has if all of it is like what was read, and some more.
    void ReserveRows() {
        const std::optional<std::size_t> size = source_.Size();
        if (!size || bytesRead_ == 0) return;
        constexpr double kMargin = 1.01;
        const double share = static_cast<double>(*size) / static_cast<double>(bytesRead_);
        table_.Reserve(static_cast<std::size_t>(static_cast<double>(table_.RowCount()) * share * kMargin));
    }

    /// Makes columns of texts of those in which texts were found; false if there are none.
    bool TurnToText(const std::vector<Slot*>& taken) {
        bool hasTurned = false;
        for (const Slot* const slot : taken) {
            if (slot->outcome != PieceReader::Outcome::kTexts) continue;
            for (const std::size_t column : slot->rows.TextColumns()) {
                if (readers_[column].IsText()) continue;
                hasTurned = true;
                readers_[column].BecomeText();
                if (readers_[column].HasVoidValues()) lateTexts_.push_back({column, table_.RowCount()});
            }
        }
        return hasTurned;
    }

    /// Gives the rows of the next piece their place behind the others.
    void Append(Slot& slot) {
        if (slot.outcome == PieceReader::Outcome::kMistake) {
            ThrowMistakeOf(slot.piece.Text(), source_.Name(), nextLine_, plan_.columns, readers_, shape_,
                           form_.repeatedHeader);
        }
        slot.codesByOwn.clear();
        for (std::size_t i = 0; i < readers_.size(); ++i)
            slot.codesByOwn.push_back(readers_[i].Join(slot.rows.Codes(i)));
        slot.firstRow = table_.RowCount();
        table_.Resize(slot.firstRow + slot.rows.RowCount());
        nextLine_ += slot.rows.LineCount();
        repeatedHeaders_ += slot.rows.RepeatedHeaders();
        bytesRead_ += slot.piece.Text().size();
    }

    /// Puts the rows of a piece into the table, if it holds any.
    void Place(Slot& slot) {
        if (!std::exchange(slot.isTaken, false)) return;
        const std::size_t width = readers_.size();
        const auto isThere = [&](std::size_t column) {
            return slot.rows.AreAllZero(column) && table_.AreZeroFrom(column, slot.firstRow);
        };
        // Some columns at a time, so that a line of the cache is read once.
        constexpr std::size_t kColumns = 8;
        std::array<std::size_t, kColumns> columns{};
        for (std::size_t next = 0; next < width;) {
            std::size_t count = 0;
            for (; next < width && count < kColumns; ++next) {
                if (!isThere(next)) columns[count++] = next;
            }
            std::array<double*, kColumns> cells{};
            for (std::size_t i = 0; i < count; ++i) cells[i] = table_.Cells(columns[i]).data() + slot.firstRow;
            const double* values = slot.rows.Values();
            for (std::size_t row = 0; row < slot.rows.RowCount(); ++row, values += width) {
                for (std::size_t i = 0; i < count; ++i) cells[i][row] = values[columns[i]];
            }
        }
        for (std::size_t i = 0; i < width; ++i) {
            if (slot.codesByOwn[i].empty()) continue;
            MapCodes(table_.Cells(i).subspan(slot.firstRow, slot.rows.RowCount()), slot.codesByOwn[i], kMissingNumber);
        }
    }

    void ReadLateTexts() {
        const auto byRowCount = [](const LateText& a, const LateText& b) { return a.rowCount < b.rowCount; };
        const std::size_t rowCount = std::ranges::max_element(lateTexts_, byRowCount)->rowCount;
        source_.Rewind();
        RowReader rows(source_, blockSize_, shape_);
        bool isSame = rows.Names() == header_.Names();
        for (std::size_t row = 0; isSame && row < rowCount; ++row) {
            constexpr std::size_t kRowsBetweenQuestions = 4096;
            if (row % kRowsBetweenQuestions == 0 && share_.IsStopped()) throw LoadCancelled();
            isSame = rows.Next();
            for (const LateText& late : lateTexts_) {
                if (!isSame || row >= late.rowCount) continue;
                ColumnReader& reader = readers_[late.column];
                table_.Cells(late.column)[row] = reader.ReadTextAgain(rows.Cells()[late.column]);
            }
        }
        if (!isSame) throw InputError(source_.Name() + ": changed while it was read; expected it to stay as it is");
    }

    void FinishColumns() {
        struct Coded {
            std::size_t column;
            std::vector<double> categoryByCode;
        };
        std::vector<Coded> coded;
        for (std::size_t i = 0; i < readers_.size(); ++i) {
            Column& column = table_.ColumnAt(i);
            std::vector<double> categoryByCode = readers_[i].Finish(plan_.descriptorName, column);
            if (column.IsCategorical()) coded.push_back({i, std::move(categoryByCode)});
        }
        Share(coded.size(), [&](std::size_t i) {
            MapCodes(table_.Cells(coded[i].column), coded[i].categoryByCode, kMissingCategory);
        });
    }

    ByteSource& source_;
    std::size_t blockSize_;
    std::size_t memory_;
    TableShape shape_;
    RowReader header_;
    TablePlan plan_;
    MissingTexts missingTexts_;
    RowForm form_;
    WorkShare share_;
    std::mutex takingPieces_;
    CsvPieces pieces_;
    std::deque<Slot> slots_;
    std::vector<ColumnReader> readers_;  // borrow from the plan and the missing texts
    Table table_;
    std::size_t nextLine_;  // the line on which the next piece begins
    std::size_t repeatedHeaders_ = 0;
    std::size_t bytesRead_ = 0;  // of rows
    std::vector<LateText> lateTexts_;
};

}  // namespace

Table LoadTable(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options) {
    return TableLoader(source, descriptor, options).Load();
}

}  // namespace tarn
