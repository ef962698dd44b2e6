#include "records/ColumnView.h"

#include <utility>

namespace QKTarn {

void ColumnView::Sort(const WorkShare& share) {
    if (!IsSorted() || !sorted_.order.empty()) return;
    sorted_ = SortColumn(store_->ColumnSpan(static_cast<std::size_t>(sortField_)), share);
}

void ColumnView::Release() {
    sorted_ = {};
    values_.clear();
    wholeNumbers_.clear();
}

template <typename Value>
LargeArray<Value> ColumnView::Gather(const Value* column) const {
    constexpr std::size_t kAhead = 16;
    const std::size_t count = Count();
    LargeArray<Value> gathered(count);
    for (std::size_t place = 0; place < count; ++place) {
        if (place + kAhead < count) __builtin_prefetch(column + sorted_.order[place + kAhead]);
        gathered[place] = column[sorted_.order[place]];
    }
    return gathered;
}

const double* ColumnView::Values(int field) {
    const double* const column = store_->Column(static_cast<std::size_t>(field));
    if (!IsSorted()) return column;
    if (field == sortField_) return sorted_.values.data();
    const auto found = values_.find(field);
    if (found != values_.end()) return found->second.data();
    return values_.emplace(field, Gather(column)).first->second.data();
}

const std::int32_t* ColumnView::WholeNumbers(int field) {
    const std::int32_t* const column = store_->WholeColumn(static_cast<std::size_t>(field));
    if (!IsSorted()) return column;
    const auto found = wholeNumbers_.find(field);
    if (found != wholeNumbers_.end()) return found->second.data();
    return wholeNumbers_.emplace(field, Gather(column)).first->second.data();
}

}  // namespace QKTarn
