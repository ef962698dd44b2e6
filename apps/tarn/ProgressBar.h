#pragma once

#include <string>

namespace tarn {

/// A progress bar on standard error, on a terminal only.
class ProgressBar {
 public:
    /// `wanted` false shows nothing.
    explicit ProgressBar(bool wanted);
    /// Clears its line.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// 0 to 100.
    void Show(int percent);

    /// What clears the line of the bar that is there now; empty where there is none. For a process that ends without
    /// the destructor.
    static std::string Erasure();

 private:
    bool shown_;
};

}  // namespace tarn
