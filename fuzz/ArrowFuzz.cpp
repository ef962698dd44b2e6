// Any stream of the Arrow C interface whose buffers are as long as they have to be is either read or refused.
//
// The input begins with a line for each column, "name=format" or "name=codes>format" for one with a dictionary, up to
// an empty line. The bytes behind them choose what the arrays say of themselves and what stands in their buffers. A
// byte here and there makes a structure lie in a way that can be found out; how long buffers are can't be, so that
// these are always as long as the lengths, the offsets of texts and the sizes of buffers say.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/InputError.h"
#include "host/Utf8.h"
#include "python/src/ArrowInterface.h"
#include "python/src/ArrowValues.h"
#include "python/src/ColumnFormat.h"
#include "python/src/TableInput.h"

namespace {

using tarn::ArrowArray;
using tarn::ArrowArrayStream;
using tarn::ArrowSchema;
using tarn::ColumnFormat;
using tarn::ValueLayout;

constexpr std::uint8_t kRare = 0xf0;  // a byte from here on chooses what is seldom
constexpr std::int64_t kMostTextBytes = 1 << 16;

/// The bytes of the input from the front; zeros behind its end.
class Choices {
 public:
    Choices(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool AreLeft() const { return left_ > 0; }
    std::uint8_t Byte() {
        if (left_ == 0) return 0;
        --left_;
        return *data_++;
    }
    int Below(int count) { return Byte() % count; }
    bool IsRare() { return Byte() >= kRare; }
    template <typename Value>
    Value Raw() {
        Value value{};
        auto* const bytes = reinterpret_cast<std::uint8_t*>(&value);
        for (std::size_t i = 0; i < sizeof value; ++i) bytes[i] = Byte();
        return value;
    }
    std::string Line() {
        constexpr std::size_t kLongest = 64;
        std::string line;
        while (left_ > 0 && line.size() < kLongest) {
            const char c = static_cast<char>(Byte());
            if (c == '\n') break;
            if (c != '\0') line += c;  // where a text would end for whoever reads it
        }
        return line;
    }

 private:
    const std::uint8_t* data_;
    std::size_t left_;
};

// ---- Schemas ----

struct SchemaParts {
    std::string name;
    std::string format;
    std::string metadata;
    std::vector<std::unique_ptr<ArrowSchema>> owned;
    std::vector<ArrowSchema*> children;
};

void ReleaseSchema(ArrowSchema* schema) {
    if (schema->private_data == nullptr) abort();  // twice
    auto* const parts = static_cast<SchemaParts*>(schema->private_data);
    for (const auto& child : parts->owned) {
        if (child->private_data != nullptr) ReleaseSchema(child.get());
    }
    delete parts;
    *schema = {};
}

std::string TextOf(std::int32_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string MetadataOf(int kind) {
    const std::string key = "_PL_CATEGORICAL";
    if (kind == 1) return TextOf(1) + TextOf(static_cast<std::int32_t>(key.size())) + key + TextOf(0);
    if (kind == 2) return TextOf(-1);
    if (kind == 3) return TextOf(1) + TextOf(-5);
    return TextOf(0);
}

ArrowSchema* AddChild(SchemaParts& parts) {
    return parts.owned.emplace_back(std::make_unique<ArrowSchema>()).get();
}

void LieInSchema(ArrowSchema& schema, Choices& choices) {
    switch (choices.Below(6)) {
        case 0:
            schema.format = nullptr;
            break;
        case 1:
            schema.name = nullptr;
            break;
        case 2:
            schema.children = nullptr;
            break;
        case 3:
            schema.n_children = choices.Byte() % 2 == 0 ? -1 : std::numeric_limits<std::int64_t>::max();
            schema.children = nullptr;
            break;
        case 4:
            schema.release = nullptr;
            break;
        default:
            if (schema.children != nullptr && schema.n_children > 0) schema.children[0] = nullptr;
    }
}

void FillSchema(ArrowSchema& schema, const std::string& name, const std::string& format, Choices& choices) {
    auto* const parts = new SchemaParts;
    parts->name = name;
    const std::size_t mark = format.find('>');
    parts->format = format.substr(0, mark);
    const int metadata = choices.Byte();
    parts->metadata = MetadataOf(metadata);
    schema = {};
    schema.name = parts->name.c_str();
    schema.format = parts->format.c_str();
    schema.metadata = metadata == 0 ? nullptr : parts->metadata.data();
    schema.flags = choices.Byte();
    schema.release = &ReleaseSchema;
    schema.private_data = parts;
    if (mark != std::string::npos) {
        schema.dictionary = AddChild(*parts);
        FillSchema(*schema.dictionary, "", format.substr(mark + 1), choices);
    }
    if (choices.IsRare()) LieInSchema(schema, choices);
}

// ---- Arrays ----

using Buffer = std::vector<std::uint8_t>;

struct ArrayParts {
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::vector<const void*> places;
    std::vector<std::unique_ptr<ArrowArray>> owned;
    std::vector<ArrowArray*> children;
};

void ReleaseArray(ArrowArray* array) {
    if (array->private_data == nullptr) abort();  // twice
    auto* const parts = static_cast<ArrayParts*>(array->private_data);
    for (const auto& child : parts->owned) {
        if (child->private_data != nullptr) ReleaseArray(child.get());
    }
    delete parts;
    *array = {};
}

std::size_t WidthOf(const ColumnFormat& format) {
    switch (format.layout) {
        case ValueLayout::kInt8:
        case ValueLayout::kUInt8:
            return 1;
        case ValueLayout::kInt16:
        case ValueLayout::kUInt16:
        case ValueLayout::kHalf:
            return 2;
        case ValueLayout::kInt32:
        case ValueLayout::kUInt32:
        case ValueLayout::kFloat:
            return 4;
        case ValueLayout::kDecimal:
            return static_cast<std::size_t>(format.decimalWidth);
        default:
            return 8;
    }
}

/// Memory of exactly that size, so that a byte behind it is found.
Buffer& AddBuffer(ArrayParts& parts, std::size_t size) {
    Buffer& buffer = *parts.buffers.emplace_back(std::make_unique<Buffer>(size));
    parts.places.push_back(buffer.data());
    return buffer;
}

template <typename Number>
void AddNumbers(ArrayParts& parts, const std::vector<Number>& numbers) {
    Buffer& buffer = AddBuffer(parts, numbers.size() * sizeof(Number));
    if (!numbers.empty()) std::memcpy(buffer.data(), numbers.data(), buffer.size());
}

void FillAny(Buffer& buffer, Choices& choices) {
    for (std::uint8_t& byte : buffer) byte = choices.Byte();
}

/// Small numbers, as codes are, and any here and there.
void FillNumbers(Buffer& buffer, std::size_t width, Choices& choices) {
    constexpr std::uint8_t kSmall = 8;
    for (std::size_t at = 0; at + width <= buffer.size(); at += width) {
        const std::uint8_t first = choices.Byte();
        if (first < kRare) {
            buffer[at] = first % kSmall;
            continue;
        }
        for (std::size_t i = 0; i < width; ++i) buffer[at + i] = choices.Byte();
    }
}

template <typename Offset>
void AddTexts(ArrayParts& parts, std::size_t count, Choices& choices) {
    constexpr int kLongestStep = 16;
    std::vector<Offset> offsets{static_cast<Offset>(choices.IsRare() ? choices.Raw<Offset>() : 0)};
    while (offsets.size() <= count) {
        const std::uint8_t step = choices.Byte();
        const bool isAny = step >= kRare || offsets.back() > kMostTextBytes || offsets.back() < 0;
        offsets.push_back(isAny ? choices.Raw<Offset>() : static_cast<Offset>(offsets.back() + step % kLongestStep));
    }
    offsets.back() = std::min<Offset>(offsets.back(), kMostTextBytes);
    AddNumbers(parts, offsets);
    FillAny(AddBuffer(parts, static_cast<std::size_t>(std::max<Offset>(offsets.back(), 0))), choices);
}

void AddViews(ArrayParts& parts, std::size_t count, Choices& choices) {
    constexpr int kMostBuffers = 3;
    const int buffers = choices.Below(kMostBuffers);
    std::vector<std::int64_t> sizes;
    for (int i = 0; i < buffers; ++i) sizes.push_back(choices.Byte());
    Buffer& views = AddBuffer(parts, count * sizeof(tarn::TextView));
    for (std::size_t i = 0; i < count; ++i) {
        tarn::TextView view{choices.Byte(), choices.Raw<std::int32_t>(), choices.Below(kMostBuffers), choices.Byte()};
        if (choices.IsRare()) view = choices.Raw<tarn::TextView>();
        std::memcpy(views.data() + i * sizeof view, &view, sizeof view);
    }
    for (const std::int64_t size : sizes) FillAny(AddBuffer(parts, static_cast<std::size_t>(size)), choices);
    if (!sizes.empty() && choices.IsRare()) sizes[0] = -1;
    AddNumbers(parts, sizes);
}

void AddBuffers(ArrayParts& parts, const ColumnFormat& format, std::size_t count, Choices& choices) {
    constexpr std::size_t kBitsOfByte = 8;
    const std::size_t bitBytes = (count + kBitsOfByte - 1) / kBitsOfByte;
    if (format.layout == ValueLayout::kNull && format.refused.empty()) {
        if (choices.IsRare()) AddBuffer(parts, 0);  // as some libraries do
        return;
    }
    FillAny(AddBuffer(parts, bitBytes), choices);
    switch (format.layout) {
        case ValueLayout::kText:
            AddTexts<std::int32_t>(parts, count, choices);
            break;
        case ValueLayout::kLargeText:
            AddTexts<std::int64_t>(parts, count, choices);
            break;
        case ValueLayout::kTextView:
            AddViews(parts, count, choices);
            break;
        case ValueLayout::kBit:
            FillAny(AddBuffer(parts, bitBytes), choices);
            break;
        default:
            FillNumbers(AddBuffer(parts, count * WidthOf(format)), WidthOf(format), choices);
    }
}

std::int64_t AbsurdNumber(Choices& choices) {
    constexpr std::int64_t kAbsurd[] = {-1, -2, std::numeric_limits<std::int64_t>::min(),
                                        std::numeric_limits<std::int64_t>::max(), (std::int64_t{1} << 47) + 1};
    return kAbsurd[choices.Below(std::size(kAbsurd))];
}

void LieInArray(ArrowArray& array, Choices& choices) {
    auto& parts = *static_cast<ArrayParts*>(array.private_data);
    switch (choices.Below(9)) {
        case 0:
            array.length = AbsurdNumber(choices);
            break;
        case 1:
            array.offset = AbsurdNumber(choices);
            break;
        case 2:
            array.null_count = choices.Byte() % 2 == 0 ? array.length + 1 : -2;
            break;
        case 3:
            array.n_buffers = choices.Below(3) - 1;  // too few for any format that has some
            break;
        case 4:
            array.buffers = nullptr;
            break;
        case 5:
            if (!parts.places.empty()) parts.places[choices.Byte() % parts.places.size()] = nullptr;
            break;
        case 6:
            array.dictionary = nullptr;
            break;
        case 7:
            array.release = nullptr;
            break;
        default:
            array.children = nullptr;
    }
}

ArrowArray NewArray(std::int64_t length, std::int64_t offset, Choices& choices) {
    constexpr int kUncounted = 0x80;
    ArrowArray array{};
    array.length = length;
    array.offset = offset;
    const int nulls = choices.Byte();
    array.null_count = nulls >= kUncounted ? -1 : nulls % (length + 1);
    array.release = &ReleaseArray;
    array.private_data = new ArrayParts;
    return array;
}

/// Tells of the buffers and the children that are there by now.
void Complete(ArrowArray& array, Choices& choices) {
    auto& parts = *static_cast<ArrayParts*>(array.private_data);
    array.n_buffers = std::ssize(parts.places);
    array.buffers = parts.places.data();
    array.n_children = std::ssize(parts.children);
    array.children = parts.children.data();
    if (choices.IsRare()) LieInArray(array, choices);
}

void FillColumn(ArrowArray& array, const std::string& format, std::int64_t length, Choices& choices) {
    constexpr int kMostSkipped = 5;
    constexpr int kMostEntries = 9;
    const std::int64_t offset = choices.Below(kMostSkipped);
    array = NewArray(length, offset, choices);
    auto& parts = *static_cast<ArrayParts*>(array.private_data);
    const std::size_t mark = format.find('>');
    AddBuffers(parts, tarn::ReadColumnFormat(format.substr(0, mark)), static_cast<std::size_t>(offset + length),
               choices);
    if (mark != std::string::npos) {
        array.dictionary = parts.owned.emplace_back(std::make_unique<ArrowArray>()).get();
        FillColumn(*array.dictionary, format.substr(mark + 1), choices.Below(kMostEntries), choices);
    }
    Complete(array, choices);
}

// ---- Streams ----

struct StreamParts {
    Choices choices;
    std::vector<std::string> names;
    std::vector<std::string> formats;
    bool isStruct = true;
    int arraysLeft = 0;
    std::string error;
};

StreamParts& PartsOf(ArrowArrayStream* stream) {
    return *static_cast<StreamParts*>(stream->private_data);
}

/// An error, and in the place of the result what must not be touched.
template <typename Structure>
int Fail(StreamParts& parts, Structure* place) {
    place->release = [](Structure*) { abort(); };
    parts.error = parts.choices.Line();
    return parts.choices.Byte() + 1;
}

int GetSchema(ArrowArrayStream* stream, ArrowSchema* schema) {
    StreamParts& parts = PartsOf(stream);
    if (parts.choices.IsRare()) return Fail(parts, schema);
    if (!parts.isStruct) {
        FillSchema(*schema, parts.names[0], parts.formats[0], parts.choices);
        if (schema->release == nullptr) ReleaseSchema(schema);  // as nobody else will
        return 0;
    }
    FillSchema(*schema, "", "+s", parts.choices);
    auto& made = *static_cast<SchemaParts*>(schema->private_data);
    for (std::size_t i = 0; i < parts.names.size(); ++i) {
        ArrowSchema* const child = AddChild(made);
        FillSchema(*child, parts.names[i], parts.formats[i], parts.choices);
        made.children.push_back(child);
    }
    if (schema->n_children == 0) {  // else it lies
        schema->n_children = std::ssize(made.children);
        schema->children = made.children.data();
    }
    if (parts.choices.IsRare()) LieInSchema(*schema, parts.choices);
    if (schema->release == nullptr) ReleaseSchema(schema);  // as nobody else will
    return 0;
}

/// The number of rows that a column has: as many as needed, or somewhat less or more.
std::int64_t ChildLength(std::int64_t needed, Choices& choices) {
    constexpr int kSpread = 4;
    const std::int64_t other = needed + choices.Below(2 * kSpread) - kSpread;
    return choices.IsRare() ? std::max<std::int64_t>(other, 0) : needed;
}

int GetNext(ArrowArrayStream* stream, ArrowArray* array) {
    constexpr int kMostRows = 40;
    constexpr int kMostSkipped = 4;
    StreamParts& parts = PartsOf(stream);
    Choices& choices = parts.choices;
    if (choices.IsRare()) return Fail(parts, array);
    if (parts.arraysLeft-- <= 0) {
        *array = {};
        return 0;
    }
    const std::int64_t length = choices.Below(kMostRows);
    if (!parts.isStruct) {
        FillColumn(*array, parts.formats[0], length, choices);
        if (array->release == nullptr) ReleaseArray(array);
        return 0;
    }
    const std::int64_t offset = choices.IsRare() ? choices.Below(kMostSkipped) : 0;
    *array = NewArray(length, offset, choices);
    auto& made = *static_cast<ArrayParts*>(array->private_data);
    AddBuffer(made, static_cast<std::size_t>(offset + length)).assign(static_cast<std::size_t>(offset + length), 0xff);
    if (choices.IsRare()) FillAny(*made.buffers[0], choices);
    std::size_t columns = parts.formats.size();
    if (choices.IsRare()) columns = choices.Byte() % (columns + 1);
    for (std::size_t i = 0; i < columns; ++i) {
        ArrowArray* const child = made.owned.emplace_back(std::make_unique<ArrowArray>()).get();
        FillColumn(*child, parts.formats[i], ChildLength(offset + length, choices), choices);
        made.children.push_back(choices.IsRare() ? nullptr : child);
    }
    Complete(*array, choices);
    if (array->release == nullptr) ReleaseArray(array);
    return 0;
}

const char* GetLastError(ArrowArrayStream* stream) {
    const StreamParts& parts = PartsOf(stream);
    return parts.error.empty() ? nullptr : parts.error.c_str();
}

void ReleaseStream(ArrowArrayStream* stream) {
    if (stream->private_data == nullptr) abort();  // twice
    delete &PartsOf(stream);
    *stream = {};
}

ArrowArrayStream StreamOf(Choices choices) {
    constexpr std::size_t kMostColumns = 5;
    constexpr int kMostArrays = 4;
    auto* const parts = new StreamParts{choices, {}, {}, true, 0, {}};
    Choices& rest = parts->choices;
    for (std::string line = rest.Line(); !line.empty() && parts->names.size() < kMostColumns; line = rest.Line()) {
        const std::size_t mark = line.find('=');
        parts->names.push_back(mark == std::string::npos ? "" : line.substr(0, mark));
        parts->formats.push_back(mark == std::string::npos ? line : line.substr(mark + 1));
    }
    parts->isStruct = parts->names.size() != 1;
    parts->arraysLeft = rest.Below(kMostArrays);
    ArrowArrayStream stream{&GetSchema, &GetNext, &GetLastError, &ReleaseStream, parts};
    if (rest.IsRare()) stream.get_last_error = nullptr;
    if (rest.IsRare()) stream.get_next = nullptr;
    return stream;
}

/// What holds for any table.
void CheckTable(const tarn::Table& table) {
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        const tarn::Column& column = table.Columns()[i];
        const auto categories = static_cast<double>(column.categories.size());
        for (const double cell : table.Cells(i)) {
            const bool isCategory = cell == tarn::kMissingCategory || (cell >= 0 && cell < categories);
            const bool isNumber = std::abs(cell) <= std::numeric_limits<double>::max();
            if (column.IsCategorical() ? !isCategory : !isNumber) abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ArrowArrayStream stream = StreamOf(Choices(data, size));
    tarn::LoadOptions options;
    options.threads = 1;
    try {
        tarn::InputData sources;
        sources.push_back(std::make_unique<tarn::StreamSource>(stream, ""));
        CheckTable(tarn::ReadTable(sources, tarn::WantedColumns(), options, true, [] {}));
    } catch (const tarn::InputError& mistake) {
        if (!tarn::IsUtf8(mistake.what())) abort();
    }
    return 0;
}
