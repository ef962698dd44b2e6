#include "planning/TARNWarning.h"

TARNWarning& TARNWarning::Instance() {
    static TARNWarning* const instance = new TARNWarning;
    return *instance;
}

std::vector<QKStatus>& TARNWarning::OfThisThread() {
    thread_local std::vector<QKStatus> warnings;
    return warnings;
}
