#include "planning/TARNWarning.h"

#include "machine/ThreadOwned.h"

TARNWarning& TARNWarning::Instance() {
    static TARNWarning* const instance = new TARNWarning;
    return *instance;
}

std::vector<QKStatus>& TARNWarning::OfThisThread() {
    static const ThreadOwned<std::vector<QKStatus>> warnings;
    return warnings.OfThisThread();
}
