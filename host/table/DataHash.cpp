#include "host/table/DataHash.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

#include "host/Sha256.h"

namespace tarn {

namespace {

/// What stands for a missing number: no value is written so, since what is no number has one form.
constexpr std::uint64_t kMissingBits = 0xFFFF'FFFF'FFFF'FFFF;
constexpr std::uint64_t kNoNumberBits = 0x7FF8'0000'0000'0000;

/// The bytes of a field on their way to its hash: numbers with their lowest byte first, whatever the processor.
class HashedBytes {
 public:
    template <typename Whole>
    void Put(Whole number) {
        constexpr unsigned kBitsOfByte = 8;
        if (used_ + sizeof number > block_.size()) Flush();
        for (std::size_t i = 0; i < sizeof number; ++i) {
            block_[used_++] = static_cast<std::uint8_t>(number >> (i * kBitsOfByte));
        }
    }
    void PutLetter(char letter) { Put(static_cast<std::uint8_t>(letter)); }
    void PutSize(std::size_t size) { Put(static_cast<std::uint64_t>(size)); }
    /// A text behind its length in bytes, so that no two lists of texts give the same bytes.
    void PutText(std::string_view text) {
        PutSize(text.size());
        Flush();
        hash_.Add(text.data(), text.size());
    }
    /// Zero has no sign, and what is no number one form: no test tells them apart, while files write them in several
    /// ways.
    void PutNumber(double number) {
        if (std::isnan(number)) return Put(kNoNumberBits);
        Put(std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number));
    }
    Sha256::Digest Take() {
        Flush();
        return hash_.Take();
    }

 private:
    void Flush() {
        hash_.Add(block_.data(), used_);
        used_ = 0;
    }

    Sha256 hash_;
    std::array<std::uint8_t, std::size_t{1} << 14> block_{};
    std::size_t used_ = 0;
};

char LetterOf(HashedKind kind) {
    return kind == HashedKind::kNumbers ? 'n' : kind == HashedKind::kTexts ? 't' : 'm';
}

char LetterOf(FieldLevel level) {
    return level == FieldLevel::kContinuous ? 'c' : level == FieldLevel::kNominal ? 'n' : 'o';
}

void PutCategories(HashedBytes& bytes, const Column& column) {
    bytes.PutSize(column.categories.size());
    for (const Category& category : column.categories) {
        if (column.IsText()) {
            bytes.PutText(category.text);
        } else {
            bytes.PutNumber(category.number);
        }
        bytes.PutText(category.label);
    }
}

/// The values of the records; counts those that are missing.
std::size_t PutCells(HashedBytes& bytes, const Column& column, HashedKind kind, std::span<const double> cells) {
    const double missing = column.IsCategorical() ? kMissingCategory : kMissingNumber;
    std::size_t count = 0;
    for (const double cell : cells) {
        const bool isMissing = cell == missing;
        count += isMissing ? 1 : 0;
        if (kind == HashedKind::kMissing) {
            bytes.Put(static_cast<std::uint8_t>(isMissing));
        } else if (column.IsCategorical()) {
            bytes.Put(isMissing ? std::uint32_t{0} : static_cast<std::uint32_t>(cell) + 1);
        } else if (isMissing) {
            bytes.Put(kMissingBits);
        } else {
            bytes.PutNumber(cell);
        }
    }
    return count;
}

Sha256::Digest HashField(const Table& table, const HashedColumn& wanted, HashedField& field) {
    const Column& column = table.Columns()[wanted.column];
    field.name = column.name;
    field.level = column.level;
    field.isWeight = static_cast<int>(wanted.column) == table.WeightIndex();
    field.kind = !wanted.areValuesRead ? HashedKind::kMissing
                 : column.IsText()     ? HashedKind::kTexts
                                       : HashedKind::kNumbers;
    HashedBytes bytes;
    bytes.PutText(field.name);
    bytes.PutLetter(LetterOf(field.kind));
    if (field.kind != HashedKind::kMissing) {
        bytes.PutLetter(LetterOf(field.level));
        PutCategories(bytes, column);
    }
    bytes.PutSize(table.RowCount());
    field.missing = PutCells(bytes, column, field.kind, table.Cells(wanted.column));
    const Sha256::Digest digest = bytes.Take();
    field.hash = HexOf(digest);
    return digest;
}

}  // namespace

std::string_view NameOf(HashedKind kind) {
    return kind == HashedKind::kNumbers ? "numbers" : kind == HashedKind::kTexts ? "texts" : "missing";
}

DataHash HashOf(const Table& table, std::span<const HashedColumn> columns, const WorkShare& work) {
    std::vector<HashedColumn> sorted(columns.begin(), columns.end());
    std::ranges::sort(sorted, {}, [&](const HashedColumn& each) { return table.Columns()[each.column].name; });
    DataHash data;
    data.fields.resize(sorted.size());
    std::vector<Sha256::Digest> digests(sorted.size());
    work.Run(sorted.size(), [&](std::size_t i) { digests[i] = HashField(table, sorted[i], data.fields[i]); });
    HashedBytes bytes;
    bytes.PutSize(sorted.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        bytes.Put(static_cast<std::uint8_t>(data.fields[i].isWeight));
        for (const std::uint8_t byte : digests[i]) bytes.Put(byte);
    }
    data.hash = HexOf(bytes.Take());
    return data;
}

}  // namespace tarn
