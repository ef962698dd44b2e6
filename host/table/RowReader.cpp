#include "host/table/RowReader.h"

#include <unordered_map>
#include <utility>

#include "host/InputError.h"
#include "runtime/common/XmlCharacters.h"

namespace tarn {

RowReader::RowReader(ByteSource& source, std::size_t blockSize) : source_(source), csv_(source, blockSize) {
    ReadHeader();
}

RowReader::RowReader(ByteSource& source, std::vector<std::string> names, std::size_t firstLine)
    : source_(source), csv_(source, CsvReader::kDefaultBlockSize, firstLine), names_(std::move(names)) {}

void RowReader::ReadHeader() {
    bool hasEmptyLine = false;
    bool hasRow = csv_.Next();
    for (; hasRow && csv_.IsEmptyLine(); hasRow = csv_.Next()) hasEmptyLine = true;
    if (!hasRow) throw InputError(source_.Name() + ": no header; expected a row with the names of the fields");
    // An empty line is a row of a table with one column, and here it stands in the header's place.
    if (hasEmptyLine && Cells().size() == 1) {
        throw InputError(source_.Name() + ":1: an empty line; expected the name of the field");
    }
    std::unordered_map<std::string_view, std::size_t> columns;
    for (const std::string_view name : Cells()) {
        const std::size_t column = names_.size() + 1;
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
        names_.emplace_back(name);
    }
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
                     std::to_string(names_.size()) + " as in the header");
}

std::string RowReader::Position() const {
    return source_.Name() + ":" + std::to_string(Line()) + ": ";
}

}  // namespace tarn
