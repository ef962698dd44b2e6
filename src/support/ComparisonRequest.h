#pragma once

#include <vector>

#include "support/TestMessage.h"

/// The codes of the warnings by which a comparison is refused.
struct RefusalCodes {
    long pairwise;
    long stepwise;
};

/// Which comparisons are asked for.
struct ComparisonRequest {
    bool pairwise = false;
    bool stepwise = false;

    /// Withdraws what is asked for; the warnings that say so, all pairs first.
    [[nodiscard]] std::vector<TestMessage> Refuse(const RefusalCodes& codes);
};
