#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "platform/common/QKMV.h"
#include "support/CategorySet.h"
#include "support/ResultElements.h"

/// The runs test of the order of two classes of one field, setting "ORuns".
class TARNRuns : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "measureLevel", "weightVariableIndex" and "sigLevel"; "dataCutPoint"
    /// and "givenCutPoint", or "givenCategoryList", "group2List" and "GivenCategoryListInvalid".
    explicit TARNRuns(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    /// Borrowed; read in `BeginPass`.
    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override { fieldIndices.push_back(variableIndex); }
    QKXML::XMLElement* MakeResultElement() override;

 private:
    enum class MeasureKind { kContinuous = 1, kCategorical = 2 };
    enum class Class : std::uint32_t { kUpper = 0, kLower = 1, kNone = 2 };

    void PrepareCategorical();
    void PrepareContinuous();
    void LearnClasses(const double* values, std::size_t count);
    void AddClasses(const std::uint32_t* areLower, const std::int32_t* weights, std::size_t count);
    double RunsAboveMean() const;
    void AddCondition(ResultElement& element) const;

    UnivariateResults* univariateResults = nullptr;
    std::vector<double> group1List;
    std::vector<double> group2List;
    CategorySet group1;  // the categories of `group1List`
    double cutPoint = QKMV::Missing();
    std::vector<std::string> invalidCategories;
    MeasureKind measureKind = MeasureKind::kCategorical;
    Class lastClass = Class::kNone;
    std::int64_t runs = 0;
    std::int64_t observedRuns = 0;
    double expectedStdDev = QKMV::Missing();
    double expectedRuns = QKMV::Missing();
    std::int64_t upperCount = 0;
    std::int64_t lowerCount = 0;
    int variableIndex = -1;
    int weightVariableIndex = -1;
    double standardTestStatistic = 0;
    double asymptoticSig = 0;
    double sigLevel = kDefaultSigLevel;
    double standardError = QKMV::Missing();
    std::int64_t totalN = 0;
};

/// The plan builder of "ORuns". Keys: "variableName"; of a continuous field "contVarClassFormation" with
/// "cutPointValue", of a categorical one "catVarClassFormation" with "givenCategoryList".
void PlanRuns(const QKSettings& entry, TARNPlan& plan);
