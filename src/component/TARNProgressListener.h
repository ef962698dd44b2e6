#pragma once

#include "platform/common/Progress.h"

class QKPeer;

/// Hands the engine's progress on to the host of a component.
class TARNProgressListener : public ProgressListener {
 public:
    /// Borrows the component, which owns it.
    explicit TARNProgressListener(QKPeer& component) : builder(&component) {}

    /// Throws std::bad_cast for a report that is not the engine's own.
    void OnProgress(ProgressReport& report) override;

 private:
    QKPeer* builder;
};
