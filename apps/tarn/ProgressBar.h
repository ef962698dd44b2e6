#pragma once

#include "platform/common/Progress.h"

namespace tarn {

/// A progress bar on standard error, on a terminal only.
class ProgressBar : public ProgressListener {
 public:
    /// `wanted` false shows nothing.
    explicit ProgressBar(bool wanted);
    /// Clears its line.
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void OnProgress(ProgressReport& report) override;
    /// 0 to 100.
    void Show(int percent);

 private:
    bool shown_;
};

}  // namespace tarn
