#include "apps/tarn/ShowCommand.h"

#include "host/ByteSource.h"

namespace tarn {

ExitStatus Show(const std::string& path, ReportFormat format) {
    ByteSource source(path);
    PrintResult(Present(source.ReadAll(), format, source.Name()));
    return ExitStatus::kDone;
}

}  // namespace tarn
