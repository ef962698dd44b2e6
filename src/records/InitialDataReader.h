#pragma once

#include <vector>

#include "machine/WorkShare.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"
#include "records/ColumnStore.h"
#include "records/MissingMarkers.h"

namespace QKTarn {

class TarnMemoIterator;

/// The memory store: reads a stream once and keeps its values by columns. A stream that has columns (`ColumnSource`)
/// keeps them: the store borrows what it finds, and copies only where records are dropped. Besides, it finds out once,
/// for every record, whether it misses anything, so that no pass has to look at fields that its tests don't use.
///
/// The width of the store is that of its first record; a later record of another width is cut or filled up with the
/// missing double.
class InitialDataReader {
 public:
    /// `source`: borrowed, may be null; its columns are needed as long as the store is. `dropMissing`: whether a record
    /// that misses one of `fields` is left out. `fields` and `varList`: borrowed.
    InitialDataReader(MultiPassRecordIter* source, bool dropMissing, const std::vector<int>* fields,
                      const QKVarList* varList);
    virtual ~InitialDataReader() = default;
    InitialDataReader(const InitialDataReader&) = delete;
    InitialDataReader& operator=(const InitialDataReader&) = delete;

    /// Reads the whole stream. 220003: no record was kept. 220005: there is no stream. 220026 and 220002 as below. 1:
    /// the work was stopped.
    QKStatus ReadAll() { return ReadAll(WorkShare()); }
    QKStatus ReadAll(const WorkShare& share);

    /// Stores a copy of the record, which is there once `Begin` was called. 220026: its weight is above 2147483647.
    /// 220002: no memory was left.
    QKStatus AddRecord(const Record& record);

    /// At the first record; past the end when there is none. No record is added behind it.
    TarnMemoIterator Begin();

    int Count() const { return static_cast<int>(store.Count()); }
    /// Fields per record.
    std::size_t Width() const { return store.Width(); }
    /// The records that were kept.
    const ColumnStore& Columns() const { return store; }
    /// The records of the source stream, dropped ones included, in its order; null where they are not at hand as
    /// columns.
    const ColumnStore* SourceColumns() const;

    /// Which records of the source stream miss anything, dropped ones included.
    const RecordFlags& IncompleteInSource() const { return incompleteInSource; }
    /// Which stored records miss anything.
    const RecordFlags& IncompleteInStore() const { return incompleteInStore; }

 private:
    bool IsDropped(const Record& record) const;
    bool IsIncomplete(const Record& record) const;
    QKStatus ReadRecords(const WorkShare& share);
    void Close(const WorkShare& share);
    QKStatus ReadColumns(const ColumnSource& columns, const WorkShare& share);
    RecordFlags FindKept(const ColumnStore& columns, std::size_t& keptCount) const;

    MultiPassRecordIter* source;
    bool dropMissing;
    const std::vector<int>* fields;
    const QKVarList* varList;
    MissingMarkers passMarkers;
    MissingMarkers readerMarkers;

    ColumnStore store;
    ColumnStore sourceColumns;  // of a source that has columns, where the store lacks some of its records
    bool hasSourceColumns = false;
    bool hasDropped = false;
    bool isClosed = false;
    RecordFlags incompleteInSource;
    RecordFlags incompleteInStore;
};

/// A position in the memory store, as a small value. Borrows the store.
class TarnMemoIterator : public MultiPassRecordIter {
 public:
    TarnMemoIterator() = default;
    TarnMemoIterator(const TarnMemoIterator& other) : TarnMemoIterator(other.store, other.index, other.state) {}
    TarnMemoIterator& operator=(const TarnMemoIterator& other);

    bool HasMore() override;
    /// Valid until the next call; null past the end.
    Record* Next() override;
    /// 0 normal, 1 reached the end.
    int GetState() override { return state; }
    int Rewind() override;

    /// A new iterator `offset` records further, past the end if that lies beyond the store.
    TarnMemoIterator At(int offset) const;
    TarnMemoIterator operator++(int);

    /// The position from 0, -1 past the end.
    int Index() const { return index; }
    InitialDataReader* Store() const { return store; }

 private:
    friend class InitialDataReader;
    TarnMemoIterator(InitialDataReader* reader, int position, int startState = 0)
        : index(position), store(reader), state(startState) {}

    Record current;  // a copy of the record that was handed out last
    int index = kPastEnd;
    InitialDataReader* store = nullptr;
    int state = 0;

    static constexpr int kPastEnd = -1;
    static constexpr int kStateEnd = 1;
    static constexpr int kStateKept = 3;  // a state that a rewind leaves as it is
};

}  // namespace QKTarn
