#include "apps/tarn/LastResort.h"

#include <cxxabi.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <typeinfo>

#include "apps/tarn/Command.h"
#include "host/WholeFile.h"

namespace tarn {

namespace {

bool IsOutOfMemory() noexcept {
    // An exception for which there is no memory ends the process without one.
    const std::type_info* const thrown = abi::__cxa_current_exception_type();
    return thrown == nullptr || *thrown == typeid(std::bad_alloc) || *thrown == typeid(std::bad_array_new_length);
}

/// The way out of a failed allocation that nobody could catch: in what is made before `main`,
/// in a thread, or while what went wrong is told. A mistake of ours still aborts.
[[noreturn]] void EndOfUncaught() noexcept {
    RemoveUnfinishedFile();
    if (IsOutOfMemory()) EndWithoutMemory();
    std::abort();
}

/// Before all else of the program is made.
[[gnu::constructor(101)]] void TakeUncaught() {
    std::set_terminate(EndOfUncaught);
}

/// The signals that end a process by default and can be caught.
constexpr int kEnding[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGILL,    SIGTRAP, SIGABRT, SIGBUS,    SIGFPE,  SIGUSR1, SIGSEGV,
                           SIGUSR2, SIGPIPE, SIGALRM, SIGSTKFLT, SIGTERM, SIGXCPU, SIGVTALRM, SIGPROF, SIGIO,   SIGSYS};

bool IsByDefault(int signal) {
    struct sigaction known {};
    return sigaction(signal, nullptr, &known) == 0 && (known.sa_flags & SA_SIGINFO) == 0 && known.sa_handler == SIG_DFL;
}

}  // namespace

void EndWithoutMemory() noexcept {
    constexpr std::string_view kLine = "tarn: not enough memory\n";
    // Straight to the descriptor: a stream may want memory.
    static_cast<void>(!write(STDERR_FILENO, kLine.data(), kLine.size()));
    _exit(static_cast<int>(ExitStatus::kRunFailed));
}

void PrepareForSignals() {
    struct sigaction action {};
    action.sa_handler = [](int signal) {
        RemoveUnfinishedFile();
        raise(signal);  // the default is back, and takes it when this handler returns
    };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : kEnding) {
        if (IsByDefault(signal)) sigaction(signal, &action, nullptr);
    }
    if (!IsByDefault(SIGXFSZ)) return;
    action.sa_handler = SIG_IGN;
    action.sa_flags = 0;
    sigaction(SIGXFSZ, &action, nullptr);
}

}  // namespace tarn
