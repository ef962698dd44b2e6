#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/ByteSource.h"
#include "host/table/Encoding.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/Table.h"
#include "host/table/TableLoader.h"

namespace tarn {

/// What a user says of the text of a table. What is left open is recognised.
struct ReadingOptions {
    std::optional<char> delimiter;
    std::optional<char> decimal;
    std::optional<Encoding> encoding;
    /// The texts of a missing cell; one without any text is missing in any case.
    std::optional<std::vector<std::string>> missingTexts;
    /// Whether what can be read as a plain table is read as one, and nothing but what its descriptor says is missing,
    /// so that a document made of it stays what it was. Otherwise a table is read as a person would.
    bool keepsPlainTables = false;
};

/// Reads a table from whatever holds one: compressed or not, in the encoding that it tells or is told, with the shape
/// that is recognised. What is unusual becomes a note of the table. `load` says the rest; its shape and missing texts
/// are set here.
///
/// Throws what `LoadTable` throws, and an `InputError` for an input that is no table of text.
Table ReadTable(ByteSource source, const TableDescriptor& descriptor, LoadOptions load, const ReadingOptions& reading);

/// The texts that mark a missing cell where nobody says which.
const std::vector<std::string>& UsualMissingTexts();
/// Further ones, which are words like any other in a field that holds words.
const std::vector<std::string>& MissingTextsAmongNumbers();

}  // namespace tarn
