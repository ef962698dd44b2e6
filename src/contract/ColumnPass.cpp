#include "contract/ColumnPass.h"

#include <array>
#include <forward_list>
#include <vector>

#include "platform/common/Truncation.h"

namespace {

const std::int32_t* Ones() {
    static const std::vector<std::int32_t> ones(ColumnBatch::kMostRecords, 1);
    return ones.data();
}

/// A record as a batch.
class OneRecord : public ColumnBatch {
 public:
    explicit OneRecord(const Record& record) : record_(record) { SetSize(1); }
    const double* Values(int field) override { return &record_[static_cast<std::size_t>(field)]; }
    const std::int32_t* WholeNumbers(int field) override {
        const std::int32_t number = TruncateToInt32(record_[static_cast<std::size_t>(field)]);
        if (used_ == few_.size()) return &more_.emplace_front(number);
        few_[used_] = number;
        return &few_[used_++];
    }

 private:
    const Record& record_;
    std::array<std::int32_t, 8> few_;  // most tests ask for a weight and a group
    std::size_t used_ = 0;
    std::forward_list<std::int32_t> more_;  // where it is, a number stays; and an empty one has no memory
};

}  // namespace

ColumnBatch::ColumnBatch() : ones_(Ones()) {}

QKStatus ColumnTest::ProcessRecord(Record& record) {
    OneRecord batch(record);
    return ProcessColumns(batch);
}
