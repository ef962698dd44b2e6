#include "apps/tarn/VersionText.h"

#include "apps/tarn/CommandEnvironment.h"
#include "host/engine/EmbeddedHost.h"
#include "host/engine/EngineLibrary.h"

namespace tarn {

std::string VersionText() {
    return "tarn " TARN_VERSION "\n" + ModuleInformation(EngineLibrary(LibraryFolders()));
}

}  // namespace tarn
