#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "onesample/BinaryClasses.h"

/// The binomial test of one field, setting "OBinomial".
class TARNBinomial : public ColumnTest {
 public:
    /// Reads from its settings "testProbability", "sigLevel" and what `BinaryClasses` reads.
    explicit TARNBinomial(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

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
    void ComputeAsymptotic();
    void ComputeExact();
    void ComputePercentages();
    void AddCondition(ResultElement& element) const;

    UnivariateResults* univariateResults = nullptr;
    double sigLevel = kDefaultSigLevel;
    double testProbability = 0.5;
    BinaryClasses classes;
    std::int64_t firstCount = 0;
    std::int64_t secondCount = 0;
    std::int64_t totalN = 0;
    /// Observed first and second class, then the hypothesized ones.
    std::array<double, 4> percentages{};
    double asymptoticSig = 0;
    double exactSig = 0;
    bool twoTailed = false;
    double standardError = 0;
    double standardTestStatistic = 0;
};

/// The plan builder of "OBinomial". Keys: "variableName"; "catVarClassFormation" with "givenCategoryList", or
/// "contVarClassFormation" with "givenCutPoint"; "testProbability".
void PlanBinomial(const QKSettings& entry, TARNPlan& plan);
