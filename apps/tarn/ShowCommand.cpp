#include "apps/tarn/ShowCommand.h"

#include <cstddef>
#include <string>
#include <utility>

#include "host/ByteSource.h"

namespace tarn {

namespace {

/// The document of a hundred thousand tests with their histograms has about 1 GiB.
constexpr std::size_t kLargestDocument = std::size_t{4} << 30;

}  // namespace

ExitStatus Show(const std::string& path, const OutputOptions& output) {
    CheckOutput(output);
    const ReportFormat format = output.format.value_or(ReportFormat::kText);
    ByteSource source(path);
    std::string document = source.ReadText(kLargestDocument);
    const std::string shown = format == ReportFormat::kXml ? document : std::string();
    const ResultReading result = ReadDocument(std::move(document), source.Name());  // throws for what is none
    PrintResult(format == ReportFormat::kXml ? shown : Present(result, {format, output.details}, {}));
    return ExitStatus::kDone;
}

}  // namespace tarn
