#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/table/Table.h"
#include "machine/WorkShare.h"

namespace tarn {

// What an analysis saw of a table, as a hash that depends on the values alone: not on the format of the file, its
// compression, the order of its columns or the columns that nobody asked for. docs/record.md has the bytes.

/// What of a field enters its hash.
enum class HashedKind {
    kNumbers,
    kTexts,
    kMissing,  ///< which cells are missing alone, for a field whose values nobody reads
};

/// The name of a kind in the outputs: "numbers", "texts", "missing".
std::string_view NameOf(HashedKind kind);

/// A column of a table that is to be hashed.
struct HashedColumn {
    std::size_t column = 0;
    bool areValuesRead = true;  ///< or only which cells are missing
};

struct HashedField {
    std::string name;
    HashedKind kind = HashedKind::kNumbers;
    FieldLevel level = FieldLevel::kContinuous;
    bool isWeight = false;
    std::size_t missing = 0;  ///< cells without a value
    std::string hash;         ///< SHA-256 in hexadecimal digits
};

struct DataHash {
    std::string hash;                 ///< of all fields together
    std::vector<HashedField> fields;  ///< in the order of the bytes of their names
};

/// Hashes columns of a table, each of them once, several at a time.
DataHash HashOf(const Table& table, std::span<const HashedColumn> columns, const WorkShare& work);

}  // namespace tarn
