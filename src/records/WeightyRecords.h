#pragma once

#include "machine/WorkShare.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"
#include "records/ColumnStore.h"

namespace QKTarn {

/// The records of a stream whose weight is not 0, in their order: a stream itself, with columns where the other one has
/// them. A weight is taken as every counter takes it, truncated towards zero, so that 0.9 is 0, too.
///
/// Extended, a record of weight 0 isn't there. Left out here, before anything is read, it can't be the value in the
/// middle, the end of a range, the step of a distribution or the beginning of a run of any test. As defined it can,
/// and documents depend on it.
class WeightyRecords : public MultiPassRecordIter, public ColumnSource {
 public:
    /// Copies columns only where a record is left out. Where `share` was stopped meanwhile nothing may be read.
    /// `source`: borrowed, with a weight at `weightIndex` in each record.
    WeightyRecords(MultiPassRecordIter& source, int weightIndex, const WorkShare& share);

    bool HasMore() override;
    Record* Next() override;
    int GetState() override { return source_.GetState(); }
    int Rewind() override;

    /// 0 also where the stream has no columns: it is read by records then.
    std::size_t RecordCount() const override { return columns_.Count(); }
    std::size_t FieldCount() const override { return columns_.Width(); }
    const double* Column(std::size_t field) const override { return columns_.Column(field); }

 private:
    void TakeColumns(const ColumnSource& source, const WorkShare& share);

    MultiPassRecordIter& source_;
    std::size_t weightField_;
    Record* next_ = nullptr;  // of the source, found by `HasMore` and not handed out yet
    ColumnStore columns_;
    ColumnStore sourceColumns_;
};

}  // namespace QKTarn
