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
    /// The difference of the distribution functions in whole numbers, n1 n2 times it, and the largest and the smallest
    /// one that was taken. A division for each value would take most of the time of the walk, and nearly all of them
    /// are far from the extremes.
    struct Extent {
        std::int64_t largest = std::numeric_limits<std::int64_t>::min() / 2;
        std::int64_t smallest = std::numeric_limits<std::int64_t>::max() / 2;
        std::int64_t reach = 0;  // what rounding may make of a difference; below 0: all are taken
    };

    /// What becomes of a record of neither group.
    enum class Strangers { kCountAsSecond, kAreLeftOut };

    /// How far a walk over the values has come in each group, and what it has found.
    struct Walk {
        explicit Walk(Strangers treatment) : strangers(treatment) {}

        Strangers strangers;
        std::array<std::int64_t, 2> cumulative{};
        ExtremeDifferences extremes;
        Extent extent;
        double lastValue = QKMV::Missing();  // of the run in hand
        bool beganInGroup = false;
        QKStatus status;
    };

    void ReadSettings();
    void Count(const double* values, const std::int32_t* weights);
    void BeginWalks();
    void Take(Walk& taking, const double* values, const std::int32_t* weights) const;
    double ShareOf(std::size_t group, const Walk& taking) const;
    bool MayBeExtreme(Walk& taking) const;
    void TakeDifference(Walk& taking) const;
    void EndWalks();
    void ComputeSignificance();

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    TwoGroups groups{{0}, {1}};
    bool userSpecifyGroupList = false;
    double sigLevel = kDefaultSigLevel;
    std::array<std::int64_t, 2> sizes{};
    GroupHistograms histograms{GroupHistogram(arithmetic),
                               GroupHistogram(arithmetic)};  // their ranges bound the distribution functions
    ExtremeDifferences extremes;
    GroupSplit split;
    bool walksCounts = true;  // numbers alone, no weight below 0, and every record in a group
    bool hasStrangers = false;
    Walk walk{Strangers::kCountAsSecond};
    Walk walkByTextbook{Strangers::kAreLeftOut};
    bool walksTwice = false;
    double z = 0;
    double sig = 0;
    std::size_t passCounter = 0;
};

/// The plan builder of "IKolmogorovSmirnov". Keys: "variableName" and "groupVariableName", one field each, the second
/// one of two categories; "originVariableName", optional.
void PlanKSmirnowTwoSample(const QKSettings& entry, TARNPlan& plan);
