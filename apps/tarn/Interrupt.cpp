#include "apps/tarn/Interrupt.h"

#include <atomic>

namespace tarn {

namespace {

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler can't wait for a lock");
std::atomic<bool> isAsked = false;

}  // namespace

Interrupt::Interrupt() : previous_() {
    isAsked = false;
    struct sigaction action {};
    action.sa_handler = [](int) { isAsked = true; };
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    sigaction(SIGINT, &action, &previous_);
}

Interrupt::~Interrupt() {
    sigaction(SIGINT, &previous_, nullptr);
}

bool Interrupt::IsAsked() const {
    return isAsked.load(std::memory_order_relaxed);
}

}  // namespace tarn
