#include "apps/tarn/Interrupt.h"

#include <semaphore.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>

#include "apps/tarn/Command.h"
#include "apps/tarn/ProgressBar.h"
#include "host/WholeFile.h"

namespace tarn {

namespace {

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler can't wait for a lock");
std::atomic<bool> isAsked = false;

/// Wakes the guard; of all ways to wake a thread this one alone is open to a signal handler.
sem_t wake;

/// How long a run may take to end by itself. Most do within a few milliseconds.
constexpr std::chrono::milliseconds kGrace(10);

}  // namespace

Interrupt::Interrupt() : previous_() {
    isAsked = false;
    sem_init(&wake, 0, 0);
    try {
        guard_ = std::thread([this] { Guard(); });
    } catch (const std::system_error&) {
        // There is no other thread to be had: the run ends when it next asks.
    }
    struct sigaction action {};
    action.sa_handler = [](int) {
        const int error = errno;
        isAsked = true;
        sem_post(&wake);
        errno = error;
    };
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    sigaction(SIGINT, &action, &previous_);
}

Interrupt::~Interrupt() {
    sigaction(SIGINT, &previous_, nullptr);
    isOver_.release();
    sem_post(&wake);
    if (guard_.joinable()) guard_.join();
    sem_destroy(&wake);
}

void Interrupt::Guard() {
    while (sem_wait(&wake) != 0) {
    }
    if (isOver_.try_acquire_for(kGrace)) return;
    AbandonUnfinishedFile();
    const std::string words = ProgressBar::Erasure() + "tarn: " + kCancelledRun + "\n";
    // Straight to the descriptor: another thread may be at the stream.
    static_cast<void>(!write(STDERR_FILENO, words.data(), words.size()));
    _exit(static_cast<int>(ExitStatus::kRunFailed));
}

bool Interrupt::IsAsked() const {
    return isAsked.load(std::memory_order_relaxed);
}

}  // namespace tarn
