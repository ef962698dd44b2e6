#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "related/PairDifferences.h"
#include "support/SignedRanks.h"
#include "support/WeightedOrder.h"

/// The Hodges-Lehmann estimate of one pair of continuous fields, setting "RHodgesLehmannEstimatePairs".
class TARNHodgesLehmannPairs : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex" (two field indices), "weightVariableIndex" and "confidenceLevel".
    explicit TARNHodgesLehmannPairs(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void Estimate();
    void Move(double distance);
    void ComputeRankMoments();
    void ComputeInterval(const WeightedOrder& averages);

    int weightVariableIndex = -1;
    int firstVariableIndex = -1;
    int secondVariableIndex = -1;
    double confidenceLevel = kDefaultConfidenceLevel;
    std::int64_t totalN = 0;
    /// Of all records, zero differences too.
    SignedDifferences sample;
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
