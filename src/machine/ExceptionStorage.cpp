#include "machine/ExceptionStorage.h"

#include <cstdlib>
#include <mutex>

bool PreparesForExceptions() noexcept {
    constexpr std::size_t kMoreThanItTakes = 4096;
    void* const probe = std::malloc(kMoreThanItTakes);
    if (probe == nullptr) return false;
    std::free(probe);
    // All that the runtime has for a thread comes in one piece. This part of it is the one that others may name, and
    // how it is named here (see the options of this file) is what the loader goes by.
    static_cast<void>(*const_cast<void* volatile*>(&std::__once_callable));
    return true;
}
