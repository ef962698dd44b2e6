#pragma once

#include <nanobind/nanobind.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>

namespace tarn {

/// Work on a thread of its own while the one that Python called on stays open to Ctrl-C and calls what wants to see the
/// progress. Python hears signals, and programs expect their functions to be called, on that thread alone.
class AttendedWork {
 public:
    /// `onProgress`: a function of the percent that is done, or None.
    explicit AttendedWork(nanobind::object onProgress) : onProgress_(std::move(onProgress)) {}

    /// Does the work and returns when it is done. Called with the interpreter locked, which is free meanwhile. Throws
    /// what the work throws; and what a signal or the function of the progress raises, which cancels the work.
    void Run(const std::function<void()>& work);

    /// For the work: whether it is to end, and how far it is.
    bool IsCancelled() const { return isCancelled_.load(std::memory_order_relaxed); }
    void Report(double percent);

    /// Raises what a signal asks for. Called with the interpreter free.
    static void HearSignals();

 private:
    void Attend();

    nanobind::object onProgress_;
    std::atomic<bool> isCancelled_ = false;
    std::exception_ptr interruption_;
    std::mutex mutex_;
    std::condition_variable news_;
    bool isDone_ = false;
    int percent_ = 0;       // reached
    int shownPercent_ = 0;  // on the calling thread alone
};

}  // namespace tarn
