#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "machine/ExceptionStorage.h"

/// The one loop that shares work among threads: numbered jobs, each done once, within a thread budget and with a
/// question whether to stop. What comes out must not depend on the number of threads: a job writes to a place of its
/// own, and whoever puts the results together does so in the order of the jobs.
///
/// This header includes nothing of the project beside its neighbour and is open to all floors.
class WorkShare {
 public:
    /// `budget`: how many threads may work at a time, the calling one among them; 0: as many as the machine has.
    /// `stop`: true ends the work. It is asked on the thread that made this object alone; may be empty.
    explicit WorkShare(unsigned budget = 1, std::function<bool()> stop = {})
        : threads_(budget > 0 ? std::min(budget, Most()) : OfMachine()), stop_(std::move(stop)) {}
    WorkShare(const WorkShare&) = delete;
    WorkShare& operator=(const WorkShare&) = delete;

    /// A budget beyond what could be of use is cut: thousands of threads would take the memory and the processes of
    /// everybody else on the machine.
    unsigned Threads() const { return threads_; }
    /// Whether the calling thread is the one that made this object.
    bool IsOwner() const { return std::this_thread::get_id() == owner_; }

    /// Whether the work is to end. For a long job to ask, on any thread, every millisecond or so; once true it stays
    /// so.
    bool IsStopped() const {
        if (IsOwner() && stop_ && !stopped_.load(std::memory_order_relaxed) && stop_()) {
            stopped_.store(true, std::memory_order_relaxed);
        }
        return stopped_.load(std::memory_order_relaxed);
    }

    /// Does the jobs 0 .. count-1, which threads take in that order, and returns when all of them are done. False where
    /// the work was stopped: jobs that had not begun are left out then. An exception of a job ends the work, too, and
    /// comes out here; of several, that of the first job. Where there are no more threads to be had, fewer do the work.
    ///
    /// Called on the thread that made this object, or within a job, whose thread then does all of them.
    bool Run(std::size_t count, const std::function<void(std::size_t)>& job) const {
        if (!IsOwner() || threads_ == 1 || count < 2 || isBusy_) return RunAlone(count, job);
        Round round(*this, count, job);
        isBusy_ = true;
        std::vector<std::thread> helpers;
        try {
            const std::size_t wanted = std::min<std::size_t>(threads_, count) - 1;
            helpers.reserve(wanted);
            while (helpers.size() < wanted) helpers.emplace_back([&round] { round.Help(); });
        } catch (const std::exception&) {
            // No thread or no memory for one: those that are there do the work.
        }
        round.Work();
        round.AwaitHelpers(helpers.size());
        for (std::thread& helper : helpers) helper.join();
        isBusy_ = false;
        if (round.failure) std::rethrow_exception(round.failure);
        return !IsStopped();
    }

 private:
    /// Asked once: the system reads a file to answer.
    static unsigned OfMachine() {
        static const unsigned count = std::max(1U, std::thread::hardware_concurrency());
        return count;
    }
    static unsigned Most() { return std::max(16U, OfMachine()); }

    /// One call of `Run`.
    struct Round {
        const WorkShare& share;
        std::size_t count;
        const std::function<void(std::size_t)>& job;
        std::atomic<std::size_t> next = 0;
        std::atomic<bool> hasFailed = false;
        std::mutex mutex;
        std::condition_variable helperIsDone;
        std::size_t helpersDone = 0;
        std::size_t failedJob = 0;
        std::exception_ptr failure;

        Round(const WorkShare& workShare, std::size_t jobCount, const std::function<void(std::size_t)>& theJob)
            : share(workShare), count(jobCount), job(theJob) {}

        void Work() {
            while (!hasFailed.load(std::memory_order_relaxed) && !share.IsStopped()) {
                const std::size_t mine = next.fetch_add(1, std::memory_order_relaxed);
                if (mine >= count) return;
                try {
                    job(mine);
                } catch (...) {
                    const std::lock_guard lock(mutex);
                    if (!failure || mine < failedJob) {
                        failure = std::current_exception();
                        failedJob = mine;
                    }
                    hasFailed = true;
                }
            }
        }

        void Help() {
            if (PreparesForExceptions()) Work();  // else others do it
            const std::lock_guard lock(mutex);
            ++helpersDone;
            helperIsDone.notify_one();
        }

        /// The calling thread goes on asking whether to stop while the others end their last jobs.
        void AwaitHelpers(std::size_t helpers) {
            constexpr std::chrono::milliseconds kPause(2);
            std::unique_lock lock(mutex);
            while (!helperIsDone.wait_for(lock, kPause, [&] { return helpersDone == helpers; })) {
                lock.unlock();
                share.IsStopped();
                lock.lock();
            }
        }
    };

    bool RunAlone(std::size_t count, const std::function<void(std::size_t)>& job) const {
        for (std::size_t i = 0; i < count; ++i) {
            if (IsStopped()) return false;
            job(i);
        }
        return !IsStopped();
    }

    unsigned threads_;
    std::function<bool()> stop_;
    std::thread::id owner_ = std::this_thread::get_id();
    mutable bool isBusy_ = false;  // of the owner's thread alone
    mutable std::atomic<bool> stopped_ = false;
};
