#pragma once

/// Where the progress of an execution goes: made and owned by the host, borrowed by the component for the time of
/// `hx_component_beginExecution`.
typedef struct HXProgress {
    /// The host's own; given back to it as the first argument of each function.
    void* handle;
    /// The work has come from 0 to `step` of `total`. `secondsLeft` is -1: nobody knows. Called on the thread of the
    /// execution; what it returns can't fail the run.
    unsigned (*Report)(void* handle, double step, double total, int secondsLeft, int* errorCode);
} HXProgress;
