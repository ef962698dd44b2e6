// Any bytes are either a result document, which can then be shown in every format, or an input error.

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/InputError.h"
#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"
#include "host/report/TextReport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tarn::MessageCatalogue& texts = tarn::MessageCatalogue::English();
    try {
        const tarn::ResultReading result = tarn::ReadAll(
            tarn::ReadResult(std::string(reinterpret_cast<const char*>(data), size), "result.xml"), texts);
        tarn::TextReport(result, texts, {});
        tarn::JsonReport(result, texts);
        tarn::CsvReport(result, texts);
    } catch (const tarn::InputError&) {
        // The other good end.
    }
    return 0;
}
