#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "related/PairDifferences.h"

/// The sign test of one pair of continuous fields, setting "RSign".
class TARNSign : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex" (two field indices), "weightVariableIndex" and "sigLevel".
    explicit TARNSign(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return !status.IsError() && !isBrief && passCounter == 1; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void BeginCounting();
    void ReadSettings();
    void EndCounting();

    int weightVariableIndex = -1;
    int firstVariableIndex = -1;
    int secondVariableIndex = -1;
    double sigLevel = kDefaultSigLevel;
    std::int64_t totalN = 0;
    std::int64_t positiveCount = 0;
    std::int64_t negativeCount = 0;
    double asymptoticSig = 0;
    double standardTestStatistic = 0;
    bool hasExact = false;
    double exactSig = 0;
    double standardError = 0;
    std::size_t passCounter = 0;
    PairDifferences differences;
};

/// The plan builder of "RSign". Keys: "variableName", the two fields; "originVariableName", optional.
void PlanSign(const QKSettings& entry, TARNPlan& plan);
