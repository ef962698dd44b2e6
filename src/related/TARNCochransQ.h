#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "related/CommonSuccesses.h"
#include "related/SuccessClasses.h"
#include "related/SuccessCounts.h"
#include "support/ComparisonRequest.h"
#include "support/PairwiseComparison.h"
#include "support/ResultElements.h"
#include "support/StepwiseComparison.h"

/// Cochran's Q test of k categorical fields, setting "RCochransQ".
class TARNCochransQ : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex" (the fields), "weightVariableIndex", "sigLevel", "pairWise", "stepWise"
    /// and, with "userSpecifyGroupList", "successCategoryListNum" and "successCategoryListStr".
    TARNCochransQ(std::unique_ptr<QKSettings> testSettings, const CategoryMatcher& fieldCategories)
        : ColumnTest(std::move(testSettings)), success(fieldCategories) {}

    /// Borrowed; read in `BeginPass`.
    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override;
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    enum class State { kOverall, kBeforeSteps, kSteps, kFinished };

    void ReadSettings();
    void PrepareCategories();
    void CheckCategoriesOfData();
    void AddToOverall(ColumnBatch& batch);
    void AddCommonSuccesses(ColumnBatch& batch);
    template <typename Sum>
    void AddBlock(const std::vector<const std::int32_t*>& columns, const std::int32_t* weights, std::size_t begin,
                  std::size_t count);
    const CategorySet& SuccessesOf(std::size_t position) const;
    bool HaveTheSameSuccesses() const;
    double SubsetQ(const SubsetRecord& subset) const;
    void EndOverall();
    void Compare();
    void EndStep();
    void AddClasses(ResultElement& element) const;

    int weightVariableIndex = -1;
    std::vector<int> variableIndices;
    std::vector<double> successListNum;
    std::vector<std::string> successListStr;
    double sigLevel = kDefaultSigLevel;
    ComparisonRequest comparison;
    bool pairwiseDone = false;
    bool userSpecifyGroupList = false;
    UnivariateResults* univariateResults = nullptr;
    State state = State::kOverall;
    SuccessCounts counts{arithmetic};
    double q = 0;
    double sig = 0;
    SuccessClasses success;
    std::vector<PairRecord> pairwiseResults;
    std::vector<OrderedSample> orderedSamples;
    /// For each two positions the weight of the records in which both succeed, found in the first step for all of them:
    /// by the successes of the listed fields at these positions, and by those of the ordered ones where they differ.
    CommonSuccesses commonSuccesses;
    CommonSuccesses ownSuccesses;
    bool hasOwnSuccesses = false;
    bool isFirstStep = true;
    StepwiseComparison steps{ComparisonRulesOf::kCochransQ, arithmetic};
};

/// The plan builder of "RCochransQ". Keys: "variableName", the fields; "classFormation", and with its value
/// "givenCategoryList" "successCategoryList"; "typeOfMultipleComparison", optional.
void PlanCochransQ(const QKSettings& entry, TARNPlan& plan);
