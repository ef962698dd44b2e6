#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "onesample/DifferenceWalk.h"
#include "onesample/DistributionEstimates.h"
#include "onesample/TheoreticalDistribution.h"
#include "support/ResultElements.h"

/// The Kolmogorov-Smirnov test of one continuous field against a distribution, settings "OKolmogorovSmirnovNormal",
/// "OKolmogorovSmirnovUniform", "OKolmogorovSmirnovPoisson" and "OKolmogorovSmirnovExponential".
class TARNKSmirnowOneSample : public ColumnTest {
 public:
    /// Reads from its settings "distributionFunction", "isUseSample", "variableIndex", "weightVariableIndex",
    /// "sigLevel" and the parameters "min", "max", "mean", "stdDev", of which those that are missing are estimated.
    explicit TARNKSmirnowOneSample(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    /// The one place that moves the pass on: to be asked once after each pass.
    bool NeedsAnotherPass() override { return passCounter++ == 0; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override { fieldIndices.push_back(variableIndex); }
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadSettings();
    void CheckParameters();
    bool FitsAll() const;
    QKStatus AddValues(const double* values, const std::int32_t* weights, std::size_t count);
    void Refuse(ValueFit fit, double value, std::int32_t weight);
    void EndFirstPass();
    void ComputeSignificance();
    Decision Decided();
    bool IsLilliefors() const { return isUseSample && distribution.kind == DistributionKind::kNormal; }
    bool IsFirstPass() const { return passCounter == 0; }
    void AddCondition(ResultElement& element) const;
    void WarnOfRefusedValues();

    TheoreticalDistribution distribution;
    bool isUseSample = false;
    int weightVariableIndex = -1;
    int variableIndex = -1;
    /// Of the values refused in the first pass: whether there is any, and their weight.
    bool hasOutliers = false;
    std::int64_t outlierWeight = 0;
    double sigLevel = kDefaultSigLevel;
    DistributionEstimates estimates;
    std::int64_t weightSum = 0;  // whole
    std::int64_t totalN = 0;
    DifferenceWalk walk;
    double asymptoticSig = 0;
    double zStatistic = 0;
    bool sigAtFloor = false;
    std::size_t passCounter = 0;
    // Of a batch, those within the distribution's range.
    std::vector<double> fittingValues;
    std::vector<std::int32_t> fittingWeights;
};

/// The plan builders of the four settings. Keys: "variableName", one field; "isUseSample", true to estimate all
/// parameters, or of "mean", "stdDev", "min", "max" those that are not to be estimated; "originVariableName",
/// optional.
void PlanKSmirnowNormal(const QKSettings& entry, TARNPlan& plan);
void PlanKSmirnowUniform(const QKSettings& entry, TARNPlan& plan);
void PlanKSmirnowPoisson(const QKSettings& entry, TARNPlan& plan);
void PlanKSmirnowExponential(const QKSettings& entry, TARNPlan& plan);
