#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "independent/GroupHistogram.h"
#include "independent/RunCounter.h"
#include "independent/TwoGroups.h"
#include "support/ResultElements.h"

/// The Wald-Wolfowitz runs test of two independent groups, setting "IWaldWolfowitzRuns".
class TARNWaldWolfRuns : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex" and "sigLevel", and, where
    /// they are there, "classFormation" with "group1List" and "group2List", which its plan builder does not write.
    explicit TARNWaldWolfRuns(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override {
        if (results != nullptr) univariateResults = results;
    }
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return passCounter == 1 && !isBrief; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override {
        fieldIndices = {variableIndex, groupVariableIndex};
    }
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// What is reported of one number of runs.
    struct RunsResult {
        std::int64_t runs = 0;
        double standardError = 0;
        double z = 0;
        double sig = 0;
        double exact = 0;
    };

    void BeginCounting();
    QKStatus ReadGroups();
    void EndCounting();
    bool Compute(RunsResult& result, std::int64_t runs) const;
    bool HasExact() const;
    std::int64_t TotalN() const;
    void AddResult(StructuredTable& statistics, const char* name, const RunsResult& result) const;

    UnivariateResults* univariateResults = nullptr;
    double sigLevel = kDefaultSigLevel;
    bool twoCategoryLists = false;
    TwoGroups groups;
    GroupSplit split;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    int weightIndex = -1;
    RunCounter runs{arithmetic};
    RunsResult minimum;
    RunsResult maximum;
    std::uint32_t passCounter = 0;
    GroupHistograms groupVariables{GroupHistogram(arithmetic), GroupHistogram(arithmetic)};
};

/// The plan builder of "IWaldWolfowitzRuns". Keys: "variableName" and "groupVariableName", one field each, the second
/// one of two categories; "originVariableName", optional. Listed groups ("classFormation") are refused.
void PlanWaldWolfRuns(const QKSettings& entry, TARNPlan& plan);
