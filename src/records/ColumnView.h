#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "machine/LargeArray.h"
#include "machine/WorkShare.h"
#include "records/ColumnStore.h"
#include "records/SortOrder.h"

namespace QKTarn {

/// The records of a store in one order, as columns: in the order of the store, or in the ascending order of a field.
/// Columns of a sorted view are gathered when they are asked for first, and then shared by all who read the view. A
/// view is read by one thread at a time. Borrows the store.
class ColumnView {
 public:
    /// The order of the store. `incomplete`: for each record whether it misses anything; borrowed.
    ColumnView(const ColumnStore& store, const RecordFlags& incomplete) : store_(&store), incomplete_(&incomplete) {}
    /// The ascending order of `field`, once it is sorted.
    ColumnView(const ColumnStore& store, const RecordFlags& incomplete, int field)
        : store_(&store), incomplete_(&incomplete), sortField_(field) {}

    /// Sorts a view that is not sorted yet. Throws `std::bad_alloc`.
    void Sort(const WorkShare& share);
    /// Gives up all that a sorted view holds; it can be sorted again.
    void Release();

    const ColumnStore& Store() const { return *store_; }
    std::size_t Count() const { return store_->Count(); }
    /// The place in the store of the record at a place of the view.
    std::size_t PlaceInStore(std::size_t place) const { return IsSorted() ? sorted_.order[place] : place; }
    bool IsIncomplete(std::size_t place) const { return (*incomplete_)[PlaceInStore(place)]; }

    /// The values of a field in the order of the view. May throw `std::bad_alloc`.
    const double* Values(int field);
    /// The same truncated towards zero to 32 bits.
    const std::int32_t* WholeNumbers(int field);

 private:
    static constexpr int kNotSorted = -1;
    bool IsSorted() const { return sortField_ != kNotSorted; }
    template <typename Value>
    LargeArray<Value> Gather(const Value* column) const;

    const ColumnStore* store_;
    const RecordFlags* incomplete_;
    int sortField_ = kNotSorted;
    SortedColumn sorted_;
    std::map<int, LargeArray<double>> values_;
    std::map<int, LargeArray<std::int32_t>> wholeNumbers_;
};

}  // namespace QKTarn
