#include "apps/tarn/Interrupt.h"

#include <csignal>

namespace tarn {

namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

Interrupt::Interrupt() {
    interrupted = 0;
    previousHandler_ = std::signal(SIGINT, [](int) { interrupted = 1; });
}

Interrupt::~Interrupt() { std::signal(SIGINT, previousHandler_); }

bool Interrupt::IsCancelled() { return interrupted != 0; }

}  // namespace tarn
