#pragma once

#include <string>

#include "platform/Export.h"
#include "platform/common/Progress.h"

/// The progress report of the engine: a step number on the scale of 0 to 100.
class TARN_EXPORT TARNReporter : public ProgressReport {
 public:
    ~TARNReporter() override;
    /// 1 for any name.
    int DiscreteMeasure(const std::string& name) override;
    /// The missing double for any name.
    double ScaleMeasure(const std::string& name) override;

    void SetCurrentStepNum(int step);
    int GetCurrentStepNum() const;

 private:
    int currentStepNum = 0;
};
