#include "records/WeightyRecords.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

#include "platform/common/Truncation.h"

namespace QKTarn {

namespace {

bool IsWeightless(double weight) {
    return TruncateToInt32(weight) == 0;
}

}  // namespace

WeightyRecords::WeightyRecords(MultiPassRecordIter& source, int weightIndex, const WorkShare& share)
    : source_(source), weightField_(static_cast<std::size_t>(weightIndex)) {
    const auto* const columns = dynamic_cast<const ColumnSource*>(&source);
    if (columns == nullptr || columns->RecordCount() == 0 || columns->FieldCount() <= weightField_) return;
    TakeColumns(*columns, share);
}

void WeightyRecords::TakeColumns(const ColumnSource& source, const WorkShare& share) {
    const std::span weights(source.Column(weightField_), source.RecordCount());
    if (std::ranges::none_of(weights, IsWeightless)) {
        columns_.Borrow(source, source.FieldCount());
        return;
    }
    RecordFlags kept(weights.size());
    std::size_t keptCount = 0;
    for (std::size_t record = 0; record < weights.size(); ++record) {
        kept[record] = !IsWeightless(weights[record]);
        keptCount += kept[record] ? 1 : 0;
    }
    sourceColumns_.Borrow(source, source.FieldCount());
    columns_.CopyFrom(sourceColumns_, kept, keptCount, share);
}

/// Goes on in the source to the next record with a weight, which is the source's until it is asked for the one after.
bool WeightyRecords::HasMore() {
    while (next_ == nullptr && source_.HasMore()) {
        Record* const record = source_.Next();
        const bool hasWeight = record->Size() <= weightField_ || !IsWeightless((*record)[weightField_]);
        if (hasWeight) next_ = record;
    }
    return next_ != nullptr;
}

Record* WeightyRecords::Next() {
    return HasMore() ? std::exchange(next_, nullptr) : nullptr;
}

int WeightyRecords::Rewind() {
    next_ = nullptr;
    return source_.Rewind();
}

}  // namespace QKTarn
