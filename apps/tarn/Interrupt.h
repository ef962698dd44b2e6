#pragma once

#include <csignal>
#include <semaphore>
#include <thread>

namespace tarn {

/// Answers whether the user pressed Ctrl-C. While one lives, the first signal no longer ends the process by itself: the
/// run is given a moment to end in its own time, and where it is in the middle of something longer, the process ends
/// there, with the same words and the same status. Either way nothing is left half written. A second signal ends the
/// process at once. One at a time.
class Interrupt {
 public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// May be called from any thread.
    bool IsAsked() const;

 private:
    void Guard();

    struct sigaction previous_;
    std::binary_semaphore isOver_{0};
    std::thread guard_;  // the last member: it uses the others
};

}  // namespace tarn
