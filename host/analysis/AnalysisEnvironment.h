#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "host/report/MessageCatalogue.h"

namespace tarn {

/// What an analysis needs of the process that it runs in. Nothing of it is looked up by the host itself, so that a
/// command and a language of scripts get the same from one door.
struct AnalysisEnvironment {
    /// Who asks for the run, as the document names it.
    std::string applicationName = "tarn";
    std::string applicationVersion;
    /// Where the engine's library is looked for, before the places of the system.
    std::vector<std::string> libraryFolders;
    /// The language of what a user reads. Borrowed.
    const MessageCatalogue* texts = &MessageCatalogue::English();
    /// How many threads may work at a time, the calling one among them; 0: as many as the machine has. One that can't
    /// be had is done without. Results don't depend on it.
    unsigned threads = 0;
    /// How many bytes a run may take, as far as that can be told before it begins; 0: as many as it takes. One that may
    /// take more is refused.
    std::size_t memory = 0;
    /// Called with 0 to 100, on the thread of the run. May be empty.
    std::function<void(double percent)> onProgress;
    /// Asked some times a second, maybe from another thread; true stops the run. May be empty.
    std::function<bool()> isCancelled;
};

}  // namespace tarn
