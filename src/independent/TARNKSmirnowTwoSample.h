#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "independent/GroupHistogram.h"
#include "independent/TwoGroups.h"
#include "platform/common/QKMV.h"
#include "support/KolmogorovSignificance.h"

/// The Kolmogorov-Smirnov test of two independent groups, setting "IKolmogorovSmirnov".
class TARNKSmirnowTwoSample : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel", and
    /// "group1List" and "group2List", category indices, where they are there. Its plan builder writes no lists: the
    /// groups are then the categories 0 and 1.
    explicit TARNKSmirnowTwoSample(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return !status.IsError() && passCounter++ == 0; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// One group and how far the walk over the values has come in it.
    struct Sample {
        std::uint32_t n = 0;
        std::uint32_t cumulative = 0;
    };

    /// The difference of the distribution functions in whole numbers, n1 n2 times it, and the largest and the smallest
    /// one that was taken. A division for each value would take most of the time of the walk, and nearly all of them
    /// are far from the extremes.
    struct Extent {
        std::int64_t largest = std::numeric_limits<std::int64_t>::min() / 2;
        std::int64_t smallest = std::numeric_limits<std::int64_t>::max() / 2;
        std::int64_t reach = 0;  // what rounding may make of a difference; below 0: all are taken
    };

    void ReadSettings();
    void Count(const double* values, const std::int32_t* weights);
    void BeginWalk();
    void Walk(const double* values, const std::int32_t* weights);
    double DistributionAt(std::size_t group, double value) const;
    bool MayBeExtreme();
    void TakeDifference();
    void ComputeSignificance();

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    TwoGroups groups{{0}, {1}};
    bool userSpecifyGroupList = false;
    double sigLevel = kDefaultSigLevel;
    std::array<Sample, 2> samples;
    GroupHistograms histograms{GroupHistogram(arithmetic),
                               GroupHistogram(arithmetic)};  // their ranges bound the distribution functions
    ExtremeDifferences extremes;
    GroupSplit split;
    bool walksCounts = true;  // numbers alone, no weight below 0, and every record in a group
    Extent extent;
    double lastValue = QKMV::Missing();  // of the run in hand
    bool walkBeganInGroup = false;
    double z = 0;
    double sig = 0;
    std::size_t passCounter = 0;
};

/// The plan builder of "IKolmogorovSmirnov". Keys: "variableName" and "groupVariableName", one field each, the second
/// one of two categories; "originVariableName", optional.
void PlanKSmirnowTwoSample(const QKSettings& entry, TARNPlan& plan);
