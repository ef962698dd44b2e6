#include "host/table/RowReader.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "host/InputError.h"
#include "host/table/CellValue.h"
#include "runtime/common/XmlCharacters.h"

namespace tarn {

RowReader::RowReader(ByteSource& source, std::size_t blockSize, const TableShape& shape)
    : source_(source), shape_(shape), csv_(source, blockSize, 1, shape.delimiter) {
    csv_.SkipLines(shape.linesAbove);
    ReadHeader();
    for (std::size_t i = 0; i < shape.rowsBelow && csv_.Next();) i += csv_.IsEmptyLine() ? 0 : 1;
}

RowReader::RowReader(ByteSource& source, std::vector<std::string> names, const TableShape& shape, std::string header,
                     std::size_t firstLine)
    : source_(source),
      shape_(shape),
      csv_(source, CsvReader::kDefaultBlockSize, firstLine, shape.delimiter),
      names_(std::move(names)),
      header_(std::move(header)) {}

void RowReader::ReadHeader() {
    bool hasEmptyLine = false;
    bool hasRow = csv_.Next();
    for (; hasRow && csv_.IsEmptyLine(); hasRow = csv_.Next()) hasEmptyLine = true;
    if (!hasRow) throw InputError(source_.Name() + ": no header; expected a row with the names of the fields");
    // An empty line is a row of a table with one column, and here it stands in the header's place.
    if (hasEmptyLine && Cells().size() == 1) {
        throw InputError(source_.Name() + ":1: an empty line; expected the name of the field");
    }
    for (const std::string_view cell : Cells()) names_.emplace_back(shape_.trimsBlanks ? TrimBlanks(cell) : cell);
    if (shape_.lacksFirstName) names_.insert(names_.begin(), shape_.firstName);
    if (!shape_.firstName.empty()) names_.front() = shape_.firstName;
    if (shape_.width != 0) names_.resize(shape_.width);
    CheckNames();
    const std::string_view header = csv_.RawRow();
    const bool isPlainLine =
        header.find('\n') == std::string_view::npos && header.find("\"\"") == std::string_view::npos;
    if (shape_.skipsRepeatedHeaders && names_.size() > 1 && isPlainLine) header_ = header;
}

void RowReader::CheckNames() const {
    std::unordered_map<std::string_view, std::size_t> columns;
    const std::size_t count = names_.size() - std::min(shape_.emptyAtEnd, names_.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::string& name = names_[i];
        const std::size_t column = i + 1;
        const std::size_t first = columns.emplace(name, column).first->second;
        const auto fail = [&](const std::string& what) {
            throw InputError(Position() + "column " + std::to_string(column) + ": " + what);
        };
        if (name.empty()) fail("an empty name; expected the name of the field");
        if (WithXmlCharactersOnly(name) != name) {
            fail("name " + Quoted(name) + " with a control character; expected a name that a document can hold");
        }
        if (first != column) {
            fail("name " + Quoted(name) + " as in column " + std::to_string(first) + "; expected unique names");
        }
    }
}

bool RowReader::IsPassedOver() const {
    if (names_.size() <= 1) return false;
    return csv_.IsEmptyLine() || (!header_.empty() && csv_.RawRow() == header_);
}

bool RowReader::Next() {
    do {
        if (!csv_.Next()) return false;
    } while (IsPassedOver());
    CheckWidth();
    return true;
}

void RowReader::CheckWidth() const {
    const std::size_t width = Cells().size();
    if (width == names_.size()) return;
    throw InputError(Position() + std::to_string(width) + (width == 1 ? " cell" : " cells") + "; expected " +
                     std::to_string(names_.size()) + " as in the header" + LikelyCause());
}

/// What such a row most often comes from.
std::string RowReader::LikelyCause() const {
    if (Cells().size() > names_.size()) {
        return " (" + std::string(DelimiterName(shape_.delimiter)) + " inside a " +
               (shape_.delimiter == ',' ? "number or a text" : "text") + " without quotes?)";
    }
    return Cells().size() == 1 ? " (a line that is no row of the table, or a line break inside a text without quotes?)"
                               : " (a line break inside a text without quotes?)";
}

std::string RowReader::Position() const {
    return source_.Name() + ":" + std::to_string(Line()) + ": ";
}

}  // namespace tarn
