#pragma once

#include <string>
#include <vector>

#include "host/report/MessageCatalogue.h"
#include "host/report/PartsReport.h"
#include "host/report/ResultReading.h"

namespace tarn {

/// How a result is shown.
enum class ReportFormat { kText, kJson, kCsv, kXml, kMarkdown, kLatex, kTypst, kApa, kWorkbook, kHtml };

/// How a result is wanted.
struct Wanted {
    ReportFormat format = ReportFormat::kText;
    bool details = false;  ///< of the text: all that there is of each test
};

/// The names of the formats as a user types them, in the order of the enumeration.
const std::vector<std::string>& FormatNames();

/// The sentences in the language of the user: TARN_LANGUAGE, else that of the locale; English where there is none.
/// A language is a file in the folder that TARN_MESSAGES names or in the folder "messages" beside the program.
const MessageCatalogue& Texts();

/// Reads a stored result document in the language of the user; its text is used up by it. `name` stands for the
/// document in an `InputError`, which is thrown if it is no result document.
ResultReading ReadDocument(std::string document, const std::string& name);

/// Reads the document of a run that computed in that mode.
ResultReading ReadDocument(std::string document, ArithmeticMode arithmetic);

/// A result in a format, with notes on the whole run; the text one as the terminal of standard output can show it, the
/// page without plots. Not for `kXml`, which is the document itself.
std::string Present(const ResultReading& result, const Wanted& wanted, const std::vector<std::string>& notes);

/// The parts of a split analysis in a format, but for `kXml` and `kHtml`, with notes on all of them.
std::string PresentParts(const std::vector<ResultPart>& parts, const Wanted& wanted,
                         const std::vector<std::string>& notes);

/// The short table of a result.
std::string PresentShortly(const ResultReading& result);

}  // namespace tarn
