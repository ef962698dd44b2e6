#include "platform/peer/QKPeerIterator.h"

#include <algorithm>
#include <cmath>

#include "platform/common/QKMV.h"
#include "platform/hx/HXStatus.h"

using HxCppHelperV1::DataHelper;

// ---- What both kinds share ----

std::unique_ptr<QKPeerStream> QKPeerStream::Create(DataHelper& dataHelper, const InputAdapter& inputAdapter) {
    if (dataHelper.hasColumns()) return std::make_unique<QKPeerColumns>(dataHelper, inputAdapter);
    return std::make_unique<QKPeerIterator>(dataHelper, inputAdapter);
}

QKPeerStream::QKPeerStream(DataHelper& dataHelper, const InputAdapter& inputAdapter)
    : dataHelper_(dataHelper), fieldCount_(static_cast<std::size_t>(inputAdapter.GetVarList().Size())) {
    for (std::size_t position = 0; position < fieldCount_; ++position) {
        const IQKVariable& field = *inputAdapter.GetVarList().GetVarAt(static_cast<int>(position));
        if (!FieldKind::IsCategorical(field.GetKind())) continue;
        categoricalFields_.push_back({position, static_cast<double>(field.GetCategoryCount())});
    }
}

bool QKPeerStream::Fail() {
    if (errorCode_ == 0) errorCode_ = HX_ERROR_RECORDS;
    state_ = kFailed;
    return false;
}

bool QKPeerStream::AreCategories(const double* values, std::size_t recordCount, std::size_t stride,
                                 double categoryCount) {
    static_assert(kMissingCategory == -1);
    // One after the other without a way out, which a processor does several at a time.
    bool areKnown = true;
    for (std::size_t i = 0; i < recordCount; ++i) {
        const double category = values[i * stride];
        areKnown &= (category >= kMissingCategory) & (category < categoryCount) & (category == std::trunc(category));
    }
    return areKnown;
}

// ---- Blocks ----

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

bool QKPeerIterator::HasKnownCategories(const DataHelper::Block& block) const {
    return std::ranges::all_of(categoricalFields_, [&](const CategoricalField& field) {
        return AreCategories(block.values + field.position, block.recordCount, fieldCount_, field.categoryCount);
    });
}

// ---- Columns ----

QKPeerColumns::QKPeerColumns(DataHelper& dataHelper, const InputAdapter& inputAdapter)
    : QKPeerStream(dataHelper, inputAdapter), current_(fieldCount_) {
    bool areGood = dataHelper_.columns(columns_, &errorCode_);
    if (fieldCount_ == 0) columns_.recordCount = 0;
    // Columns that don't fit came all the same, and to have none is a different failure from theirs.
    hasDelivered_ = columns_.recordCount > 0;
    areGood = areGood && std::ranges::all_of(categoricalFields_, [&](const CategoricalField& field) {
                  return AreCategories(columns_.values[field.position], columns_.recordCount, 1, field.categoryCount);
              });
    if (areGood) return;
    columns_ = {};
    Fail();
}

bool QKPeerColumns::HasMore() {
    if (state_ == kReading && next_ == columns_.recordCount) state_ = kAtEnd;
    return state_ == kReading;
}

Record* QKPeerColumns::Next() {
    for (std::size_t i = 0; i < fieldCount_; ++i) current_[i] = columns_.values[i][next_];
    ++next_;
    return &current_;
}

int QKPeerColumns::Rewind() {
    next_ = 0;
    if (!HasFailed()) state_ = kReading;
    return state_;
}
