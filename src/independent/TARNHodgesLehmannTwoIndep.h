#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "independent/TwoGroups.h"
#include "support/TieCorrection.h"
#include "support/WeightedOrder.h"

/// The Hodges-Lehmann estimate of the shift of two independent groups, setting "IHodgesLehmannEstimateGroups".
class TARNHodgesLehmannTwoIndep : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex" and "confidenceLevel".
    explicit TARNHodgesLehmannTwoIndep(std::unique_ptr<QKSettings> testSettings)
        : ColumnTest(std::move(testSettings)) {}

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
    /// An interval by the positions at which its ends stand.
    struct Positions {
        double lower;
        double upper;
        bool operator==(const Positions&) const = default;
    };

    struct Interval {
        double estimate = 0;
        double lower = 0;
        double upper = 0;
        bool operator==(const Interval&) const = default;
    };

    void ExtendTieRun(double value, std::int32_t weight);
    void Estimate();
    void TakeTextbook(const Positions& whole, const PairwiseDifferences& differences);
    Positions PositionsOf(const TieCorrection& correction, const Arithmetic& by) const;

    UnivariateResults* univariateResults = nullptr;
    double confidenceLevel = kDefaultConfidenceLevel;
    TwoGroups groups;
    GroupSplit split;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    int weightIndex = -1;
    double previousValue = 0;
    std::int64_t runWeight = 0;
    // Of the runs that are closed, counted in 32 bits and as wide as they are.
    TieCorrection ties;
    TieCorrection wideTies;
    /// One entry per record, for each group.
    std::array<std::vector<WeightedDifference>, 2> lists;
    /// Weighted sizes of the groups; -1 until the first record.
    std::array<std::int64_t, 2> groupCounts{};
    Interval found;
};

/// The plan builder of "IHodgesLehmannEstimateGroups". Keys: "variableName" and "groupVariableName", one field each;
/// "originVariableName", optional.
void PlanHodgesLehmannTwoIndep(const QKSettings& entry, TARNPlan& plan);
