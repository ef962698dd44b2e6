#pragma once

#include <optional>
#include <vector>

#include "platform/common/QKSettings.h"
#include "support/ComparisonRules.h"
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

    /// As an entry asks; nothing if it doesn't say. A type that is not one of ours asks for no comparison.
    static std::optional<ComparisonRequest> OfEntry(const QKSettings& entry);
    /// As a test's own settings ask, in which `AddTo` has written it.
    static ComparisonRequest OfTest(const QKSettings& testSettings, Wanted wanted);
    void AddTo(QKSettings& testSettings, Wanted wanted) const;

    /// Withdraws what is asked for; the warnings that say so, all pairs first.
    [[nodiscard]] std::vector<TestMessage> Refuse(const RefusalCodes& codes);
};
