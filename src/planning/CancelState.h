#pragma once

#include <atomic>

#include "platform/common/Progress.h"

/// The cancel flag of a run together with the query that may set it. Borrows both; the query may be null. The flag
/// may be set from another thread; it stays set.
class CancelState {
 public:
    CancelState(QKQueryCancel* queryCancel, std::atomic<bool>& cancelled)
        : queryCancel_(queryCancel), cancelled_(&cancelled) {}

    /// Asks the query, unless the run is cancelled already, and answers whether it is.
    bool Poll() const {
        if (!IsCancelled() && queryCancel_ != nullptr && queryCancel_->IsCancelled()) {
            cancelled_->store(true, std::memory_order_relaxed);
        }
        return IsCancelled();
    }

 private:
    bool IsCancelled() const { return cancelled_->load(std::memory_order_relaxed); }

    QKQueryCancel* queryCancel_;
    std::atomic<bool>* cancelled_;
};
