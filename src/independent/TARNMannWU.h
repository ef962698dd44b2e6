#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "independent/GroupHistogram.h"
#include "independent/TwoGroups.h"
#include "support/TARNRank.h"

/// The Mann-Whitney test of two independent groups, setting "IMannWhitneyU".
class TARNMannWU : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel" and the groups.
    explicit TARNMannWU(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return !status.IsError() && passCounter == 1; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void BeginRanking();
    void EndRanking();

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    TwoGroups groups;
    GroupSplit split;
    double sigLevel = kDefaultSigLevel;
    UnivariateResults* univariateResults = nullptr;
    int passCounter = 0;
    TARNRank rank{arithmetic};
    std::array<double, 2> meanRank{};
    GroupHistograms groupVariables{GroupHistogram(arithmetic), GroupHistogram(arithmetic)};
    std::int64_t totalN = 0;
    /// Weighted sizes of the groups.
    std::array<double, 2> groupCounts{};
    double u = 0;
    double w = 0;
    double z = 0;
    double standardError = 0;
    double asymptoticSig = 0;
    bool exactComputed = false;
    double exactSig = 0;
};

/// The plan builder of "IMannWhitneyU". Keys: "variableName" and "groupVariableName", one field each;
/// "userSpecifyGroupList" with "group1List" and "group2List", the categories of each group, else the two categories of
/// the field; "originVariableName", optional.
void PlanMannWU(const QKSettings& entry, TARNPlan& plan);
