// Any bytes are either a result document, which can then be shown in every format, or an input error. A workbook, which
// is made by a library through a file, is left out.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "host/InputError.h"
#include "host/report/ApaReport.h"
#include "host/report/CsvReport.h"
#include "host/report/HtmlReport.h"
#include "host/report/JsonReport.h"
#include "host/report/Markup.h"
#include "host/report/MarkupReport.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/ReadableReport.h"
#include "host/report/ResultPage.h"
#include "host/report/ResultReading.h"
#include "host/report/TextReport.h"

namespace {

void ShowPages(const tarn::ResultPage& page) {
    tarn::ReadableReport(page, {});
    tarn::MarkupReport(page, tarn::MarkdownMarkup());
    tarn::MarkupReport(page, tarn::LatexMarkup());
    tarn::MarkupReport(page, tarn::TypstMarkup());
    tarn::ApaReport(page);
    for (const tarn::TestPage& test : page.tests) tarn::HtmlArticle(test, std::nullopt, "test");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tarn::MessageCatalogue& texts = tarn::MessageCatalogue::English();
    try {
        const tarn::ResultReading result = tarn::ReadAll(
            tarn::ReadResult(std::string(reinterpret_cast<const char*>(data), size), "result.xml"), texts);
        tarn::TextReport(result, texts, {});
        tarn::JsonReport(result, texts);
        tarn::CsvReport(result, texts);
        ShowPages(tarn::PageOf(result, texts));
    } catch (const tarn::InputError&) {
        // The other good end.
    }
    return 0;
}
