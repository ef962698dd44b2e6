#pragma once

#include <cstddef>
#include <vector>

#include "platform/common/Record.h"
#include "platform/peer/HxCppHelper.h"
#include "platform/peer/InputAdapter.h"

/// The records of the host as a stream that can be read again. Records are views of the host's blocks.
///
/// What the host delivers is checked where a mistake would reach far: a record has a value for each field, a
/// categorical value is the position of a category, and a later pass has as many records as the first. A stream that
/// fails one of these checks ends there and has failed.
class QKPeerIterator : public MultiPassRecordIter {
 public:
    enum State { kReading = 0, kAtEnd = 1, kFailed = 2 };

    /// Borrows both.
    QKPeerIterator(HxCppHelperV1::DataHelper& dataHelper, const InputAdapter& inputAdapter);

    bool HasMore() override { return next_ != end_ || FetchBlock(); }
    Record* Next() override;
    int GetState() override { return state_; }
    int Rewind() override;

    /// Whether any record was delivered, also one that does not fit.
    bool HasDelivered() const { return hasDelivered_; }
    bool HasFailed() const { return state_ == kFailed; }
    /// Why the stream failed.
    int GetErrorCode() const { return errorCode_; }

 private:
    struct CategoricalField {
        std::size_t position;
        double categoryCount;
    };

    bool FetchBlock();
    bool EndPass();
    bool Fail();
    bool HasKnownCategories(const HxCppHelperV1::DataHelper::Block& block) const;

    HxCppHelperV1::DataHelper& dataHelper_;
    std::size_t fieldCount_;
    std::vector<CategoricalField> categoricalFields_;
    const double* next_ = nullptr;
    const double* end_ = nullptr;
    Record current_;
    State state_ = kReading;
    int errorCode_ = 0;
    bool hasDelivered_ = false;
    bool isFirstPass_ = true;
    std::size_t passSize_ = 0;
    std::size_t firstPassSize_ = 0;
};
