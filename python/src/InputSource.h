#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "python/src/ArrowInterface.h"
#include "python/src/InputColumn.h"

namespace tarn {

/// What keeps memory of somebody else's where it is.
using MemoryHold = std::shared_ptr<const void>;

/// Columns that come together, one piece of rows after the other. They come once.
class InputSource {
 public:
    virtual ~InputSource() = default;

    const std::vector<InputColumn>& Columns() const { return columns_; }
    /// Goes to the next piece; false behind the last one. Throws an `InputError` where the source fails.
    virtual bool Next() = 0;
    /// The rows of the piece.
    virtual std::int64_t RowCount() const = 0;
    /// Those of a column, valid until the next piece. Throws an `InputError` where they can't be read.
    virtual ColumnPiece PieceOf(std::size_t column) const = 0;
    /// What keeps the memory of the piece beyond the next one; null where nothing can.
    virtual MemoryHold Hold() const { return nullptr; }

 protected:
    std::vector<InputColumn> columns_;
};

/// A stream of the Arrow C interface: of structs, whose members are the columns, or of the values of one column. What
/// it says of itself is checked, of columns that nobody reads as little as can be.
class StreamSource : public InputSource {
 public:
    /// Takes the stream over. `name`: of the column, where the stream has the values of one; of structs it is "".
    /// Throws an `InputError` for a schema that can't be.
    StreamSource(ArrowArrayStream& stream, const std::string& name);

    bool Next() override;
    std::int64_t RowCount() const override { return (*array_)->length; }
    ColumnPiece PieceOf(std::size_t column) const override;
    MemoryHold Hold() const override { return array_; }

 private:
    void ReadSchema(const std::string& name);
    void Check(int error);
    /// Fills the place for the next array.
    void Take();

    ArrowOwner<ArrowArrayStream> stream_;
    std::shared_ptr<ArrowOwner<ArrowArray>> array_;
    bool isStruct_ = false;
    std::int64_t rowsBefore_ = 0;  // those of the arrays before this one
};

/// What keeps memory of somebody else's where it is.
using MemoryHold = std::shared_ptr<const void>;

/// Texts in the layout of the Arrow C interface with offsets of 64 bits.
class TextEntries {
 public:
    explicit TextEntries(const std::vector<std::string>& texts);
    TextEntries(const TextEntries&) = delete;
    TextEntries& operator=(const TextEntries&) = delete;

    ArrowArray* Array() { return &array_; }

 private:
    std::string bytes_;
    std::vector<std::int64_t> offsets_;
    const void* buffers_[3]{};
    ArrowArray array_{};
};

/// One column in memory that is borrowed: numbers side by side, or codes with the entries that they stand for.
class MemorySource : public InputSource {
 public:
    /// `values`: `count` of them in the layout of the column, or of its codes; `hold` keeps them in their place.
    MemorySource(InputColumn column, const void* values, std::int64_t count, MemoryHold hold);

    /// The entries of the dictionary where they are texts, and where they are numbers.
    void SetEntries(const std::vector<std::string>& texts);
    void SetEntries(std::vector<double> numbers);

    bool Next() override { return !std::exchange(isDone_, true); }
    std::int64_t RowCount() const override { return array_.length; }
    ColumnPiece PieceOf(std::size_t) const override { return {&array_, 0, array_.length, 0}; }
    MemoryHold Hold() const override { return hold_; }

 private:
    MemoryHold hold_;
    const void* buffers_[2];
    ArrowArray array_{};
    bool isDone_ = false;
    // The dictionary.
    std::unique_ptr<TextEntries> texts_;
    std::vector<double> numbers_;
    const void* numberBuffers_[2]{};
    ArrowArray entries_{};
};

/// Samples of numbers in memory that is borrowed, one after the other, and beside them which one a row is of.
class SampleSource : public InputSource {
 public:
    /// `values`: the column of the numbers. `samples`: that of the codes, whose entries are `names`.
    SampleSource(InputColumn values, InputColumn samples, const std::vector<std::string>& names);

    /// The next sample, in the layout of `values`.
    void Add(const void* values, std::int64_t count, MemoryHold hold);

    bool Next() override;
    std::int64_t RowCount() const override { return values_.length; }
    ColumnPiece PieceOf(std::size_t column) const override {
        return {column == 0 ? &values_ : &codes_, 0, values_.length, 0};
    }

 private:
    struct Sample {
        const void* values;
        std::int64_t count;
        MemoryHold hold;
    };

    std::vector<Sample> samples_;
    std::size_t next_ = 0;
    TextEntries names_;
    std::vector<std::int32_t> codesOfRows_;
    const void* valueBuffers_[2]{};
    const void* codeBuffers_[2]{};
    ArrowArray values_{};
    ArrowArray codes_{};
};

}  // namespace tarn
