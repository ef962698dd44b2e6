#include "planning/TARNWarning.h"

TARNWarning& TARNWarning::Instance() {
    static TARNWarning* const instance = new TARNWarning;
    return *instance;
}
