#include "python/src/InputSource.h"

#include <string_view>
#include <system_error>

#include "host/InputError.h"
#include "host/Utf8.h"
#include "python/src/ArrowCheck.h"
#include "python/src/ArrowValues.h"

namespace tarn {

namespace {

constexpr std::string_view kStruct = "+s";

/// Whether the metadata of a schema has a key that begins so. They are counted in the machine's own byte order. Where
/// they end they alone say. Throws an `InputError`, with the place `where`, for a text of less than no bytes.
bool HasKey(const char* metadata, std::string_view beginning, const std::string& where) {
    if (metadata == nullptr) return false;
    const auto take = [&] {
        const auto number = ValueAt<std::int32_t>(metadata, 0);
        if (number < 0)
            throw InputError(where + ": metadata of the size " + std::to_string(number) + "; expected 0 or more");
        metadata += sizeof number;
        return number;
    };
    const auto takeText = [&] {
        const auto size = static_cast<std::size_t>(take());  // which ends where the text begins
        const std::string_view text(metadata, size);
        metadata += size;
        return text;
    };
    for (std::int32_t left = take(); left > 0; --left) {
        const bool isFound = takeText().starts_with(beginning);
        takeText();
        if (isFound) return true;
    }
    return false;
}

ColumnFormat FormatOf(const ArrowSchema& schema, const std::string& where) {
    if (!IsUtf8(schema.format)) throw InputError(where + ": its format is not UTF-8; expected one like \"g\" or \"u\"");
    return ReadColumnFormat(schema.format);
}

void ReadDictionary(const ArrowSchema& schema, const std::string& where, InputColumn& column) {
    const std::string categories = where + ", its categories";
    CheckSchema(*schema.dictionary, categories);
    column.codes = column.format;
    column.format = FormatOf(*schema.dictionary, categories);
    if (!column.codes->IsWholeNumber()) column.format.refused = "categories whose codes are no whole numbers";
    if (schema.dictionary->dictionary != nullptr) column.format.refused = "categories with categories of their own";
    // The categoricals of polars share their categories, in the order in which the process met them.
    column.isListed = !HasKey(schema.metadata, "_PL_CATEGORICAL", where);
    column.isOrdered = (schema.flags & kArrowDictionaryOrdered) != 0;
}

InputColumn ColumnOf(const ArrowSchema& schema, const std::string& name) {
    const std::string where = "column " + Quoted(name);
    CheckSchema(schema, where);
    InputColumn column;
    column.name = name;
    column.format = FormatOf(schema, where);
    if (schema.dictionary != nullptr) ReadDictionary(schema, where, column);
    column.type = column.format.Type();
    return column;
}

std::string NameOf(const ArrowSchema& schema, std::int64_t index) {
    if (schema.name == nullptr) return "";
    if (IsUtf8(schema.name)) return schema.name;
    throw InputError("the data: the name of column " + std::to_string(index) +
                     " counted from 0 is not UTF-8; expected UTF-8");
}

}  // namespace

StreamSource::StreamSource(ArrowArrayStream& stream, const std::string& name) : stream_(stream) {
    ArrowOwner<ArrowSchema> schema;
    CheckStream(*stream_);
    const int error = stream_->get_schema(&*stream_, schema.Fill());
    if (error != 0) schema.Forget();
    Check(error);
    CheckSchema(*schema, "the schema of the data");
    isStruct_ = schema->format == kStruct && name.empty();
    if (!isStruct_) {
        columns_.push_back(ColumnOf(*schema, name));
        return;
    }
    for (std::int64_t i = 0; i < schema->n_children; ++i) {
        const ArrowSchema* const child = schema->children[i];
        if (child == nullptr || child->release == nullptr) {
            throw InputError("the schema of the data: no column " + std::to_string(i) + " counted from 0; expected " +
                             std::to_string(schema->n_children));
        }
        columns_.push_back(ColumnOf(*child, NameOf(*child, i)));
    }
}

void StreamSource::Check(int error) {
    if (error == 0) return;
    const char* const told = stream_->get_last_error == nullptr ? nullptr : stream_->get_last_error(&*stream_);
    const std::string reason =
        told != nullptr && *told != '\0' && IsUtf8(told) ? told : std::generic_category().message(error);
    throw InputError("the data can't be read: " + reason);
}

void StreamSource::Take() {
    array_ = std::make_shared<ArrowOwner<ArrowArray>>();
    const int error = stream_->get_next(&*stream_, array_->Fill());
    if (error != 0) array_->Forget();
    Check(error);
}

bool StreamSource::Next() {
    // A stream that never comes to an end of them would hold the call for good.
    constexpr int kMostEmpty = 1'000'000;
    if (array_ != nullptr) rowsBefore_ += RowCount();
    for (int i = 0; i < kMostEmpty; ++i) {
        Take();
        if (array_->IsUsedUp()) return false;
        CheckExtent(**array_);
        if (isStruct_) CheckRows(**array_, columns_.size(), rowsBefore_);
        if (RowCount() > 0) return true;
    }
    throw InputError("the data: " + std::to_string(kMostEmpty) + " arrays without rows; expected rows, or an end");
}

ColumnPiece StreamSource::PieceOf(std::size_t column) const {
    const ArrowArray& array = **array_;
    if (!isStruct_) return CheckedPiece(columns_[column], array, {0, array.length, rowsBefore_});
    const ArrowArray* const child = array.children[column];
    if (child == nullptr)
        throw InputError("column " + Quoted(columns_[column].name) + ": no array of its values; expected one");
    return CheckedPiece(columns_[column], *child, {array.offset, array.length, rowsBefore_});
}

MemorySource::MemorySource(InputColumn column, const void* values, std::int64_t count, MemoryHold hold)
    : hold_(std::move(hold)), buffers_{nullptr, values} {
    columns_.push_back(std::move(column));
    array_.length = count;
    array_.n_buffers = 2;
    array_.buffers = buffers_;
}

void MemorySource::SetEntries(const std::vector<std::string>& texts) {
    texts_ = std::make_unique<TextEntries>(texts);
    array_.dictionary = texts_->Array();
}

void MemorySource::SetEntries(std::vector<double> numbers) {
    numbers_ = std::move(numbers);
    numberBuffers_[1] = numbers_.data();
    entries_ = {std::ssize(numbers_), 0, 0, 2, 0, numberBuffers_, nullptr, nullptr, nullptr, nullptr};
    array_.dictionary = &entries_;
}

TextEntries::TextEntries(const std::vector<std::string>& texts) {
    offsets_.push_back(0);
    for (const std::string& text : texts) {
        bytes_ += text;
        offsets_.push_back(static_cast<std::int64_t>(bytes_.size()));
    }
    buffers_[1] = offsets_.data();
    buffers_[2] = bytes_.data();
    array_ = {std::ssize(texts), 0, 0, 3, 0, buffers_, nullptr, nullptr, nullptr, nullptr};
}

SampleSource::SampleSource(InputColumn values, InputColumn samples, const std::vector<std::string>& names)
    : names_(names) {
    columns_.push_back(std::move(values));
    columns_.push_back(std::move(samples));
}

void SampleSource::Add(const void* values, std::int64_t count, MemoryHold hold) {
    samples_.push_back({values, count, std::move(hold)});
}

bool SampleSource::Next() {
    if (next_ == samples_.size()) return false;
    const Sample& sample = samples_[next_];
    codesOfRows_.assign(static_cast<std::size_t>(sample.count), static_cast<std::int32_t>(next_));
    ++next_;
    valueBuffers_[1] = sample.values;
    codeBuffers_[1] = codesOfRows_.data();
    values_ = {sample.count, 0, 0, 2, 0, valueBuffers_, nullptr, nullptr, nullptr, nullptr};
    codes_ = {sample.count, 0, 0, 2, 0, codeBuffers_, nullptr, names_.Array(), nullptr, nullptr};
    return true;
}

}  // namespace tarn
