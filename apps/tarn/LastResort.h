#pragma once

namespace tarn {

/// Ends the process with the status of a run that failed, and says that there is not enough memory, without taking any.
[[noreturn]] void EndWithoutMemory() noexcept;

/// For a signal that ends the process: removes the file that is just being written, if there is one, before it does.
/// A file that grows beyond its limit becomes a failure of the write. What the caller of the program has chosen to
/// ignore, or has another handler, stays.
void PrepareForSignals();

}  // namespace tarn
