#include "apps/tarn/Interrupt.h"

#include <csignal>

namespace tarn {

namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

Interrupt::Interrupt() {
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { interrupted = 1; };
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    sigaction(SIGINT, &action, &previous_);
}

Interrupt::~Interrupt() { sigaction(SIGINT, &previous_, nullptr); }

bool Interrupt::IsCancelled() { return interrupted != 0; }

}  // namespace tarn
