#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/table/TableShape.h"

namespace tarn {

/// What somebody says of the text of a table; the rest is recognised.
struct ToldShape {
    std::optional<char> delimiter;
    std::optional<char> decimal;
    /// Whether what can be read as a table of comma-separated values is left as it stands, its texts as texts.
    bool keepsPlainTables = false;
    /// Texts that mark a missing cell.
    std::vector<std::string> missingTexts;
};

/// How a table is to be read, and what is unusual in that, in a few words each; nothing for a plain table.
struct Recognition {
    TableShape shape;
    std::vector<std::string> remarks;
    /// Whether the header has more than one cell.
    bool hasSeveralNames = false;
};

/// As many rows are looked at.
inline constexpr std::size_t kSampleRows = 200;

/// Recognises a table from its first rows: the delimiter, how numbers are written, lines above and rows below the
/// header, cells without a name. `sample` is the beginning of the table in UTF-8; `isWhole`: all of it.
///
/// It never guesses where a plain reading fits: a table with as many commas in each row is one of commas, and a number
/// is plain where all numbers of the table can be.
Recognition Recognise(std::string_view sample, bool isWhole, const ToldShape& told);

/// Whether blanks stand between the cells of a table, for which `sample` has tabs: as many cells in each row, one
/// more than in the header at most, and numbers in one column at least. Of two columns the first one has to be numbers
/// or in quotes, too, since names often consist of two words.
bool HasBlanksBetweenCells(std::string_view sample, bool isWhole, const ToldShape& told);

}  // namespace tarn
