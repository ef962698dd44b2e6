#pragma once

#include <vector>

#include "platform/common/QKStatus.h"

/// The warnings of the process: a run empties them, the factory hands out a copy, and nothing adds to them. Made at
/// first use and never destroyed, so that it outlives whatever a host keeps.
class TARNWarning {
 public:
    static TARNWarning& Instance();
    virtual ~TARNWarning() = default;

    void Clear() { warnings.clear(); }
    const std::vector<QKStatus>& Get() const { return warnings; }

 private:
    TARNWarning() = default;
    std::vector<QKStatus> warnings;
};
