#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "machine/LargeArray.h"
#include "machine/WorkShare.h"
#include "platform/common/Record.h"
#include "records/MissingMarkers.h"

namespace QKTarn {

/// One bit per record, in the order of the records.
using RecordFlags = std::vector<bool>;

/// The values of a run, those of each field side by side: borrowed from a source that has columns, or its own.
class ColumnStore {
 public:
    ColumnStore() = default;
    ColumnStore(const ColumnStore&) = delete;
    ColumnStore& operator=(const ColumnStore&) = delete;

    // ---- Filling: one of these, then `Close` ----

    /// Takes the first `fieldCount` columns of a source where they are. Borrows the source's values.
    void Borrow(const ColumnSource& source, std::size_t fieldCount);
    /// Copies the records of another store that are marked in `kept`, `keptCount` of them.
    void CopyFrom(const ColumnStore& other, const RecordFlags& kept, std::size_t keptCount, const WorkShare& share);
    /// Adds a record of any width. The first one gives the store its own; later ones are cut, or filled up with the
    /// missing double.
    void Append(const Record& record);
    /// After the last record.
    void Close();

    // ---- Reading ----

    std::size_t Count() const { return count_ + pendingCount_; }
    /// Fields per record.
    std::size_t Width() const { return width_; }
    /// The `Count()` values of a field below `Width()`.
    const double* Column(std::size_t field) const { return columns_[field]; }
    std::span<const double> ColumnSpan(std::size_t field) const { return {columns_[field], count_}; }
    /// The same values truncated towards zero to 32 bits, as categories and weights are taken. Made when it is asked
    /// for first, and kept. Safe on several threads at once.
    const std::int32_t* WholeColumn(std::size_t field) const;
    /// Copies the record at a position, or some fields of it, to their places in `values`.
    void Read(std::size_t record, double* values) const;
    void Read(std::size_t record, std::span<const int> fields, double* values) const;

    // ---- What is known of the columns ----

    /// Finds out what the operations below answer, and, where `incomplete` is given, which records miss anything.
    void Examine(const MissingMarkers& markers, const WorkShare& share, RecordFlags* incomplete);
    /// Whether any record misses the field, or any field; false for a position outside the store.
    bool HasMissing(int field) const { return IsField(field) && facts_[static_cast<std::size_t>(field)].hasMissing; }
    bool HasMissing() const { return hasMissing_; }
    /// Whether any value of the field is not a number.
    bool HasNaN(int field) const { return IsField(field) && facts_[static_cast<std::size_t>(field)].hasNaN; }

 private:
    struct Facts {
        bool hasMissing = false;
        bool hasNaN = false;
    };

    static Facts FindFacts(std::span<const double> values, double marker);
    bool IsField(int field) const { return field >= 0 && static_cast<std::size_t>(field) < facts_.size(); }
    void Grow();
    void FlushPending();

    std::size_t count_ = 0;
    std::size_t width_ = 0;
    std::vector<const double*> columns_;
    std::vector<Facts> facts_;
    bool hasMissing_ = false;

    // Of a store with its own values.
    std::vector<LargeArray<double>> own_;
    std::size_t capacity_ = 0;
    std::vector<double> pending_;  // records that have not been parted into columns yet
    std::size_t pendingCount_ = 0;

    mutable std::mutex mutex_;
    mutable std::vector<LargeArray<std::int32_t>> whole_;
};

}  // namespace QKTarn
