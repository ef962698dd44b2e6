#include "planning/TARNWorkerSequence.h"

#include "vocabulary/StatusCodes.h"

QKStatus TARNWorkerSequence::Run(const CancelState& cancel) {
    QKStatus result;
    int total = 0;
    for (const TARNTestWorker* worker : workers) total += worker->TestCount();
    for (TARNTestWorker* worker : workers) {
        const double workerShare = worker->TestCount() * share / total;
        worker->SetProgress(listener, base, workerShare);
        if (cancel.Poll()) return QKStatus(StatusCode::kCancelled);
        result = worker->RunTests(cancel);
        if (result.GetErrorCode() == StatusCode::kOutOfMemory) return result;
        if (cancel.Poll()) return QKStatus(StatusCode::kCancelled);
        // Elements are collected of a worker that ended in an error, too.
        const QKStatus collected = worker->CollectResults();
        if (collected.IsError()) return collected;
        base += workerShare;
    }
    return result;
}
