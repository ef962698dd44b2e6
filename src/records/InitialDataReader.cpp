#include "records/InitialDataReader.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "machine/LargeBlock.h"
#include "vocabulary/StatusCodes.h"

namespace QKTarn {

namespace {

/// A weight is used as a 32-bit whole number everywhere, so this is the bound on one record's weight.
constexpr double kLargestWeight = 2147483647.0;

/// How much memory is asked for at a time once the store is large; until then a quarter of what it holds.
constexpr std::size_t kLargeMemory = (std::size_t{8} << 20) / sizeof(double);
constexpr std::size_t kGrowth = 4;

}  // namespace

InitialDataReader::InitialDataReader(int recordsPerBlock, MultiPassRecordIter* sourceStream, bool dropIncomplete,
                                     const std::vector<int>* filterFields, const QKVarList* variables)
    : blockSize(recordsPerBlock == 0 ? 1 : recordsPerBlock),
      source(sourceStream),
      dropMissing(dropIncomplete),
      fields(filterFields),
      varList(variables),
      passMarkers(MarkersOfPasses(*variables)),
      readerMarkers(MarkersOfReader(*variables)) {}

QKStatus InitialDataReader::ReadAll() {
    if (source == nullptr) return QKStatus(StatusCode::kNoIterator);
    source->Rewind();
    while (source->HasMore()) {
        const QKStatus status = AddRecord(*source->Next());
        if (status.IsError()) return status;
    }
    return count > 0 ? QKStatus() : QKStatus(StatusCode::kNoRecords);
}

QKStatus InitialDataReader::AddRecord(const Record& record) {
    const int weightIndex = varList->GetFreqWeightIndex();
    if (weightIndex != QKVarList::kNoWeight && record[static_cast<std::size_t>(weightIndex)] > kLargestWeight) {
        return QKStatus(StatusCode::kWeightTooLarge);
    }
    try {
        const bool incomplete = IsIncomplete(record);
        incompleteInSource.push_back(incomplete);
        if (dropMissing && IsDropped(record)) return QKStatus();
        return Store(record, incomplete);
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

QKStatus InitialDataReader::Store(const Record& record, bool incomplete) {
    if (count == 0) width = record.Size();
    if (count == capacity) AddBlock();
    incompleteInStore.push_back(incomplete);
    const std::size_t copied = std::min(width, record.Size());
    double* const target = ValuesAt(count);
    std::copy_n(record.begin(), copied, target);
    std::fill(target + copied, target + width, QKMV::Missing());
    ++count;
    return QKStatus();
}

void InitialDataReader::AddBlock() {
    const std::size_t blockValues = static_cast<std::size_t>(blockSize) * width;
    if (spareBlocks == 0) {
        const std::size_t atMost = std::max<std::size_t>(kLargeMemory / std::max<std::size_t>(blockValues, 1), 1);
        const std::size_t added = std::clamp<std::size_t>(blocks.size() / kGrowth, 1, atMost);
        memory.push_back(MakeLargeBlock(added * blockValues));
        spareBlocks = added;
        blocks.push_back(memory.back().get());
    } else {
        blocks.push_back(blocks.back() + blockValues);
    }
    --spareBlocks;
    capacity += blockSize;
}

TarnMemoIterator InitialDataReader::Begin() {
    return count > 0 ? TarnMemoIterator(this, 0) : TarnMemoIterator(this, TarnMemoIterator::kPastEnd);
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
    if (hasRecord) current = Record::View(store->ValuesAt(index++), store->Width());
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
