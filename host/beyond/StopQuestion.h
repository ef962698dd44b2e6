#pragma once

#include <stdexcept>
#include <utility>

#include "machine/WorkShare.h"

namespace tarn {

/// The figures of a test were given up, since the analysis was cancelled.
class FiguresStopped : public std::runtime_error {
 public:
    FiguresStopped() : std::runtime_error("the figures were cancelled") {}
};

/// While one lives, what is computed on its thread asks that work whether to stop. So the exact functions, which know
/// nothing of a run, need not be handed a question through all of their parts.
class StopQuestion {
 public:
    explicit StopQuestion(const WorkShare& work) : outer_(std::exchange(Current(), &work)) {}
    ~StopQuestion() { Current() = outer_; }
    StopQuestion(const StopQuestion&) = delete;
    StopQuestion& operator=(const StopQuestion&) = delete;

    /// Of this thread; null for none.
    static const WorkShare*& Current() {
        thread_local const WorkShare* current = nullptr;
        return current;
    }

 private:
    const WorkShare* outer_;
};

/// For a loop whose steps take microseconds or more. Throws `FiguresStopped` where the work is to end; does nothing
/// where there is no question.
inline void AskWhetherToStop() {
    const WorkShare* const work = StopQuestion::Current();
    if (work != nullptr && work->IsStopped()) throw FiguresStopped();
}

/// For a loop with shorter steps: asks once in a while.
inline void AskNowAndThen() {
    constexpr unsigned kStepsBetweenQuestions = 256;
    thread_local unsigned steps = 0;
    if (++steps % kStepsBetweenQuestions == 0) AskWhetherToStop();
}

}  // namespace tarn
