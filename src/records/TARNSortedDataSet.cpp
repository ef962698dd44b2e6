#include "records/TARNSortedDataSet.h"

#include <exception>

#include "vocabulary/StatusCodes.h"

TARNSortedIterator::TARNSortedIterator(const QKTarn::ColumnView& sortedView)
    : view(&sortedView), finished(sortedView.Count() == 0) {}

Record* TARNSortedIterator::Next() {
    if (finished != 0) return nullptr;
    const QKTarn::ColumnStore& store = view->Store();
    if (current.Size() != store.Width()) current = Record(store.Width());
    store.Read(view->PlaceInStore(delivered), current.begin());
    if (++delivered == view->Count()) finished = 1;
    return &current;
}

int TARNSortedIterator::Rewind() {
    delivered = 0;
    finished = view->Count() == 0;
    return finished;
}

TARNSortedDataSet::TARNSortedDataSet(const QKTarn::TarnMemoIterator& memo)
    : store(memo.Store()),
      width(static_cast<int>(store->Width())),
      views(store->Width()),
      isRegistered(store->Width(), false) {}

bool TARNSortedDataSet::Register(int field) {
    if (field < 0 || field >= width) return false;
    if (!isRegistered[static_cast<std::size_t>(field)]) fields.push_back(field);
    isRegistered[static_cast<std::size_t>(field)] = true;
    return true;
}

void TARNSortedDataSet::ExpectReader(int field) {
    fieldsWithReader.insert(field);
}

QKStatus TARNSortedDataSet::MakeViews() {
    status = QKStatus();
    try {
        for (const int field : fields) {
            if (!fieldsWithReader.contains(field)) continue;
            views[static_cast<std::size_t>(field)] = std::make_unique<SortedField>(*store, field);
            made.push_back(field);
        }
    } catch (const std::exception&) {
        status = QKStatus(StatusCode::kOutOfMemory);
    }
    return status;
}

QKStatus TARNSortedDataSet::Sort(const WorkShare& share) {
    try {
        for (const int field : made) ViewBy(field)->Sort(share);
    } catch (const std::exception&) {
        status = QKStatus(StatusCode::kOutOfMemory);
    }
    return status;
}

QKStatus TARNSortedDataSet::Build() {
    const QKStatus madeViews = MakeViews();
    return madeViews.IsError() ? madeViews : Sort(WorkShare());
}

QKTarn::ColumnView* TARNSortedDataSet::ViewBy(int field) const {
    if (field < 0 || field >= width || views[static_cast<std::size_t>(field)] == nullptr) return nullptr;
    return &views[static_cast<std::size_t>(field)]->view;
}

TARNSortedIterator* TARNSortedDataSet::IteratorOf(int field) const {
    if (field < 0 || field >= width || views[static_cast<std::size_t>(field)] == nullptr) return nullptr;
    return &views[static_cast<std::size_t>(field)]->iterator;
}
