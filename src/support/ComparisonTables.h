#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/ComparisonRules.h"
#include "support/PairwiseComparison.h"
#include "support/ResultElements.h"
#include "support/StepwiseComparison.h"
#include "support/TestMessage.h"

/// The tables in which a test shows the pairs and the homogeneous subsets of its samples.

/// The samples of a table of results, each list joined with ";".
struct ComparedSamples {
    std::optional<std::int32_t> groupField;  ///< of samples that are the groups of a field
    std::string indices;
    std::string orderValues;
};

/// Fields in the order of the stepwise search. `fields`: where each sample stands in a record.
ComparedSamples FieldsInOrder(const std::vector<int>& fields, const std::vector<OrderedSample>& samples);

/// Adds the table "PairwiseResult".
void AddPairwiseResult(ResultElement& element, const ComparisonRules& rules, const ComparedSamples& samples,
                       const std::vector<PairRecord>& pairs);

/// Adds the table "StepwiseResult". The messages are for the test to add: where the search itself didn't warn of
/// samples that stand alone, writing their rows does.
[[nodiscard]] std::vector<TestMessage> AddStepwiseResult(ResultElement& element, const StepwiseComparison& search,
                                                         const ComparedSamples& samples);
