#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "support/Histogram.h"
#include "support/ResultElements.h"
#include "support/SignedRanks.h"

/// The Wilcoxon signed rank test of one continuous field, setting "OWilcoxonSignedRanks".
class TARNWilcoxonSR : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "userSpecifyTestValue", "testValue", "weightVariableIndex" and
    /// "sigLevel".
    explicit TARNWilcoxonSR(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override { fieldIndices.push_back(variableIndex); }
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadSettings();
    void AddWeights(const double* weights, const std::int32_t* truncatedWeights);
    bool HasFractions(const double* weights, const std::int32_t* truncatedWeights) const;
    void AddDistribution(ResultElement& element) const;

    int weightVariableIndex = -1;
    int variableIndex = -1;
    bool userSpecifyTestValue = false;
    bool testValueReady = false;
    /// The hypothesized median.
    double testValue = 0;
    double observedMedian = 0;
    double sigLevel = kDefaultSigLevel;
    UnivariateResults* univariateResults = nullptr;
    Histogram histogram{arithmetic};
    double minValue = std::numeric_limits<double>::max();
    double maxValue = std::numeric_limits<double>::lowest();
    double totalWeight = 0;
    std::int64_t tieCount = 0;
    std::vector<double> scratch;
    std::vector<double> wholeWeights;  // of a batch
    /// Of the records whose difference is not zero.
    SignedDifferences differences;
    double positiveRankSum = 0;
    double standardTestStatistic = 0;
    /// The n of the formulas.
    double nonTiedWeight = 0;
    double standardError = 0;
    double asymptoticSig = 0;
};

/// The plan builder of "OWilcoxonSignedRanks". Keys: "variableName", one field; "testValue", read if
/// "userSpecifyTestValue" is true, else the median of the field; "originVariableName", optional.
void PlanWilcoxonSR(const QKSettings& entry, TARNPlan& plan);
