#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "contract/TARNPlan.h"
#include "contract/TARNTest.h"
#include "related/PairDifferences.h"

/// The Hodges-Lehmann estimate of one pair of continuous fields, setting "RHodgesLehmannEstimatePairs".
class TARNHodgesLehmannPairs : public TARNTest {
 public:
    /// Reads from its settings "variableIndex" (two field indices), "weightVariableIndex" and "confidenceLevel".
    explicit TARNHodgesLehmannPairs(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    QKStatus Estimate();
    QKStatus ComputeRankMoments();
    void ComputeInterval(const WeightedOrder& averages);

    int weightVariableIndex = -1;
    int firstVariableIndex = -1;
    int secondVariableIndex = -1;
    double confidenceLevel = kDefaultConfidenceLevel;
    std::int32_t positiveCount = 0;
    std::int32_t negativeCount = 0;
    std::int32_t tieCount = 0;
    std::int32_t totalN = 0;
    /// Added to all differences when some are zero.
    double shift = 0;
    /// One entry per record, zero differences too.
    std::vector<WeightedDifference> pairDifferences;
    double meanRank = 0;
    double rankStdError = 0;
    double estimate = 0;
    double lower = 0;
    double upper = 0;
    PairDifferences differences;
};

/// The plan builder of "RHodgesLehmannEstimatePairs". Keys: "variableName", the two fields; "originVariableName",
/// optional.
void PlanHodgesLehmannPairs(const QKSettings& entry, TARNPlan& plan);
