#include "platform/peer/QKPeerIterator.h"

#include <algorithm>
#include <cmath>

#include "platform/common/QKMV.h"
#include "platform/hx/HXStatus.h"

using HxCppHelperV1::DataHelper;

QKPeerIterator::QKPeerIterator(DataHelper& dataHelper, const InputAdapter& inputAdapter)
    : dataHelper_(dataHelper), fieldCount_(static_cast<std::size_t>(inputAdapter.GetVarList().Size())) {
    for (std::size_t position = 0; position < fieldCount_; ++position) {
        const IQKVariable& field = *inputAdapter.GetVarList().GetVarAt(static_cast<int>(position));
        if (!FieldKind::IsCategorical(field.GetKind())) continue;
        categoricalFields_.push_back({position, static_cast<double>(field.GetCategoryCount())});
    }
}

Record* QKPeerIterator::Next() {
    // A record can be written to, but whoever gets one from a stream only reads it.
    current_ = Record::View(const_cast<double*>(next_), fieldCount_);
    next_ += fieldCount_;
    return &current_;
}

int QKPeerIterator::Rewind() {
    next_ = end_ = nullptr;
    passSize_ = 0;
    if (HasFailed()) return state_;
    state_ = kReading;
    if (!dataHelper_.rewind(&errorCode_)) Fail();
    return state_;
}

bool QKPeerIterator::FetchBlock() {
    if (state_ != kReading) return false;
    DataHelper::Block block;
    if (!dataHelper_.nextBlock(block, &errorCode_)) {
        // Records that don't fit came all the same, and to have none is a different failure from theirs.
        if (block.recordCount > 0) hasDelivered_ = true;
        return Fail();
    }
    if (block.recordCount == 0 || fieldCount_ == 0) return EndPass();

    hasDelivered_ = true;
    passSize_ += block.recordCount;
    if (isFirstPass_ ? !HasKnownCategories(block) : passSize_ > firstPassSize_) return Fail();
    next_ = block.values;
    end_ = next_ + block.recordCount * fieldCount_;
    return true;
}

bool QKPeerIterator::EndPass() {
    if (!isFirstPass_ && passSize_ != firstPassSize_) return Fail();
    isFirstPass_ = false;
    firstPassSize_ = passSize_;
    state_ = kAtEnd;
    return false;
}

bool QKPeerIterator::Fail() {
    if (errorCode_ == 0) errorCode_ = HX_ERROR_RECORDS;
    state_ = kFailed;
    return false;
}

bool QKPeerIterator::HasKnownCategories(const DataHelper::Block& block) const {
    const double* record = block.values;
    for (std::size_t i = 0; i < block.recordCount; ++i, record += fieldCount_) {
        const auto isKnown = [&](const CategoricalField& field) {
            const double category = record[field.position];
            return category == kMissingCategory ||
                   (category >= 0 && category < field.categoryCount && category == std::floor(category));
        };
        if (!std::all_of(categoricalFields_.begin(), categoricalFields_.end(), isKnown)) return false;
    }
    return true;
}
