#pragma once

#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "onesample/BinaryClasses.h"
#include "onesample/ProportionIntervals.h"

/// Confidence intervals for the share of the first of two classes of a field, setting "OEstimateConfidenceInterval".
class TARNEstimateCI : public ColumnTest {
 public:
    /// Reads from its settings "confidenceLevel", a flag for each method and what `BinaryClasses` reads.
    explicit TARNEstimateCI(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    /// Borrowed; read in `BeginPass`. A null leaves what was there.
    void SetUnivariateResults(UnivariateResults* results) override {
        if (results != nullptr) univariateResults = results;
    }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void AddMethod(ResultElement& element, const char* name, const ProportionInterval& limits) const;

    UnivariateResults* univariateResults = nullptr;
    BinaryClasses classes;
    bool isDoClopperPearson = false;
    bool isDoJeffreys = false;
    bool isDoProfileLikelihood = false;
    double confidenceLevel = kDefaultConfidenceLevel;
    ProportionCounts counts;
    ProportionInterval clopperPearson;
    ProportionInterval jeffreys;
    ProportionInterval profileLikelihood;
};

/// The plan builder of "OEstimateConfidenceInterval". Keys: those of "OBinomial" without the probability;
/// "isDoClopperPearson", "isDoJeffreys" and "isDoProfileLikelihood".
void PlanEstimateCI(const QKSettings& entry, TARNPlan& plan);
