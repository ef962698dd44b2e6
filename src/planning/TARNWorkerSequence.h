#pragma once

#include <vector>

#include "machine/WorkShare.h"
#include "planning/TARNTestWorker.h"
#include "platform/common/Progress.h"
#include "platform/common/QKStatus.h"

/// The workers of a run with their parts of the progress scale: one after the other, or several at once where there are
/// threads for them. Either way results and progress are the same, in the order of the workers. Borrows all that it is
/// given.
class TARNWorkerSequence {
 public:
    /// `base` and `share`: fractions of the scale at which the tests start, and that they fill together.
    TARNWorkerSequence(ProgressListener* progressListener, double progressBase, double progressShare)
        : listener(progressListener), base(progressBase), share(progressShare) {}

    void Add(TARNTestWorker& worker) { workers.push_back(&worker); }

    /// Runs each worker and collects its elements. The status is the last worker's; 220012 ends the sequence at
    /// once, a cancel ends it with code 1.
    QKStatus Run(const WorkShare& work);

 private:
    QKStatus RunInTurn(const WorkShare& work);
    QKStatus RunTogether(const WorkShare& work);

    std::vector<TARNTestWorker*> workers;
    ProgressListener* listener;
    double base;
    double share;
};
