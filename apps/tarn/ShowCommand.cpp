#include "apps/tarn/ShowCommand.h"

#include <string>
#include <utility>

#include "host/ByteSource.h"

namespace tarn {

ExitStatus Show(const std::string& path, const OutputOptions& output) {
    CheckOutput(output);
    const ReportFormat format = output.format.value_or(ReportFormat::kText);
    ByteSource source(path);
    std::string document = source.ReadAll();
    const std::string shown = format == ReportFormat::kXml ? document : std::string();
    const ResultReading result = ReadDocument(std::move(document), source.Name());  // throws for what is none
    PrintResult(format == ReportFormat::kXml ? shown : Present(result, {format, output.details}, {}));
    return ExitStatus::kDone;
}

}  // namespace tarn
