#pragma once

#include <memory>
#include <set>
#include <span>
#include <vector>

#include "machine/WorkShare.h"
#include "platform/common/QKStatus.h"
#include "platform/common/Record.h"
#include "records/ColumnView.h"
#include "records/InitialDataReader.h"

/// The records of the memory store in the ascending order of one field, one by one: each is gathered from the columns
/// when it is asked for. For readers that know records alone; the others read the view by columns. Borrows the view.
class TARNSortedIterator : public MultiPassRecordIter {
 public:
    /// `view`: sorted before the first record is asked for.
    explicit TARNSortedIterator(const QKTarn::ColumnView& view);

    bool HasMore() override { return finished == 0; }
    /// Valid until the next call; null past the end.
    Record* Next() override;
    /// 1 past the end, else 0.
    int GetState() override { return finished; }
    /// 1 if there is no record at all, else 0.
    int Rewind() override;

    /// The place in the store of the record that was handed out last.
    int Ordinal() const { return static_cast<int>(view->PlaceInStore(delivered - 1)); }

 private:
    const QKTarn::ColumnView* view;
    Record current;
    int finished;
    std::size_t delivered = 0;
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

    /// Makes the views that will be read, in the order of registration, but doesn't sort them yet: a view is sorted
    /// when its reader comes, so that no more of them than there are readers at work take memory. 220012: no memory
    /// was left.
    QKStatus MakeViews();
    /// Sorts the views that were made. 220012 as above.
    QKStatus Sort(const WorkShare& share);
    /// Both, on the calling thread.
    QKStatus Build();

    /// How many views were made.
    std::size_t ViewCount() const { return made.size(); }
    /// The view by a field, owned by the set; null for a field that has none.
    QKTarn::ColumnView* ViewBy(int field) const;
    /// The same by records.
    TARNSortedIterator* IteratorOf(int field) const;

 private:
    struct SortedField {
        QKTarn::ColumnView view;
        TARNSortedIterator iterator;
        SortedField(const QKTarn::InitialDataReader& store, int field)
            : view(store.Columns(), store.IncompleteInStore(), field), iterator(view) {}
    };

    QKTarn::InitialDataReader* store;
    int width;
    std::vector<std::unique_ptr<SortedField>> views;  // by field
    std::vector<int> fields;
    std::vector<int> made;
    QKStatus status;  // of the last making
    std::set<int> fieldsWithReader;
    std::vector<bool> isRegistered;
};
