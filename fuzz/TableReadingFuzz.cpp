// Any bytes are either a table, whatever they are compressed by, written in and shaped like, or an input error, and
// neither threads nor the size of the blocks show.
//
// The first byte chooses what is told of the text and the size of the blocks.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/InputError.h"
#include "host/table/TableReading.h"

namespace {

/// What a reader sees of the table, or why it is none.
std::string OutcomeOf(const std::string& bytes, const tarn::ReadingOptions& reading, std::size_t blockSize) {
    tarn::LoadOptions load;
    load.blockSize = blockSize;
    load.threads = 1;
    try {
        const tarn::Table table = tarn::ReadTable(tarn::ByteSource::FromMemory("data.csv", bytes), {}, load, reading);
        std::string all;
        for (const std::string& note : table.Notes()) all += note + "\n";
        for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
            all += table.Columns()[i].name + "\n";
            for (const double cell : table.Cells(i)) all += std::to_string(cell) + "\n";
        }
        return all;
    } catch (const tarn::InputError& error) {
        return error.what();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    tarn::ReadingOptions reading;
    reading.keepsPlainTables = (data[0] & 1) != 0;
    if ((data[0] & 2) != 0) reading.decimal = ',';
    if ((data[0] & 4) != 0) reading.encoding = tarn::Encoding::kWindows1252;
    if ((data[0] & 8) != 0) reading.delimiter = ';';
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t blockSize = 1 + data[0] / 16;
    if (OutcomeOf(bytes, reading, blockSize) != OutcomeOf(bytes, reading, std::size_t{1} << 16)) abort();
    return 0;
}
