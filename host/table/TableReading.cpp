#include "host/table/TableReading.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "host/Decompression.h"
#include "host/TextList.h"
#include "host/table/BlankRuns.h"
#include "host/table/ForeignFormat.h"
#include "host/table/Recognition.h"

namespace tarn {

namespace {

constexpr std::size_t kHeadSize = 4096;
/// So many bytes are looked at, and more of a table with long rows.
constexpr std::size_t kSampleSize = std::size_t{1} << 16;
constexpr std::size_t kLargestSample = std::size_t{1} << 22;
constexpr std::ptrdiff_t kLeastLines = 6;
constexpr char kBlank = ' ';

/// The first bytes of a source, at most `size`; it stands at its first byte again.
std::string Head(ByteSource& source, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t read = 0;
    while (read < size) {
        const std::size_t count = source.Read(bytes.data() + read, size - read);
        if (count == 0) break;
        read += count;
    }
    bytes.resize(read);
    source.Rewind();
    return bytes;
}

ByteSource Filtered(ByteSource source, std::unique_ptr<ByteFilter> filter) {
    return filter ? ByteSource::Through(std::move(source), std::move(filter)) : std::move(source);
}

/// A table on its way to its reader.
class Reading {
 public:
    Reading(ByteSource source, const ReadingOptions& options)
        : options_(options), source_(Decompressed(std::move(source))) {
        const std::string head = Head(source_, kHeadSize);
        RefuseForeignFormat(source_.Name(), head);
        const std::optional<Encoding> marked = EncodingOfMark(head);
        encoding_ = marked.value_or(options.encoding.value_or(Encoding::kUtf8));
        if (marked && *marked != Encoding::kUtf8) remarks_.emplace_back("UTF-16");
    }

    Table Load(const TableDescriptor& descriptor, LoadOptions load) && {
        ByteSource text = Filtered(std::move(source_), Utf8From(encoding_));
        std::string sample = Sample(text);
        const bool isWhole = sample.size() < sampleSize_;
        const bool hasReturns = sample.find('\n') == std::string::npos && sample.find('\r') != std::string::npos;
        if (hasReturns) {
            std::ranges::replace(sample, '\r', '\n');
            remarks_.emplace_back("lines that end with a carriage return");
        }
        ByteSource lines = Filtered(std::move(text), hasReturns ? LineFeedsForReturns() : nullptr);
        TakeMissingTexts(descriptor, load);
        ToldShape told = Told(descriptor, load);
        Recognition recognition = Recognise(WithoutMark(sample), isWhole, told);
        const std::string tabbed = WithTabsForBlanks(WithoutMark(sample));
        const bool hasBlanks = told.delimiter == kBlank || MayHaveBlanks(recognition, tabbed, isWhole, told);
        if (hasBlanks) {
            if (!told.delimiter) remarks_.emplace_back("blanks between cells");
            told.delimiter = '\t';  // which the filter makes of them
            recognition = Recognise(tabbed, isWhole, told);
        }
        ByteSource source = Filtered(std::move(lines), hasBlanks ? TabsForBlanks() : nullptr);
        load.shape = std::move(recognition.shape);
        std::ranges::move(recognition.remarks, std::back_inserter(remarks_));
        Table table = LoadTable(source, descriptor, load);
        if (!remarks_.empty()) {
            table.AddNote(source.Name() + ": " + JoinList(remarks_, ", "));
        }
        return table;
    }

 private:
    static ByteSource Decompressed(ByteSource source) {
        const std::string head = Head(source, kHeadSize);
        return Filtered(std::move(source), DecompressionOf(head));
    }

    /// The beginning of a table, with some rows.
    std::string Sample(ByteSource& source) {
        for (sampleSize_ = kSampleSize;; sampleSize_ *= 4) {
            std::string sample = Head(source, sampleSize_);
            const bool isEnough = std::ranges::count(sample, '\n') >= kLeastLines || sampleSize_ >= kLargestSample;
            if (isEnough || sample.size() < sampleSize_) return sample;
        }
    }

    /// Blanks are a delimiter where no other one fits.
    static bool MayHaveBlanks(const Recognition& recognition, std::string_view tabbed, bool isWhole,
                              const ToldShape& told) {
        return !told.delimiter && !told.keepsPlainTables && !recognition.hasSeveralNames &&
               HasBlanksBetweenCells(tabbed, isWhole, told);
    }

    static std::string_view WithoutMark(std::string_view text) {
        constexpr std::string_view kMark = "\xef\xbb\xbf";
        return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
    }

    void TakeMissingTexts(const TableDescriptor& descriptor, LoadOptions& load) const {
        if (options_.missingTexts) {
            load.missingTexts = options_.missingTexts;
            load.missingTexts->emplace_back();
        } else if (!descriptor.namesMissingTexts && !options_.keepsPlainTables) {
            load.missingTexts = UsualMissingTexts();
            load.missingAmongNumbers = MissingTextsAmongNumbers();
        }
    }

    ToldShape Told(const TableDescriptor& descriptor, const LoadOptions& load) const {
        ToldShape told;
        told.delimiter = options_.delimiter;
        told.decimal = options_.decimal;
        told.keepsPlainTables = options_.keepsPlainTables;
        told.missingTexts = load.missingTexts.value_or(descriptor.missingTexts);
        told.missingTexts.insert(told.missingTexts.end(), load.missingAmongNumbers.begin(),
                                 load.missingAmongNumbers.end());
        for (const FieldDescriptor& field : descriptor.fields) {
            for (const DescribedValue& value : field.missingValues) told.missingTexts.push_back(value.text);
        }
        return told;
    }

    const ReadingOptions& options_;
    ByteSource source_;
    Encoding encoding_ = Encoding::kUtf8;
    std::vector<std::string> remarks_;
    std::size_t sampleSize_ = 0;
};

}  // namespace

Table ReadTable(ByteSource source, const TableDescriptor& descriptor, LoadOptions load, const ReadingOptions& reading) {
    return Reading(std::move(source), reading).Load(descriptor, std::move(load));
}

const std::vector<std::string>& UsualMissingTexts() {
    static const std::vector<std::string> texts{"", "NA", "N/A", "n/a", "#N/A", "NULL", "null", "NaN", "nan"};
    return texts;
}

const std::vector<std::string>& MissingTextsAmongNumbers() {
    static const std::vector<std::string> texts{".", "-"};
    return texts;
}

}  // namespace tarn
