#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "platform/common/QKMV.h"
#include "related/SuccessClasses.h"

/// The McNemar test of one pair of categorical fields, setting "RMcNemar".
class TARNMcNemar : public ColumnTest {
 public:
    /// Reads from its settings "variablePairFirstIndex", "variablePairSecondIndex", "weightVariableIndex", "sigLevel"
    /// and, with "userSpecifyGroupList", the lists of success categories.
    TARNMcNemar(std::unique_ptr<QKSettings> testSettings, const CategoryMatcher& fieldCategories)
        : ColumnTest(std::move(testSettings)), success(fieldCategories) {}

    /// Borrowed; read in `BeginPass`.
    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadSettings();
    void PrepareCategories();
    void CheckCategoriesOfData();
    std::int64_t Discordant() const;

    bool userSpecifyGroupList = false;
    std::vector<double> successListNum;
    std::vector<std::string> successListStr;
    std::vector<std::string> successListOriginal;
    std::vector<double> successVar0;
    std::vector<double> successVar1;
    std::vector<double> failVar0;
    std::vector<double> failVar1;
    bool hasFailVar1 = false;
    int weightVariableIndex = -1;
    int firstVariableIndex = -1;
    int secondVariableIndex = -1;
    double sigLevel = kDefaultSigLevel;
    std::int64_t failSuccessCount = 0;
    std::int64_t successFailCount = 0;
    std::int64_t bothSuccessCount = 0;
    std::int64_t bothFailCount = 0;
    double asymptoticSig = 0;
    double testStatistic = QKMV::Missing();
    double exactSig = 0;
    UnivariateResults* univariateResults = nullptr;
    SuccessClasses success;
};

/// The plan builder of "RMcNemar". Keys: "variableName", the two fields; "classFormation", and with its value
/// "givenCategoryList" "categoriesList", the success categories.
void PlanMcNemar(const QKSettings& entry, TARNPlan& plan);
