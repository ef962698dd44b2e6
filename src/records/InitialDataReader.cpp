#include "records/InitialDataReader.h"

#include <algorithm>
#include <new>
#include <span>
#include <stdexcept>

#include "vocabulary/StatusCodes.h"

namespace QKTarn {

namespace {

/// A weight is used as a 32-bit whole number everywhere, so this is the bound on one record's weight.
constexpr double kLargestWeight = 2147483647.0;

/// How many records are read between two questions whether to stop.
constexpr int kBetweenPolls = 4096;

}  // namespace

InitialDataReader::InitialDataReader(MultiPassRecordIter* sourceStream, bool dropIncomplete,
                                     const std::vector<int>* filterFields, const QKVarList* variables)
    : source(sourceStream),
      dropMissing(dropIncomplete),
      fields(filterFields),
      varList(variables),
      passMarkers(MarkersOfPasses(*variables)),
      readerMarkers(MarkersOfReader(*variables)) {}

QKStatus InitialDataReader::ReadAll(const WorkShare& share) {
    if (source == nullptr) return QKStatus(StatusCode::kNoIterator);
    QKStatus status;
    try {
        const auto* columns = dynamic_cast<const ColumnSource*>(source);
        const bool fits = columns != nullptr && columns->FieldCount() == static_cast<std::size_t>(varList->Size()) &&
                          columns->RecordCount() > 0;
        status = fits ? ReadColumns(*columns, share) : ReadRecords(share);
    } catch (const std::bad_alloc&) {
        status = QKStatus(StatusCode::kAllocationFailed);
    } catch (const std::length_error&) {
        status = QKStatus(StatusCode::kAllocationFailed);
    }
    if (status.IsError()) return status;
    if (share.IsStopped()) return QKStatus(StatusCode::kCancelled);
    return Count() > 0 ? QKStatus() : QKStatus(StatusCode::kNoRecords);
}

// ---- A stream of records ----

QKStatus InitialDataReader::ReadRecords(const WorkShare& share) {
    source->Rewind();
    for (int untilPoll = kBetweenPolls; source->HasMore(); --untilPoll) {
        if (untilPoll == 0) {
            if (share.IsStopped()) return QKStatus();
            untilPoll = kBetweenPolls;
        }
        const QKStatus status = AddRecord(*source->Next());
        if (status.IsError()) return status;
    }
    Close(share);
    return QKStatus();
}

void InitialDataReader::Close(const WorkShare& share) {
    if (isClosed) return;
    store.Close();
    store.Examine(passMarkers, share, nullptr);
    isClosed = true;
}

QKStatus InitialDataReader::AddRecord(const Record& record) {
    const int weightIndex = varList->GetFreqWeightIndex();
    if (weightIndex != QKVarList::kNoWeight && record[static_cast<std::size_t>(weightIndex)] > kLargestWeight) {
        return QKStatus(StatusCode::kWeightTooLarge);
    }
    try {
        const bool incomplete = IsIncomplete(record);
        incompleteInSource.push_back(incomplete);
        if (dropMissing && IsDropped(record)) {
            hasDropped = true;
            return QKStatus();
        }
        store.Append(record);
        incompleteInStore.push_back(incomplete);
        return QKStatus();
    } catch (const std::bad_alloc&) {
        return QKStatus(StatusCode::kAllocationFailed);
    } catch (const std::length_error&) {
        return QKStatus(StatusCode::kAllocationFailed);
    }
}

bool InitialDataReader::IsDropped(const Record& record) const {
    return std::any_of(fields->begin(), fields->end(),
                       [&](int field) { return IsMissingIn(record, field, readerMarkers); });
}

bool InitialDataReader::IsIncomplete(const Record& record) const {
    // Counts rather than stops at the first one: without a branch the loop is a few vector instructions.
    const std::size_t size = std::min(record.Size(), passMarkers.size());
    const double* const values = record.begin();
    int missing = 0;
    for (std::size_t field = 0; field < size; ++field) missing += values[field] == passMarkers[field];
    return missing > 0;
}

// ---- A stream that has columns ----

QKStatus InitialDataReader::ReadColumns(const ColumnSource& columns, const WorkShare& share) {
    const auto width = static_cast<std::size_t>(varList->Size());
    const int weightIndex = varList->GetFreqWeightIndex();
    if (weightIndex != QKVarList::kNoWeight) {
        const std::span weights(columns.Column(static_cast<std::size_t>(weightIndex)), columns.RecordCount());
        const auto isTooLarge = [](double weight) { return weight > kLargestWeight; };
        if (std::ranges::any_of(weights, isTooLarge)) return QKStatus(StatusCode::kWeightTooLarge);
    }
    isClosed = true;
    sourceColumns.Borrow(columns, width);
    hasSourceColumns = true;
    std::size_t keptCount = columns.RecordCount();
    RecordFlags kept;
    if (dropMissing) kept = FindKept(sourceColumns, keptCount);
    hasDropped = keptCount < columns.RecordCount();
    if (!hasDropped) {
        store.Borrow(columns, width);
        store.Examine(passMarkers, share, &incompleteInSource);
        incompleteInStore = incompleteInSource;
        return QKStatus();
    }
    sourceColumns.Examine(passMarkers, share, &incompleteInSource);
    store.CopyFrom(sourceColumns, kept, keptCount, share);
    if (!share.IsStopped()) store.Examine(passMarkers, share, &incompleteInStore);
    return QKStatus();
}

RecordFlags InitialDataReader::FindKept(const ColumnStore& columns, std::size_t& keptCount) const {
    RecordFlags kept(columns.Count(), true);
    for (const int field : *fields) {
        const auto position = static_cast<std::size_t>(field);
        if (field < 0 || position >= columns.Width() || position >= readerMarkers.size()) continue;
        const double* const values = columns.Column(position);
        for (std::size_t record = 0; record < columns.Count(); ++record) {
            if (values[record] == readerMarkers[position]) kept[record] = false;
        }
    }
    keptCount = static_cast<std::size_t>(std::count(kept.begin(), kept.end(), true));
    return kept;
}

const ColumnStore* InitialDataReader::SourceColumns() const {
    if (!hasDropped) return &store;
    return hasSourceColumns ? &sourceColumns : nullptr;
}

TarnMemoIterator InitialDataReader::Begin() {
    Close(WorkShare());
    return Count() > 0 ? TarnMemoIterator(this, 0) : TarnMemoIterator(this, TarnMemoIterator::kPastEnd);
}

TarnMemoIterator& TarnMemoIterator::operator=(const TarnMemoIterator& other) {
    if (this == &other) return *this;
    index = other.index;
    store = other.store;
    state = other.state;
    return *this;
}

bool TarnMemoIterator::HasMore() {
    return index != kPastEnd && index < store->Count();
}

Record* TarnMemoIterator::Next() {
    const bool hasRecord = HasMore();
    if (hasRecord) {
        if (current.Size() != store->Width()) current = Record(store->Width());
        store->Columns().Read(static_cast<std::size_t>(index++), current.begin());
    }
    if (!HasMore()) {
        index = kPastEnd;
        state = kStateEnd;
    }
    return hasRecord ? &current : nullptr;
}

int TarnMemoIterator::Rewind() {
    index = 0;
    if (state == kStateKept) return state;
    return state = 0;
}

TarnMemoIterator TarnMemoIterator::At(int offset) const {
    if (index == kPastEnd || offset >= store->Count() - index) return TarnMemoIterator(store, kPastEnd);
    return TarnMemoIterator(store, index + offset);
}

TarnMemoIterator TarnMemoIterator::operator++(int) {
    TarnMemoIterator before = *this;
    Next();
    return before;
}

}  // namespace QKTarn
