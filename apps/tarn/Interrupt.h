#pragma once

#include <csignal>

namespace tarn {

/// Answers whether the user pressed Ctrl-C. While one lives, the first signal no longer ends the process by itself,
/// so that a run can end in its own time and leave nothing half written; a second one does. One at a time.
class Interrupt {
 public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// May be called from any thread.
    bool IsAsked() const;

 private:
    struct sigaction previous_;
};

}  // namespace tarn
