#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "independent/GroupBoxPlot.h"
#include "independent/TwoGroups.h"
#include "support/TARNRank.h"

/// The Moses test of extreme reactions of two independent groups, setting "IMoses". The first group is the control
/// group.
class TARNMoses : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "caseIDVariableIndex",
    /// "sigLevel", "userSpecifyNumberOfOutliers", "NumberOfOutliers" and the groups.
    explicit TARNMoses(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return !status.IsError() && passCounter < Passes(); }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// For the ranks; and for the boxes and the outliers.
    int Passes() const { return isBrief ? 1 : 3; }

    void BeginRanking();
    void ReadSettings();
    void ValidateGroups();
    void EndRanking();
    void ChooseNumberOfOutliers();

    int weightIndex = -1;
    int caseIdIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    UnivariateResults* univariateResults = nullptr;
    TwoGroups groups;
    GroupSplit split;
    GroupSplit caseIds;
    double sigLevel = kDefaultSigLevel;
    bool userSpecifyNumberOfOutliers = false;
    int passCounter = 0;
    TARNRank rank{arithmetic};
    std::vector<GroupBoxPlot> groupBoxes;
    std::int64_t totalN = 0;
    /// Outliers that are trimmed from each end of the control group.
    std::int64_t numberOfOutliers = -1;
    std::array<std::int64_t, 2> groupCounts{};
    std::int64_t observedSpan = 0;
    double observedSig = 0;
    std::int64_t trimmedSpan = 0;
    double trimmedSig = 0;
};

/// The plan builder of "IMoses". Keys: those of "IMannWhitneyU"; "userSpecifyNumberOfOutliers" with
/// "NumberOfOutliers".
void PlanMoses(const QKSettings& entry, TARNPlan& plan);
