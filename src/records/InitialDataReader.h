#pragma once

#include <memory>
#include <vector>

#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"
#include "records/MissingMarkers.h"

namespace QKTarn {

class TarnMemoIterator;

/// One bit per record, in the order of the records.
using RecordFlags = std::vector<bool>;

/// The memory store: reads a stream once and keeps its records, each record's values together, in blocks that are
/// never moved. Besides keeping the values it finds out once, for every record, whether it misses anything, so that no
/// pass has to look at fields that its tests don't use.
///
/// The width of the store is that of its first record; a later record of another width is cut or filled up with the
/// missing double.
class InitialDataReader {
 public:
    /// `blockSize`: records per block, where 0 counts as 1. `source`: borrowed, may be null. `dropMissing`: whether
    /// a record that misses one of `fields` is left out. `fields` and `varList`: borrowed.
    InitialDataReader(int blockSize, MultiPassRecordIter* source, bool dropMissing, const std::vector<int>* fields,
                      const QKVarList* varList);
    virtual ~InitialDataReader() = default;
    InitialDataReader(const InitialDataReader&) = delete;
    InitialDataReader& operator=(const InitialDataReader&) = delete;

    /// Reads the whole stream. 220003: no record was kept. 220005: there is no stream. 220026 and 220002 as below.
    QKStatus ReadAll();

    /// Stores a copy of the record. 220026: its weight is above 2147483647. 220002: no memory was left.
    QKStatus AddRecord(const Record& record);

    /// At the first record; past the end when there is none.
    TarnMemoIterator Begin();

    int Count() const { return count; }
    /// Fields per record.
    std::size_t Width() const { return width; }
    /// The values of a record, owned by the store. `index` is 0 .. `Count()`-1.
    double* ValuesAt(int index) {
        return blocks[static_cast<std::size_t>(index / blockSize)] +
               static_cast<std::size_t>(index % blockSize) * width;
    }

    /// Which records of the source stream miss anything, dropped ones included.
    const RecordFlags& IncompleteInSource() const { return incompleteInSource; }
    /// Which stored records miss anything.
    const RecordFlags& IncompleteInStore() const { return incompleteInStore; }

 private:
    bool IsDropped(const Record& record) const;
    bool IsIncomplete(const Record& record) const;
    QKStatus Store(const Record& record, bool incomplete);
    void AddBlock();

    std::vector<std::unique_ptr<double[]>> memory;  // each piece holds several blocks
    std::vector<double*> blocks;
    std::size_t spareBlocks = 0;  // at the end of the last piece of memory
    int count = 0;
    int capacity = 0;
    int blockSize;
    MultiPassRecordIter* source;
    bool dropMissing;
    const std::vector<int>* fields;
    const QKVarList* varList;

    std::size_t width = 0;
    MissingMarkers passMarkers;
    MissingMarkers readerMarkers;
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

    Record current;  // a view of the record that was handed out last
    int index = kPastEnd;
    InitialDataReader* store = nullptr;
    int state = 0;

    static constexpr int kPastEnd = -1;
    static constexpr int kStateEnd = 1;
    static constexpr int kStateKept = 3;  // a state that a rewind leaves as it is
};

}  // namespace QKTarn
