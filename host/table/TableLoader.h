#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/ByteSource.h"
#include "host/table/CsvReader.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/Table.h"
#include "host/table/TableShape.h"

namespace tarn {

/// The categories of a field from the lowest to the highest, as a user gave them: by value or by label.
struct FieldOrder {
    std::string field;
    std::vector<std::string> categories;
};

/// What a request says about the reading of a table. The levels and the weight beat those of the descriptor.
struct LoadOptions {
    /// Whether the user-missing values of the fields count as missing; otherwise they are values like any other.
    bool excludeUserMissing = false;
    std::vector<std::string> nominal;
    std::vector<std::string> ordinal;
    std::vector<std::string> continuous;
    /// Makes these fields ordinal. All categories that occur have to be named.
    std::vector<FieldOrder> orders;
    /// The field with the frequency weights, which is read as continuous whatever its level.
    std::optional<std::string> weightField;
    /// A field that is nominal unless its level is given elsewhere. It may be missing from the table.
    std::optional<std::string> nominalByDefault;
    /// Whether somebody will read the numbers of the field of that name at that place, from 0; empty: those of all. Of
    /// another continuous field no more need be kept than which cells are missing, and 0 may stand in the others. All
    /// else is the same, mistakes included.
    std::function<bool(const std::string& field, std::size_t place)> isRead;
    /// How many threads may work at a time, the calling one among them; 0: as many as the machine has.
    unsigned threads = 0;
    /// How many bytes the table may take; 0: as many as it takes. An input that makes more of it may have no end.
    std::size_t memory = 0;
    /// Bytes that are read at a time.
    std::size_t blockSize = CsvReader::kDefaultBlockSize;
    /// How the text is to be read.
    TableShape shape;
    /// The texts of a missing cell in place of those that the descriptor names, and further ones, which are words like
    /// any other in a column that holds words.
    std::optional<std::vector<std::string>> missingTexts;
    std::vector<std::string> missingAmongNumbers;
    /// Asked every millisecond or so, on the thread that reads; true ends the reading. May be empty.
    std::function<bool()> isCancelled;
};

/// The reading of a table was ended by `LoadOptions::isCancelled`.
class LoadCancelled : public std::runtime_error {
 public:
    LoadCancelled() : std::runtime_error("the run was cancelled while its table was read") {}
};

/// Reads a table of delimited values, with a second pass over `source` if a column shows late to hold texts.
///
/// Categories stand in the order of the descriptor, followed by the other values of the column in ascending order.
/// Throws an `InputError` for anything that makes the table unreadable, and for names that it has no field for; a
/// `LoadCancelled` where it was told to end. The table doesn't depend on how many threads read it.
Table LoadTable(ByteSource& source, const TableDescriptor& descriptor, const LoadOptions& options);

}  // namespace tarn
