#pragma once

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

/// While one is there, what this thread takes of memory may stay when nothing leads to it any more: of a component,
/// whatever is no part of an execution, since destroying it gives back its own memory alone. A leak checker passes over
/// it; elsewhere this does nothing.
///
/// This header includes nothing of the project and is open to all floors.
class KeptForGood {
 public:
#ifdef __SANITIZE_ADDRESS__
    KeptForGood() {
        __lsan_disable();
    }
    ~KeptForGood() {
        __lsan_enable();
    }
#else
    KeptForGood() {}
    ~KeptForGood() {}
#endif
    KeptForGood(const KeptForGood&) = delete;
    KeptForGood& operator=(const KeptForGood&) = delete;
};
