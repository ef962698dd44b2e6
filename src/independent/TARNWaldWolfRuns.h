#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "independent/GroupHistogram.h"
#include "independent/RunCounter.h"
#include "independent/TwoGroups.h"
#include "planning/contract/TARNPlan.h"
#include "planning/contract/TARNTest.h"
#include "support/ResultElements.h"

/// The Wald-Wolfowitz runs test of two independent groups, setting "IWaldWolfowitzRuns".
class TARNWaldWolfRuns : public TARNTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel", and, which no
    /// plan builder writes, "classFormation" with "group1List" and "group2List".
    explicit TARNWaldWolfRuns(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override {
        if (results != nullptr) univariateResults = results;
    }
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override { return passCounter == 1; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// A number of runs and what it says.
    struct RunResult {
        std::int32_t runs = 0;
        RunStatistics statistics;
        double sig = 0;
        double exactSig = 0;
    };

    void ReadSettings();
    void FormGroups();
    void EndCounting();
    RunResult Evaluate(std::int32_t runs) const;
    std::int32_t TotalN() const;
    bool HasExactSignificance() const;
    void AddResult(StructuredTable statistics, const RunResult& result) const;

    UnivariateResults* univariateResults = nullptr;
    double sigLevel = 0.05;
    bool twoCategoryLists = false;
    TwoGroups groups;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    int weightIndex = -1;
    RunCounter counter;
    RunResult fewest;
    RunResult most;
    int passCounter = 0;
    std::array<GroupHistogram, 2> groupVariables;
};

/// The plan builder of "IWaldWolfowitzRuns". Keys: "variableName", "groupVariableName"; "originVariableName",
/// optional; a "classFormation" of two category lists is refused.
void PlanWaldWolfRuns(const QKSettings& entry, TARNPlan& plan);
