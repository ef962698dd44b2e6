#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/common/Record.h"
#include "platform/peer/HxCppHelper.h"
#include "platform/peer/InputAdapter.h"

/// The records of the host as a stream that can be read again.
///
/// What the host delivers is checked where a mistake would reach far: a record has a value for each field, a
/// categorical value is the position of a category, and a later pass has as many records as the first. A stream that
/// fails one of these checks ends there and has failed.
class QKPeerStream : public MultiPassRecordIter {
 public:
    enum State { kReading = 0, kAtEnd = 1, kFailed = 2 };

    /// The stream of a host: of its columns if it has any to give, else of its blocks. Borrows both.
    static std::unique_ptr<QKPeerStream> Create(HxCppHelperV1::DataHelper& dataHelper,
                                                const InputAdapter& inputAdapter);

    int GetState() override { return state_; }

    /// Whether any record was delivered, also one that does not fit.
    bool HasDelivered() const { return hasDelivered_; }
    bool HasFailed() const { return state_ == kFailed; }
    /// Why the stream failed.
    int GetErrorCode() const { return errorCode_; }

 protected:
    struct CategoricalField {
        std::size_t position;
        double categoryCount;
    };

    QKPeerStream(HxCppHelperV1::DataHelper& dataHelper, const InputAdapter& inputAdapter);

    bool Fail();
    /// Whether the values of a categorical field, `stride` apart from one record to the next, are all categories.
    static bool AreCategories(const double* values, std::size_t recordCount, std::size_t stride, double categoryCount);

    HxCppHelperV1::DataHelper& dataHelper_;
    std::size_t fieldCount_;
    std::vector<CategoricalField> categoricalFields_;
    State state_ = kReading;
    int errorCode_ = 0;
    bool hasDelivered_ = false;
};

/// The host's blocks. Records are views of them.
class QKPeerIterator : public QKPeerStream {
 public:
    /// Borrows both.
    QKPeerIterator(HxCppHelperV1::DataHelper& dataHelper, const InputAdapter& inputAdapter)
        : QKPeerStream(dataHelper, inputAdapter) {}

    bool HasMore() override { return next_ != end_ || FetchBlock(); }
    Record* Next() override;
    int Rewind() override;

 private:
    bool FetchBlock();
    bool EndPass();
    bool HasKnownCategories(const HxCppHelperV1::DataHelper::Block& block) const;

    const double* next_ = nullptr;
    const double* end_ = nullptr;
    Record current_;
    bool isFirstPass_ = true;
    std::size_t passSize_ = 0;
    std::size_t firstPassSize_ = 0;
};

/// The host's columns, for whoever takes them as they are; records are gathered one by one for everybody else. The host
/// is asked once, and what it gives is checked then.
class QKPeerColumns : public QKPeerStream, public ColumnSource {
 public:
    /// Borrows both.
    QKPeerColumns(HxCppHelperV1::DataHelper& dataHelper, const InputAdapter& inputAdapter);

    bool HasMore() override;
    Record* Next() override;
    int Rewind() override;

    /// None of columns that don't fit.
    std::size_t RecordCount() const override { return columns_.recordCount; }
    std::size_t FieldCount() const override { return fieldCount_; }
    const double* Column(std::size_t field) const override { return columns_.values[field]; }

 private:
    HxCppHelperV1::DataHelper::Columns columns_;
    std::size_t next_ = 0;
    Record current_;
};
