#pragma once

#include <string>
#include <vector>

namespace tarn {

/// What a run left, whichever way it went to the engine.
struct RunOutcome {
    /// Whether there is a document.
    bool succeeded = false;
    std::string document;
    /// What a user is told beside the result, a line each: why the run failed, or warnings of one that did not.
    std::vector<std::string> remarks;
};

}  // namespace tarn
