#include "python/src/AttendedWork.h"

#include <chrono>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "machine/ExceptionStorage.h"

namespace tarn {

namespace nb = nanobind;

void AttendedWork::HearSignals() {
    const nb::gil_scoped_acquire locked;
    if (PyErr_CheckSignals() != 0) throw nb::python_error();
}

void AttendedWork::Report(double percent) {
    const auto whole = static_cast<int>(percent);
    const std::lock_guard lock(mutex_);
    if (whole <= percent_) return;
    percent_ = whole;
    if (!onProgress_.is_none()) news_.notify_one();
}

/// What the calling thread does when there are news, and some times a second without any.
void AttendedWork::Attend() {
    int reached = 0;
    {
        const std::lock_guard lock(mutex_);
        reached = percent_;
    }
    const nb::gil_scoped_acquire locked;
    try {
        if (interruption_) return;
        if (PyErr_CheckSignals() != 0) throw nb::python_error();
        if (reached == shownPercent_ || onProgress_.is_none()) return;
        shownPercent_ = reached;
        onProgress_(static_cast<double>(reached));
    } catch (...) {
        interruption_ = std::current_exception();
        isCancelled_ = true;
    }
}

void AttendedWork::Run(const std::function<void()>& work) {
    constexpr std::chrono::milliseconds kPause(10);
    std::exception_ptr failure;
    const std::exception_ptr lackOfMemory = std::make_exception_ptr(std::bad_alloc());
    const auto doIt = [&] {
        if (PreparesForExceptions()) {
            try {
                work();
            } catch (...) {
                failure = std::current_exception();
            }
        } else {
            failure = lackOfMemory;
        }
        const std::lock_guard lock(mutex_);
        isDone_ = true;
        news_.notify_one();
    };
    {
        const nb::gil_scoped_release unlocked;
        std::thread worker;
        try {
            worker = std::thread(doIt);
        } catch (const std::system_error&) {
            doIt();  // there is no thread to be had: the work can't be stopped
        }
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                const auto hasNews = [&] { return isDone_ || (percent_ != shownPercent_ && !onProgress_.is_none()); };
                news_.wait_for(lock, kPause, hasNews);
                if (isDone_) break;
            }
            Attend();
        }
        if (worker.joinable()) worker.join();
        Attend();
    }
    if (interruption_) std::rethrow_exception(interruption_);
    if (failure) std::rethrow_exception(failure);
}

}  // namespace tarn
