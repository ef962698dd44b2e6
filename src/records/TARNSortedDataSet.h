#pragma once

#include <memory>
#include <set>
#include <vector>

#include "platform/common/QKStatus.h"
#include "platform/common/Record.h"
#include "records/InitialDataReader.h"

/// The records of the memory store in the ascending order of one field: a permutation of 32-bit positions, read at
/// random from the store. Borrows the store.
class TARNSortedIterator : public MultiPassRecordIter {
 public:
    /// `field`: the one that the order is by, which its readers look at first.
    TARNSortedIterator(QKTarn::InitialDataReader& store, std::vector<int> order, int field);

    bool HasMore() override { return finished == 0; }
    /// Valid until the next call; null past the end.
    Record* Next() override;
    /// 1 past the end, else 0.
    int GetState() override { return finished; }
    /// 1 if there is no record at all, else 0.
    int Rewind() override;

    /// The place in the store of the record that was handed out last.
    int Ordinal() const { return order[static_cast<std::size_t>(delivered - 1)]; }

 private:
    QKTarn::InitialDataReader* store;
    int sortField;
    std::vector<int> order;
    Record current;  // a view into the store
    int finished;
    int delivered = 0;
    int size;
};

/// The sorted views of a run, one per registered field. Borrows the memory store.
class TARNSortedDataSet {
 public:
    /// Views over the store of `memo`; the width is that of its records.
    explicit TARNSortedDataSet(const QKTarn::TarnMemoIterator& memo);

    /// Asks for a view by that field; asking twice is asking once. False for a field outside the records.
    bool Register(int field);
    bool HasRegistered() const { return !fields.empty(); }

    /// Says that the view by a registered field will be read. Most fields are registered for their descriptives
    /// alone, and a view that nobody reads is not made.
    void ExpectReader(int field);

    /// Makes the views that will be read, in the order of registration. 220012: no memory was left.
    QKStatus Build();

    /// The view by a field, owned by the set; null for a field that has none.
    TARNSortedIterator* IteratorOf(int field) const;
    QKTarn::InitialDataReader& Store() const { return *store; }

 private:
    QKTarn::InitialDataReader* store;
    int width;
    std::vector<std::unique_ptr<TARNSortedIterator>> iterators;
    std::vector<int> fields;
    QKStatus status;  // of the last making
    std::set<int> fieldsWithReader;
};
