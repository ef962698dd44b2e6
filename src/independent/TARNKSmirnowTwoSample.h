#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "independent/GroupHistogram.h"
#include "planning/contract/TARNPlan.h"
#include "planning/contract/TARNTest.h"
#include "platform/common/QKMV.h"
#include "support/KolmogorovSignificance.h"
#include "support/ResultElements.h"

/// The Kolmogorov-Smirnov test of two independent groups, setting "IKolmogorovSmirnov".
class TARNKSmirnowTwoSample : public TARNTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel", and, which no
    /// plan builder writes, "group1List" and "group2List".
    explicit TARNKSmirnowTwoSample(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override;
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    static constexpr std::size_t kFirst = 0;
    static constexpr std::size_t kSecond = 1;
    static constexpr std::size_t kNeither = 2;

    /// One of the groups on the walk.
    struct Group {
        explicit Group(std::int32_t category) : categories{category} {}

        std::vector<std::int32_t> categories;
        std::uint32_t n = 0;
        std::uint32_t cumulated = 0;
        double min = QKMV::Missing();  // the first and the last value, which are these as records come sorted
        double max = QKMV::Missing();
        GroupHistogram variable;

        /// The distribution function of the group at a value.
        double DistributionAt(double value) const;
    };

    void ReadSettings();
    std::size_t GroupOf(std::int32_t category) const;
    QKStatus Walk(double value, std::uint32_t weight, std::int32_t category);
    QKStatus EvaluateDifference();
    void EndWalk();

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    double sigLevel = 0.05;
    bool userSpecifyGroupList = false;
    std::array<Group, 2> groups{Group(0), Group(1)};
    std::size_t passCounter = 0;
    double lastValue = QKMV::Missing();  // of the run of equal values in hand
    std::int32_t lastGroup = -1;         // category of the record at which the walk began
    ExtremeDifferences differences;
    double z = 0;
    double sig = 0;
};

/// The plan builder of "IKolmogorovSmirnov". Keys: "variableName", "groupVariableName"; "originVariableName", optional.
void PlanKSmirnowTwoSample(const QKSettings& entry, TARNPlan& plan);
