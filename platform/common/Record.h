#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

/// One record: a double per field, in the order of the `QKVarList`. A categorical value is a category index.
///
/// A record either owns its values or is a view of values that stand elsewhere, which lets a stream hand out the
/// records of a large block without copying them. A copy always owns its values.
class Record {
 public:
    Record() = default;
    explicit Record(std::size_t size) : owned_(std::make_unique<double[]>(size)), values_(owned_.get()), size_(size) {}

    /// A view of `size` values, valid as long as they are.
    static Record View(double* values, std::size_t size) {
        Record view;
        view.values_ = values;
        view.size_ = size;
        return view;
    }

    Record(const Record& other) : Record(other.size_) { std::copy_n(other.values_, size_, values_); }
    Record(Record&& other) noexcept
        : owned_(std::move(other.owned_)),
          values_(std::exchange(other.values_, nullptr)),
          size_(std::exchange(other.size_, 0)) {}

    Record& operator=(const Record& other) {
        if (this == &other) return *this;
        if (owned_ == nullptr || size_ != other.size_) return *this = Record(other);
        std::copy_n(other.values_, size_, values_);
        return *this;
    }
    Record& operator=(Record&& other) noexcept {
        owned_ = std::move(other.owned_);
        values_ = std::exchange(other.values_, nullptr);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }
    ~Record() = default;

    std::size_t Size() const { return size_; }
    double& operator[](std::size_t field) { return values_[field]; }
    const double& operator[](std::size_t field) const { return values_[field]; }

    double* begin() { return values_; }
    double* end() { return values_ + size_; }
    const double* begin() const { return values_; }
    const double* end() const { return values_ + size_; }

 private:
    std::unique_ptr<double[]> owned_;
    double* values_ = nullptr;
    std::size_t size_ = 0;
};

/// A stream of records that is read once.
class RecordIterator {
 public:
    virtual ~RecordIterator() = default;
    virtual bool HasMore() = 0;
    /// The record at the position, then a step forward. Borrowed, and valid until the next call on the stream.
    virtual Record* Next() = 0;
    virtual int GetState() = 0;
};

/// A stream that can be read again from its first record, and delivers the same records each time.
class MultiPassRecordIter : public RecordIterator {
 public:
    virtual int Rewind() = 0;
};

/// What a stream is besides, if the values of each field stand side by side in memory: whoever reads it may then take
/// them where they are. Found by a `dynamic_cast` of the stream.
class ColumnSource {
 public:
    virtual ~ColumnSource() = default;
    /// How many records the stream delivers.
    virtual std::size_t RecordCount() const = 0;
    /// Values of a record: one for each field of the `QKVarList`.
    virtual std::size_t FieldCount() const = 0;
    /// The `RecordCount()` values of a field, in the order of the records. Borrowed from the stream, not written to,
    /// and valid as long as the stream.
    virtual const double* Column(std::size_t field) const = 0;
};
