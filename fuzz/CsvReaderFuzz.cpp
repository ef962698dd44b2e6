// Any bytes are either a table or an input error, and the size of the blocks never shows.
//
// The first byte chooses how the rest is read: the size of the blocks, and whether a table is made of it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "host/table/CsvReader.h"
#include "host/table/TableLoader.h"

namespace {

using Row = std::vector<std::string>;

// The rows, and at the end the error that ended them as a row of its own.
std::vector<Row> ReadRows(const std::string& text, std::size_t blockSize) {
    tarn::ByteSource source = tarn::ByteSource::FromMemory("data.csv", text);
    std::vector<Row> rows;
    try {
        tarn::CsvReader reader(source, blockSize);
        while (reader.Next()) {
            rows.emplace_back(reader.Cells().begin(), reader.Cells().end());
            rows.back().push_back(std::to_string(reader.Line()));
        }
    } catch (const tarn::InputError& error) {
        rows.push_back({error.what()});
    }
    return rows;
}

void LoadTable(const std::string& text, std::size_t blockSize, unsigned threads) {
    tarn::ByteSource source = tarn::ByteSource::FromMemory("data.csv", text);
    tarn::LoadOptions options;
    options.blockSize = blockSize;
    options.threads = threads;
    options.nominalByDefault = "x";
    try {
        const tarn::Table table = tarn::LoadTable(source, {}, options);
        for (std::size_t row = 0; row < table.RowCount(); ++row) {
            for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
                const tarn::Column& column = table.Columns()[i];
                if (!column.IsCategorical()) continue;
                const double cell = table.Cells(i)[row];
                if (!(cell >= tarn::kMissingCategory && cell < static_cast<double>(column.categories.size()))) abort();
            }
        }
    } catch (const tarn::InputError&) {
        // The other good end.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t blockSize = 1 + data[0] % 64;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (ReadRows(text, blockSize) != ReadRows(text, tarn::CsvReader::kDefaultBlockSize / 64)) abort();
    if (data[0] >= 128) LoadTable(text, blockSize, data[0] >= 192 ? 2 : 1);
    return 0;
}
