#pragma once

#include <vector>

#include "platform/common/QKStatus.h"

/// The warnings of the process: a run empties its own, the factory hands out a copy, and nothing adds to them. Made at
/// first use and never destroyed, so that it outlives whatever a host keeps.
///
/// A run is one thread's work, so each thread has its warnings: runs at the same time neither see nor clear those of
/// one another.
class TARNWarning {
 public:
    static TARNWarning& Instance();
    virtual ~TARNWarning() = default;

    void Clear() { OfThisThread().clear(); }
    const std::vector<QKStatus>& Get() const { return OfThisThread(); }

 private:
    TARNWarning() = default;
    static std::vector<QKStatus>& OfThisThread();
};
