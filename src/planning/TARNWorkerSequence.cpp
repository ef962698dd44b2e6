#include "planning/TARNWorkerSequence.h"

#include <atomic>
#include <cstddef>
#include <deque>

#include "vocabulary/StatusCodes.h"

QKStatus TARNWorkerSequence::Run(const WorkShare& work) {
    int total = 0;
    for (const TARNTestWorker* worker : workers) total += worker->TestCount();
    for (TARNTestWorker* worker : workers) {
        const double workerShare = worker->TestCount() * share / total;
        worker->SetProgress(listener, base, workerShare);
        base += workerShare;
    }
    return work.Threads() > 1 && workers.size() > 1 ? RunTogether(work) : RunInTurn(work);
}

QKStatus TARNWorkerSequence::RunInTurn(const WorkShare& work) {
    QKStatus result;
    for (TARNTestWorker* worker : workers) {
        if (work.IsStopped()) return QKStatus(StatusCode::kCancelled);
        result = worker->RunTests(work);
        if (result.GetErrorCode() == StatusCode::kOutOfMemory) return result;
        if (work.IsStopped()) return QKStatus(StatusCode::kCancelled);
        // Elements are collected of a worker that ended in an error, too.
        const QKStatus collected = worker->CollectResults();
        if (collected.IsError()) return collected;
    }
    return result;
}

QKStatus TARNWorkerSequence::RunTogether(const WorkShare& work) {
    struct Outcome {
        QKStatus status;
        std::atomic<bool> isDone = false;
    };
    std::deque<Outcome> outcomes(workers.size());
    std::atomic<bool> isOutOfMemory = false;
    std::size_t told = 0;
    const auto tellOfThoseDone = [&] {
        while (told < workers.size() && outcomes[told].isDone) workers[told++]->ReportProgress();
    };
    for (TARNTestWorker* worker : workers) worker->HoldProgress();

    const bool isComplete = work.Run(workers.size(), [&](std::size_t i) {
        if (isOutOfMemory) return;
        Outcome& outcome = outcomes[i];
        outcome.status = workers[i]->RunTests(work);
        if (outcome.status.GetErrorCode() != StatusCode::kOutOfMemory && !work.IsStopped()) {
            const QKStatus collected = workers[i]->CollectResults();
            if (collected.IsError()) outcome.status = collected;
        }
        if (outcome.status.GetErrorCode() == StatusCode::kOutOfMemory) isOutOfMemory = true;
        outcome.isDone = true;
        if (work.IsOwner()) tellOfThoseDone();
    });
    if (isOutOfMemory) return QKStatus(StatusCode::kOutOfMemory);
    if (!isComplete) return QKStatus(StatusCode::kCancelled);
    tellOfThoseDone();
    return outcomes.back().status;
}
