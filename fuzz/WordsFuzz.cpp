// Any text is either a formula or an input error, and either a condition on the records of a table or one.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/InputError.h"
#include "host/table/TableLoader.h"
#include "host/words/Condition.h"
#include "host/words/FieldNames.h"
#include "host/words/Formula.h"

namespace {

const tarn::Table& Records() {
    static const tarn::Table table = [] {
        tarn::ByteSource source = tarn::ByteSource::FromMemory(
            "data.csv", "age,arm,dose,ok,two words\n30,low,1,true,1\n41,low,,false,2\n,high,2,true,3\n50,,3,false,4\n");
        return tarn::LoadTable(source, {}, {});
    }();
    return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        tarn::ParseFormula(text);
    } catch (const tarn::InputError&) {
        // The other good end.
    }
    try {
        const tarn::Condition condition(text);
        tarn::FieldNames names(Records());
        for (const std::size_t record : condition.RecordsOf(Records(), names)) {
            if (record >= Records().RowCount()) abort();
        }
    } catch (const tarn::InputError&) {
        // The other good end.
    }
    return 0;
}
