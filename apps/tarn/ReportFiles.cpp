#include "apps/tarn/ReportFiles.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <utility>

#include "apps/tarn/VersionText.h"
#include "host/FileHash.h"
#include "host/InputError.h"
#include "host/TextList.h"
#include "host/WholeFile.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr const char* kStandardInput = "-";

/// Now, or the moment that a build that can be repeated gives in SOURCE_DATE_EPOCH, in seconds since 1970.
std::string TimeText() {
    std::time_t moment = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    if (const char* const given = std::getenv("SOURCE_DATE_EPOCH"); given != nullptr && *given != '\0') {
        char* end = nullptr;
        const long long seconds = std::strtoll(given, &end, 10);
        if (*end == '\0') moment = static_cast<std::time_t>(seconds);
    }
    std::tm parts{};
    char text[64];
    if (gmtime_r(&moment, &parts) == nullptr) return "";
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &parts)};
}

/// An estimate that comes with another test, which can't be asked for by itself, is not what a user means to draw.
bool IsMeant(const ReportSource& source, std::size_t place) {
    const TestFacts* const facts = Tests::OfResult(source.result.tests[place].name);
    return facts == nullptr || !facts->userName.empty() || source.result.tests.size() == 1;
}

/// The plot of the one test of the analysis.
std::string OnePlot(const ReportSource& source) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < source.result.tests.size(); ++i) {
        if (IsMeant(source, i)) places.push_back(i);
    }
    if (places.size() != 1) {
        std::vector<std::string> names;
        constexpr std::size_t kMostNames = 3;
        for (const std::size_t i : places) {
            if (names.size() < kMostNames) {
                names.push_back(source.result.tests[i].title + " of " + JoinList(source.result.tests[i].fields));
            }
        }
        throw InputError("--plot: draws one test, and the analysis has " + std::to_string(places.size()) + ": " +
                         JoinList(names, "; ") + (places.size() > kMostNames ? "; ..." : "") +
                         "; expected one of them by its field and --tests, or --plot-dir FOLDER for all");
    }
    const std::optional<std::string> svg = SvgOfTest(source, places.front());
    if (!svg)
        throw InputError("--plot: " + source.result.tests[places.front()].title + " has nothing that could be drawn");
    return *svg;
}

void WritePlots(const std::string& folder, const ReportSource& source) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw InputError("--plot-dir: " + Quoted(folder) + " can't be made: " + error.message());
    for (std::size_t i = 0; i < source.result.tests.size(); ++i) {
        if (const auto svg = SvgOfTest(source, i)) {
            WriteWholeFile((std::filesystem::path(folder) / PlotFileName(source.result, i)).string(), *svg);
        }
    }
}

}  // namespace

bool WantsReport(const OutputOptions& output) {
    return output.format == ReportFormat::kHtml || !output.reportPath.empty() || !output.plotPath.empty() ||
           !output.plotFolder.empty();
}

bool ShowsRecord(const OutputOptions& output, ReportFormat format) {
    return WantsReport(output) || format == ReportFormat::kJson || format == ReportFormat::kWorkbook ||
           (format == ReportFormat::kText && output.details && !output.quiet);
}

ReportFacts FactsOf(const AnalyzeOptions& options, std::vector<std::string> notes) {
    ReportFacts facts;
    const bool isFile = options.table.dataPath != kStandardInput;
    facts.data = isFile ? options.table.dataPath : "standard input";
    if (isFile) facts.dataHash = "SHA-256 " + HashOfFile(options.table.dataPath);
    facts.request = WordsOf(options.study);
    facts.time = TimeText();
    facts.program = "tarn " TARN_VERSION;
    facts.notes = std::move(notes);
    return facts;
}

void WriteReports(const OutputOptions& output, const ReportSource& source, const ReportFacts& facts) {
    const std::string plot = output.plotPath.empty() ? "" : OnePlot(source);
    if (!output.reportPath.empty()) WriteWholeFile(output.reportPath, HtmlOfResult(source, facts));
    if (!output.plotPath.empty()) WriteWholeFile(output.plotPath, plot);
    if (!output.plotFolder.empty()) WritePlots(output.plotFolder, source);
}

void CheckReportOfParts(const OutputOptions& output) {
    for (const auto& [name, path] : {std::pair("--plot", &output.plotPath), {"--plot-dir", &output.plotFolder}}) {
        if (path->empty()) continue;
        throw InputError(std::string(name) +
                         ": takes no parts; expected --report FILE, which has the plots of all, or "
                         "--where in place of --split");
    }
}

}  // namespace tarn
