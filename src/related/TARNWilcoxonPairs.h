#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "related/PairDifferences.h"
#include "support/SignedRanks.h"

/// The Wilcoxon signed rank test of one pair of continuous fields, setting "RWilcoxonSignedRanks".
class TARNWilcoxonPairs : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex" (two field indices), "weightVariableIndex" and "sigLevel".
    explicit TARNWilcoxonPairs(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return !isBrief && passCounter == 1; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadSettings();
    void TakeCounts();
    void EndRanking();
    std::int64_t TotalN() const;

    double sigLevel = kDefaultSigLevel;
    int weightVariableIndex = -1;
    int firstVariableIndex = -1;
    int secondVariableIndex = -1;
    std::int64_t positiveCount = 0;
    std::int64_t negativeCount = 0;
    std::int64_t tieCount = 0;
    /// Of the records whose difference is not zero.
    SignedDifferences ranked;
    double asymptoticSig = 0;
    double positiveRankSum = 0;
    double standardError = 0;
    double standardTestStatistic = 0;
    int passCounter = 0;
    PairDifferences differences;
};

/// The plan builder of "RWilcoxonSignedRanks". Keys: "variableName", the two fields; "originVariableName", optional.
void PlanWilcoxonPairs(const QKSettings& entry, TARNPlan& plan);
