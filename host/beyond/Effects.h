#pragma once

#include <vector>

#include "host/beyond/TestView.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/Supplement.h"

namespace tarn {

/// What the effects of a test are made with.
struct EffectSource {
    const TestView& view;
    const MessageCatalogue& texts;
    double longest = 0;                     ///< nanoseconds that an estimate may take; a longer one is left out
    std::vector<std::string> success = {};  ///< categories that count as successes; empty for those of the data
};

/// The effect sizes of a test, and those of the pairs that it compares; none for a test that has no effect size.
std::vector<EffectSize> EffectsOf(const EffectSource& source);

/// Whether an estimate of the test was left out because it takes longer than it may.
bool LeavesOutAnEstimate(const EffectSource& source);

}  // namespace tarn
