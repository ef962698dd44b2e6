// The C++ runtime keeps for each thread which exceptions it is handling. In a process that is no C++ program it comes
// with this library, and the C library then takes memory for that at the first exception of a thread; where there is
// none it ends the process, so that not even "out of memory" could be told.
//
// A library that reaches what threads have of the runtime's at a fixed distance, as this project is compiled
// (-ftls-model=initial-exec), makes the loader put it beside the stack of each thread instead, also of those that run
// already. Of what the runtime shows, this is the one variable of that kind.

#include <mutex>

#if defined(__GLIBCXX__) && defined(_GLIBCXX_HAVE_TLS)

namespace {

[[gnu::used]] void* ThreadDataOfRuntime() {
    return &std::__once_callable;
}

}  // namespace

#endif
