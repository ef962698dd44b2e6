#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/TARNPlan.h"
#include "contract/TARNTest.h"
#include "independent/GroupHistogram.h"
#include "independent/TwoGroups.h"
#include "platform/common/QKMV.h"
#include "support/KolmogorovSignificance.h"

/// The Kolmogorov-Smirnov test of two independent groups, setting "IKolmogorovSmirnov".
class TARNKSmirnowTwoSample : public TARNTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel", and
    /// "group1List" and "group2List", category indices, where they are there. Its plan builder writes no lists: the
    /// groups are then the categories 0 and 1.
    explicit TARNKSmirnowTwoSample(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override { return !status.IsError() && passCounter++ == 0; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// One group and how far the walk over the values has come in it.
    struct Sample {
        std::uint32_t n = 0;
        std::uint32_t cumulative = 0;
        GroupHistogram variable;

        double DistributionAt(double value) const;
    };

    void ReadSettings();
    void Walk(double value, std::size_t group, std::int32_t category, std::int32_t weight);
    void TakeDifference();
    void ComputeSignificance();

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    TwoGroups groups{{0}, {1}};
    bool userSpecifyGroupList = false;
    double sigLevel = kDefaultSigLevel;
    std::array<Sample, 2> samples;
    ExtremeDifferences extremes;
    /// Of the run in hand.
    double lastValue = QKMV::Missing();
    /// The category of the first record of the walk.
    std::int32_t lastGroup = -1;
    double z = 0;
    double sig = 0;
    std::size_t passCounter = 0;
};

/// The plan builder of "IKolmogorovSmirnov". Keys: "variableName" and "groupVariableName", one field each, the second
/// one of two categories; "originVariableName", optional.
void PlanKSmirnowTwoSample(const QKSettings& entry, TARNPlan& plan);
