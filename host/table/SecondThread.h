#pragma once

#include <functional>
#include <future>
#include <semaphore>
#include <system_error>
#include <thread>
#include <utility>

namespace tarn {

/// A thread that waits for jobs and does them one after another, so that many short ones don't each pay for a new
/// thread. It is started with the first job, and its end waits for the last one.
class SecondThread {
 public:
    /// With a budget of one thread, the caller's own, every job is left to it.
    explicit SecondThread(unsigned budget) : isWanted_(budget != 1) {}
    SecondThread(const SecondThread&) = delete;
    SecondThread& operator=(const SecondThread&) = delete;
    ~SecondThread() { hasJob_.release(); }

    /// Starts a job. The future of the one before has to be ready. What the job throws comes out of its future. No
    /// future where there is no second thread to be had: the job is then not done.
    [[nodiscard]] std::future<void> Start(std::function<void()> job) {
        if (!isWanted_) return {};
        if (!thread_.joinable()) {
            try {
                thread_ = std::jthread([this] { DoJobs(); });
            } catch (const std::system_error&) {
                isWanted_ = false;
                return {};
            }
        }
        job_ = std::packaged_task<void()>(std::move(job));
        std::future<void> done = job_.get_future();
        hasJob_.release();
        return done;
    }

 private:
    void DoJobs() {
        for (;;) {
            hasJob_.acquire();
            if (!job_.valid()) return;
            // Taken over first: as soon as it is done, the next one may be put into its place.
            std::packaged_task<void()> job = std::move(job_);
            job();
        }
    }

    bool isWanted_;
    std::counting_semaphore<2> hasJob_{0};  // the job, and at the end that there is none
    std::packaged_task<void()> job_;
    std::jthread thread_;  // the last member: its end, which waits, needs the others
};

}  // namespace tarn
