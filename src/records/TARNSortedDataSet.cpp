#include "records/TARNSortedDataSet.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "records/SortOrder.h"
#include "vocabulary/StatusCodes.h"

namespace {

/// How many records ahead of the one handed out the processor is asked to fetch: in sorted order every record is a
/// miss of the cache.
constexpr int kPrefetchDistance = 8;

}  // namespace

TARNSortedIterator::TARNSortedIterator(QKTarn::InitialDataReader& memoryStore, std::vector<int> sortedOrder, int field)
    : store(&memoryStore),
      sortField(field),
      order(std::move(sortedOrder)),
      finished(order.empty()),
      size(static_cast<int>(order.size())) {}

Record* TARNSortedIterator::Next() {
    if (finished != 0) return nullptr;
    const auto position = static_cast<std::size_t>(delivered);
    if (delivered + kPrefetchDistance < size) {
        __builtin_prefetch(store->ValuesAt(order[position + kPrefetchDistance]) + sortField);
    }
    current = Record::View(store->ValuesAt(order[position]), store->Width());
    if (++delivered == size) finished = 1;
    return &current;
}

int TARNSortedIterator::Rewind() {
    delivered = 0;
    finished = size < 1;
    return finished;
}

TARNSortedDataSet::TARNSortedDataSet(const QKTarn::TarnMemoIterator& memo)
    : store(memo.Store()), width(static_cast<int>(store->Width())), iterators(store->Width()) {}

bool TARNSortedDataSet::Register(int field) {
    if (field < 0 || field >= width) return false;
    if (std::find(fields.begin(), fields.end(), field) == fields.end()) fields.push_back(field);
    return true;
}

void TARNSortedDataSet::ExpectReader(int field) {
    fieldsWithReader.insert(field);
}

QKStatus TARNSortedDataSet::Build() {
    status = QKStatus();
    try {
        for (const int field : fields) {
            if (!fieldsWithReader.contains(field)) continue;
            std::vector<double> values(static_cast<std::size_t>(store->Count()));
            for (int i = 0; i < store->Count(); ++i) {
                values[static_cast<std::size_t>(i)] = store->ValuesAt(i)[field];
            }
            iterators[static_cast<std::size_t>(field)] =
                std::make_unique<TARNSortedIterator>(*store, QKTarn::AscendingOrder(values), field);
        }
    } catch (const std::exception&) {
        status = QKStatus(StatusCode::kOutOfMemory);
    }
    return status;
}

TARNSortedIterator* TARNSortedDataSet::IteratorOf(int field) const {
    return field >= 0 && field < width ? iterators[static_cast<std::size_t>(field)].get() : nullptr;
}
