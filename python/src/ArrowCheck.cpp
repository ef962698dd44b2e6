#include "python/src/ArrowCheck.h"

#include "host/InputError.h"
#include "python/src/ArrowValues.h"

namespace tarn {

namespace {

/// Of more bytes than that no machine has the addresses, and places in buffers can be worked out without overflow.
constexpr std::int64_t kMostValues = std::int64_t{1} << 47;

[[noreturn]] void FailAt(const std::string& where, const std::string& what) {
    throw InputError(where + ": " + what);
}

void CheckExtentOf(const std::string& where, const ArrowArray& array) {
    if (array.release == nullptr) FailAt(where, "an array that was released before; expected one that is in use");
    const auto check = [&where](const char* what, std::int64_t number) {
        if (number >= 0 && number <= kMostValues) return;
        FailAt(where, std::string("an array with the ") + what + " " + std::to_string(number) +
                          "; expected one from 0 to " + std::to_string(kMostValues));
    };
    check("length", array.length);
    check("offset", array.offset);
    if (array.null_count >= -1 && array.null_count <= array.length) return;
    FailAt(where, "an array of " + std::to_string(array.length) + " values, of which " +
                      std::to_string(array.null_count) + " are null; expected no more nulls than values, or -1");
}

int BufferCountOf(const ColumnFormat& format) {
    switch (format.layout) {
        case ValueLayout::kNull:
            return 0;
        case ValueLayout::kText:
        case ValueLayout::kLargeText:
        case ValueLayout::kTextView:
            return 3;
        default:
            return 2;
    }
}

void CheckBufferCount(const std::string& where, const ArrowArray& array, std::int64_t expected, bool mayBeMore) {
    if (array.n_buffers < expected || (array.n_buffers > expected && !mayBeMore)) {
        FailAt(where, "an array with " + std::to_string(array.n_buffers) + " buffers; expected " +
                          std::to_string(expected) + (mayBeMore ? " or more" : "") + " for its format");
    }
    if (array.n_buffers > 0 && array.buffers == nullptr) {
        FailAt(where, "an array without its list of buffers; expected one");
    }
}

/// The check of the values of one array, in the order in which one thing rests on the other.
class ValuesCheck {
 public:
    /// `unit`: what a value is to a reader: "row" or "category". All but the numbers is borrowed.
    ValuesCheck(const std::string& where, const char* unit, const ColumnFormat& format, const ArrowArray& array)
        : where_(where), unit_(unit), format_(format), array_(array) {}

    /// `rows` tells which of the values will be read; of them, and of what they rest on, is what is checked.
    void Check(const WantedRows& rows) {
        CheckExtentOf(where_, array_);
        if (array_.length - rows.skipped < rows.count) {
            FailAt(where_, "an array of " + std::to_string(array_.length) + " values; expected " +
                               std::to_string(rows.skipped + rows.count) + ", as the rows need");
        }
        first_ = array_.offset + rows.skipped;
        count_ = rows.count;
        before_ = rows.before;
        if (array_.n_children != 0) {
            FailAt(where_, "an array with " + std::to_string(array_.n_children) + " children; expected none");
        }
        // Some libraries give nulls a buffer that they don't have. Nobody looks into it.
        const bool areNulls = format_.layout == ValueLayout::kNull;
        const bool mayBeMore = areNulls || format_.layout == ValueLayout::kTextView;
        CheckBufferCount(where_, array_, BufferCountOf(format_), mayBeMore);
        if (count_ > 0 && !areNulls) CheckBuffers();
    }

 private:
    [[noreturn]] void FailAtValue(std::int64_t at, const std::string& what) const {
        FailAt(where_ + ", " + unit_ + " " + std::to_string(at - first_ + before_) + " counted from 0", what);
    }

    void CheckBuffers() const {
        if (array_.null_count > 0 && array_.buffers[0] == nullptr) {
            FailAt(where_, std::to_string(array_.null_count) + " nulls, and no bits that tell which; expected both");
        }
        if (array_.buffers[1] == nullptr) FailAt(where_, "an array without its buffer of values; expected one");
        if (format_.layout == ValueLayout::kText) CheckOffsets<std::int32_t>();
        if (format_.layout == ValueLayout::kLargeText) CheckOffsets<std::int64_t>();
        if (format_.layout == ValueLayout::kTextView) CheckViews();
    }

    /// Offsets have to ascend for missing values, too: the last one tells how many bytes of text there are.
    template <typename Offset>
    void CheckOffsets() const {
        const auto offsetAt = [this](std::int64_t at) { return ValueAt<Offset>(array_.buffers[1], at); };
        const Offset begin = offsetAt(first_);
        const Offset end = offsetAt(first_ + count_);
        const Offset all = offsetAt(array_.offset + array_.length);
        if (begin < 0) FailAtValue(first_, "a text that begins at " + std::to_string(begin) + "; expected 0 or more");
        bool isAscending = true;
        for (std::int64_t at = first_; at < first_ + count_; ++at) isAscending &= offsetAt(at) <= offsetAt(at + 1);
        if (!isAscending) FailAtFall<Offset>();
        if (end > all) {
            FailAtValue(first_ + count_ - 1, "a text that ends at " + std::to_string(end) + ", and all of them at " +
                                                 std::to_string(all) + "; expected offsets that don't fall");
        }
        if (begin < end && array_.buffers[2] == nullptr)
            FailAt(where_, "an array without its buffer of texts; expected one");
    }

    template <typename Offset>
    [[noreturn]] void FailAtFall() const {
        std::int64_t at = first_;
        const auto offsetAt = [this](std::int64_t place) { return ValueAt<Offset>(array_.buffers[1], place); };
        while (offsetAt(at) <= offsetAt(at + 1)) ++at;
        FailAtValue(at, "a text from " + std::to_string(offsetAt(at)) + " to " + std::to_string(offsetAt(at + 1)) +
                            "; expected offsets that don't fall");
    }

    void CheckViews() const {
        const Presence isPresent(array_);
        for (std::int64_t at = first_; at < first_ + count_; ++at) {
            if (!isPresent(at)) continue;
            const TextView view = ValueAt<TextView>(array_.buffers[1], at);
            if (view.size < 0) {
                FailAtValue(at, "a text of " + std::to_string(view.size) + " bytes; expected 0 or more");
            }
            if (view.size > TextView::kLongestWithin) CheckPlace(at, view);
        }
    }

    /// The last buffer tells how long the ones are in which the texts stand.
    void CheckPlace(std::int64_t at, const TextView& view) const {
        const std::int64_t textBuffers = array_.n_buffers - BufferCountOf(format_);
        if (view.buffer < 0 || view.buffer >= textBuffers) {
            FailAtValue(at, "a text in buffer " + std::to_string(view.buffer) + " of " + std::to_string(textBuffers) +
                                "; expected one of them, from 0");
        }
        const void* const sizes = array_.buffers[array_.n_buffers - 1];
        if (sizes == nullptr) FailAt(where_, "an array without the sizes of its buffers of texts; expected them");
        const auto size = ValueAt<std::int64_t>(sizes, view.buffer);
        if (view.begin < 0 || std::int64_t{view.begin} + view.size > size) {
            FailAtValue(at, "a text of " + std::to_string(view.size) + " bytes from " + std::to_string(view.begin) +
                                " on, in a buffer of " + std::to_string(size) + "; expected one within it");
        }
        if (array_.buffers[ViewTexts::kFirstBuffer + view.buffer] == nullptr) {
            FailAt(where_, "an array without its buffer of texts " + std::to_string(view.buffer) + "; expected one");
        }
    }

    const std::string& where_;
    const char* unit_;
    const ColumnFormat& format_;
    const ArrowArray& array_;
    std::int64_t first_ = 0;  // of the values that will be read, counted from where the buffers begin
    std::int64_t count_ = 0;
    std::int64_t before_ = 0;
};

void CheckDictionary(const std::string& where, const InputColumn& column, const ArrowArray& array) {
    if (!column.codes) {
        if (array.dictionary != nullptr) FailAt(where, "an array with categories; expected none after its schema");
        return;
    }
    if (array.dictionary == nullptr) FailAt(where, "an array without categories; expected some after its schema");
    const ArrowArray& dictionary = *array.dictionary;
    const std::string categories = where + ", its categories";
    ValuesCheck(categories, "category", column.format, dictionary).Check({0, dictionary.length, 0});
    if (dictionary.dictionary != nullptr) FailAt(categories, "an array with categories of its own; expected none");
}

}  // namespace

void CheckStream(const ArrowArrayStream& stream) {
    if (stream.get_schema != nullptr && stream.get_next != nullptr) return;
    throw InputError("the data is a stream without its functions; expected get_schema and get_next");
}

void CheckSchema(const ArrowSchema& schema, const std::string& what) {
    if (schema.release == nullptr) FailAt(what, "it was released before; expected one that is in use");
    if (schema.format == nullptr) FailAt(what, "it has no format; expected one like \"g\" or \"u\"");
    if (schema.n_children < 0 || schema.n_children > kMostValues) {
        FailAt(what, "it has " + std::to_string(schema.n_children) + " children; expected 0 or more");
    }
    if (schema.n_children > 0 && schema.children == nullptr)
        FailAt(what, "it has children, and no list of them; expected both");
}

void CheckExtent(const ArrowArray& array) {
    CheckExtentOf("the data", array);
}

void CheckRows(const ArrowArray& array, std::size_t columnCount, std::int64_t rowsBefore) {
    const std::string where = "the data";
    if (array.n_children != static_cast<std::int64_t>(columnCount)) {
        FailAt(where, "an array of " + std::to_string(array.n_children) + " columns; expected " +
                          std::to_string(columnCount) + " after its schema");
    }
    if (columnCount > 0 && array.children == nullptr)
        FailAt(where, "an array without its list of columns; expected one");
    CheckBufferCount(where, array, 1, false);
    if (array.null_count == 0) return;
    if (array.buffers[0] == nullptr) {
        if (array.null_count < 0) return;  // uncounted: all are there, and there may be any number
        FailAt(where, std::to_string(array.null_count) +
                          " missing rows, and no bits that tell which; expected rows that are there");
    }
    const Presence isPresent(array);
    for (std::int64_t row = 0; row < array.length; ++row) {
        if (isPresent(array.offset + row)) continue;
        FailAt(where + ", row " + std::to_string(rowsBefore + row) + " counted from 0",
               "it is missing as a whole; expected a row, with nulls in its columns");
    }
}

ColumnPiece CheckedPiece(const InputColumn& column, const ArrowArray& array, const WantedRows& rows) {
    const std::string where = "column " + Quoted(column.name);
    ValuesCheck(where, "row", column.codes ? *column.codes : column.format, array).Check(rows);
    CheckDictionary(where, column, array);
    return {&array, array.offset + rows.skipped, rows.count, rows.before};
}

}  // namespace tarn
