#include "python/src/InputColumn.h"

#include <cmath>
#include <unordered_set>
#include <utility>

#include "host/InputError.h"
#include "host/NumberText.h"
#include "python/src/ArrowValues.h"

namespace tarn {

namespace {

[[noreturn]] void Fail(const InputColumn& column, const std::string& what) {
    throw InputError("column " + Quoted(column.name) + ": " + what);
}

[[noreturn]] void FailAtRow(const InputColumn& column, const ColumnPiece& piece, std::size_t index,
                            const std::string& what) {
    throw InputError("column " + Quoted(column.name) + ", row " +
                     std::to_string(piece.before + static_cast<std::int64_t>(index)) + " counted from 0: " + what);
}

void ReadNumber(const InputColumn& column, double number, const ColumnReader& reader, CellCodes& codes, double& cell) {
    if (std::isinf(number)) Fail(column, "an infinite number; expected finite ones, or a null for a missing value");
    if (std::isnan(number)) {
        cell = kMissingNumber;
    } else {
        reader.ReadNumber(number, codes, cell);
    }
}

/// The entries of a dictionary as a column.
InputColumn EntriesOf(const InputColumn& column) {
    InputColumn entries = column;
    entries.codes.reset();
    return entries;
}

void ReadCodes(const InputColumn& column, const ColumnPiece& piece, const ColumnReader& reader, CellCodes& codes,
               std::span<double> cells) {
    const ArrowArray& dictionary = *piece.array->dictionary;
    const InputColumn entries = EntriesOf(column);
    const Presence isPresent(*piece.array);
    constexpr double kUnread = HUGE_VAL;
    // Entries that are nulls have nothing behind them, so that there may be any number, and all are alike.
    const bool areNulls = column.format.layout == ValueLayout::kNull;
    std::vector<double> cellOf(areNulls ? 1 : static_cast<std::size_t>(dictionary.length), kUnread);
    WithNumbers(*column.codes, *piece.array, [&](const auto& codeAt) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::int64_t at = piece.first + static_cast<std::int64_t>(i);
            const double code = isPresent(at) ? codeAt(at) : kMissingNumber;
            if (!isPresent(at) || (code < 0 && column.hasMissingCodes)) {
                cells[i] = kMissingNumber;
                continue;
            }
            if (code < 0 || code >= static_cast<double>(dictionary.length)) {
                FailAtRow(column, piece, i,
                          "the code " + ExactText(code) + ", and " + std::to_string(dictionary.length) +
                              " categories; expected a code for each of them, from 0");
            }
            double& cell = cellOf[areNulls ? 0 : static_cast<std::size_t>(code)];
            if (cell == kUnread) {
                const std::int64_t entry = dictionary.offset + static_cast<std::int64_t>(code);
                ReadPiece(entries, {&dictionary, entry, 1, 0}, reader, codes, {&cell, 1});
            }
            cells[i] = cell;
        }
    });
}

}  // namespace

void ReadPiece(const InputColumn& column, const ColumnPiece& piece, const ColumnReader& reader, CellCodes& codes,
               std::span<double> cells) {
    if (cells.empty()) return;
    if (column.codes) return ReadCodes(column, piece, reader, codes, cells);
    const Presence isPresent(*piece.array);
    const auto readAll = [&](auto readOne) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::int64_t at = piece.first + static_cast<std::int64_t>(i);
            if (isPresent(at)) {
                readOne(at, cells[i]);
            } else {
                cells[i] = kMissingNumber;
            }
        }
    };
    const bool isText = WithTexts(column.format, *piece.array, [&](const auto& textAt) {
        readAll([&](std::int64_t at, double& cell) { cell = reader.ReadText(textAt(at), codes.texts, codes.missing); });
    });
    const bool isNumber = !isText && WithNumbers(column.format, *piece.array, [&](const auto& numberAt) {
        readAll([&](std::int64_t at, double& cell) { ReadNumber(column, numberAt(at), reader, codes, cell); });
    });
    if (isText || isNumber) return;
    for (double& cell : cells) cell = kMissingNumber;
}

void AddEntries(const InputColumn& column, const ArrowArray& dictionary, std::vector<DescribedValue>& entries) {
    std::unordered_set<std::string> known;
    for (const DescribedValue& entry : entries) known.insert(entry.text);
    const Presence isPresent(dictionary);
    const auto add = [&](DescribedValue entry) {
        if (known.insert(entry.text).second) entries.push_back(std::move(entry));
    };
    const auto addAll = [&](auto entryAt) {
        for (std::int64_t at = dictionary.offset; at < dictionary.offset + dictionary.length; ++at) {
            if (isPresent(at)) add(entryAt(at));
        }
    };
    if (dictionary.length == 0) return;
    WithTexts(column.format, dictionary, [&](const auto& textAt) {
        addAll([&](std::int64_t at) { return DescribedValue{std::string(textAt(at)), {}, {}}; });
    });
    WithNumbers(column.format, dictionary, [&](const auto& numberAt) {
        addAll([&](std::int64_t at) {
            const double number = numberAt(at) + 0.0;  // -0 is the 0 that it equals
            return DescribedValue{ExactText(number), number, {}};
        });
    });
}

}  // namespace tarn
