#include "python/src/InputSource.h"

#include <cstring>
#include <string_view>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr std::string_view kStruct = "+s";

/// Whether the metadata of a schema has a key that begins so. They are counted in the machine's own byte order.
bool HasKey(const char* metadata, std::string_view beginning) {
    if (metadata == nullptr) return false;
    const auto take = [&metadata] {
        std::int32_t number = 0;
        std::memcpy(&number, metadata, sizeof number);
        metadata += sizeof number;
        return number;
    };
    const auto takeText = [&] {
        const auto size = static_cast<std::size_t>(take());
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

InputColumn ColumnOf(const ArrowSchema& schema, const std::string& name) {
    InputColumn column;
    column.name = name;
    column.format = ReadColumnFormat(schema.format);
    if (schema.dictionary != nullptr) {
        column.codes = column.format;
        column.format = ReadColumnFormat(schema.dictionary->format);
        // The categoricals of polars share their categories, in the order in which the process met them.
        column.isListed = !HasKey(schema.metadata, "_PL_CATEGORICAL");
        column.isOrdered = (schema.flags & kArrowDictionaryOrdered) != 0;
    }
    column.type = column.format.Type();
    return column;
}

}  // namespace

StreamSource::StreamSource(ArrowArrayStream& stream, const std::string& name) : stream_(stream) {
    ArrowOwner<ArrowSchema> schema;
    Check(stream_->get_schema(&*stream_, schema.Fill()));
    isStruct_ = schema->format == kStruct && name.empty();
    if (!isStruct_) {
        columns_.push_back(ColumnOf(*schema, name));
        return;
    }
    for (std::int64_t i = 0; i < schema->n_children; ++i) {
        const ArrowSchema& child = *schema->children[i];
        columns_.push_back(ColumnOf(child, child.name == nullptr ? "" : child.name));
    }
}

void StreamSource::Check(int error) {
    if (error == 0) return;
    const char* const reason = stream_->get_last_error(&*stream_);
    throw InputError("the data can't be read: " + std::string(reason == nullptr ? std::strerror(error) : reason));
}

bool StreamSource::Next() {
    do {
        array_ = std::make_shared<ArrowOwner<ArrowArray>>();
        Check(stream_->get_next(&*stream_, array_->Fill()));
        if (array_->IsUsedUp()) return false;
    } while ((*array_)->length == 0);
    return true;
}

ColumnPiece StreamSource::PieceOf(std::size_t column) const {
    const ArrowArray& array = **array_;
    if (!isStruct_) return {&array, array.offset, array.length};
    const ArrowArray& child = *array.children[column];
    return {&child, child.offset + array.offset, array.length};
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
