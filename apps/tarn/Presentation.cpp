#include "apps/tarn/Presentation.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "apps/tarn/CommandEnvironment.h"
#include "host/analysis/Report.h"
#include "host/report/ApaReport.h"
#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/MarkupReport.h"
#include "host/report/ReadableReport.h"
#include "host/report/ResultPage.h"
#include "host/report/TextReport.h"
#include "host/report/WorkbookReport.h"

namespace tarn {

namespace {

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// The locale of messages, as the system's own programs look it up: "de_DE.UTF-8".
std::string MessageLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::string locale = Environment(name); !locale.empty()) return locale;
    }
    return "";
}

std::string Language() {
    const std::string chosen = Environment("TARN_LANGUAGE");
    const std::string locale = chosen.empty() ? MessageLocale() : chosen;
    const std::string language = locale.substr(0, locale.find_first_of("_.@"));
    const bool isName = language.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
    return isName && !language.empty() ? language : "en";
}

std::vector<std::string> MessageFolders() {
    std::vector<std::string> folders;
    if (const std::string folder = Environment("TARN_MESSAGES"); !folder.empty()) folders.push_back(folder);
    if (const std::string folder = ProgramFolder(); !folder.empty()) folders.push_back(folder + "/messages");
    return folders;
}

/// Characters in a line of the terminal: within what is good to read, and 80 for what is no terminal.
std::size_t WidthOfTerminal() {
    constexpr std::size_t kNarrowest = 60;
    constexpr std::size_t kWidest = 120;
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return TextStyle().width;
    return std::clamp(static_cast<std::size_t>(size.ws_col), kNarrowest, kWidest);
}

TextStyle StyleOfTerminal() {
    const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    const std::string locale = MessageLocale();
    const bool isUtf8 = locale.ends_with("UTF-8") || locale.ends_with("utf8");
    return {isTerminal && isUtf8, isTerminal && Environment("NO_COLOR").empty(), WidthOfTerminal()};
}

/// The page of a result whose table isn't there.
std::string PageWithoutPlots(const ResultReading& result, const std::vector<std::string>& notes) {
    AnalysisEnvironment environment;
    environment.texts = &Texts();
    ReportFacts facts;
    facts.program = "tarn " TARN_VERSION;
    facts.notes = notes;
    return HtmlOfResult({result, nullptr, AnalysisOptions(), environment}, facts);
}

/// A page, of a run or of parts, in a format that is made of pages.
template <typename Page>
std::string InFormat(const Page& page, ReportFormat format) {
    switch (format) {
        case ReportFormat::kMarkdown:
            return MarkupReport(page, MarkdownMarkup());
        case ReportFormat::kLatex:
            return MarkupReport(page, LatexMarkup());
        case ReportFormat::kTypst:
            return MarkupReport(page, TypstMarkup());
        case ReportFormat::kApa:
            return ApaReport(page);
        case ReportFormat::kWorkbook:
            return WorkbookReport(page);
        default:
            return ReadableReport(page, StyleOfTerminal());
    }
}

}  // namespace

const std::vector<std::string>& FormatNames() {
    static const std::vector<std::string> names{"text",  "json",  "csv", "xml",  "md",
                                                "latex", "typst", "apa", "xlsx", "html"};
    return names;
}

const MessageCatalogue& Texts() {
    static const MessageCatalogue texts = MessageCatalogue::OfLanguage(Language(), MessageFolders());
    return texts;
}

ResultReading ReadDocument(std::string document, const std::string& name) {
    return ReadAll(ReadResult(std::move(document), name), Texts());
}

ResultReading ReadDocument(std::string document, ArithmeticMode arithmetic) {
    ResultDocument result = ReadResult(std::move(document));
    result.arithmetic = arithmetic;
    return ReadAll(std::move(result), Texts());
}

std::string Present(const ResultReading& result, const Wanted& wanted, const std::vector<std::string>& notes) {
    switch (wanted.format) {
        case ReportFormat::kText:
            if (wanted.details) return TextReport(result, Texts(), StyleOfTerminal(), notes);
            return InFormat(PageOf(result, Texts(), notes), wanted.format);
        case ReportFormat::kJson:
            return JsonReport(result, Texts(), notes);
        case ReportFormat::kCsv:
            return CsvReport(result, Texts());
        case ReportFormat::kHtml:
            return PageWithoutPlots(result, notes);
        case ReportFormat::kXml:
            return "";
        default:
            return InFormat(PageOf(result, Texts(), notes), wanted.format);
    }
}

std::string PresentParts(const std::vector<ResultPart>& parts, const Wanted& wanted,
                         const std::vector<std::string>& notes) {
    switch (wanted.format) {
        case ReportFormat::kText:
            if (wanted.details) return PartsText(parts, Texts(), StyleOfTerminal(), notes);
            return InFormat(PageOf(parts, Texts(), notes), wanted.format);
        case ReportFormat::kJson:
            return PartsJson(parts, Texts(), notes);
        case ReportFormat::kCsv:
            return PartsCsv(parts, Texts());
        case ReportFormat::kHtml:
        case ReportFormat::kXml:
            return "";
        default:
            return InFormat(PageOf(parts, Texts(), notes), wanted.format);
    }
}

std::string PresentShortly(const ResultReading& result) {
    return ShortReport(result, Texts());
}

}  // namespace tarn
