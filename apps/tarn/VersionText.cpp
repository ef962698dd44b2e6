#include "apps/tarn/VersionText.h"

#include "host/EmbeddedHost.h"
#include "host/EngineLibrary.h"

namespace tarn {

std::string VersionText() {
    return "tarn " TARN_VERSION "\n" + ModuleInformation(EngineLibrary());
}

}  // namespace tarn
