#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "independent/GroupBoxPlot.h"
#include "independent/KGroups.h"
#include "independent/MedianSubset.h"
#include "planning/contract/TARNPlan.h"
#include "planning/contract/TARNTest.h"
#include "support/ResultElements.h"

/// The median test of several independent groups, setting "IMedian", with its comparisons and the box plots of the
/// groups.
class TARNKSMedian : public TARNTest {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "userSpecifyMedian", "median", "pairWise" and "stepWise".
    explicit TARNKSMedian(std::unique_ptr<QKSettings> testSettings) : TARNTest(std::move(testSettings)) {}

    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    bool NeedsAnotherPass() override;
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// In the second and third phase passes for the medians of the subsets alternate with those that count; with a
    /// given median all of them count.
    enum class Phase { kOverall, kPairs, kSteps, kFinished };
    /// Which codes a judgement raises, and how its significance is adjusted.
    enum class Mode { kOverall, kPair, kStep };

    void BeginSizes();
    void BeginOverall();
    void BeginPairs();
    void BeginSteps();
    void ShrinkSubsets();
    MedianSubset MakeSubset(const std::vector<std::int32_t>& categories) const;
    void CountOverall(const Record& record, double value, std::int32_t weight, std::int32_t category);
    void AddToSubset(MedianSubset& subset, double value, std::int32_t weight, std::int32_t category) const;
    void EndOverall();
    void EndPairs();
    void EndStep();
    void Refuse(const RefusalCodes& codes);
    bool Judge(MedianSubset& subset, Mode mode, const std::vector<std::int32_t>& named);
    void MakeDegenerate(MedianSubset& subset, Mode mode, const long (&codes)[3],
                        const std::vector<std::int32_t>& named);
    double DecidingSig() const;
    FourfoldTable TableOf(const MedianSubset& subset) const;

    void AddStatistics(ResultElement& element) const;
    void AddBoxes(ResultElement& element) const;
    ComparedSamples Samples(const std::vector<std::int32_t>& groups) const;

    int weightIndex = -1;
    int variableIndex = -1;
    int groupVariableIndex = -1;
    double sigLevel = 0.05;
    bool userSpecifyMedian = false;
    double givenMedian = 0;
    std::int32_t categoryCount = 0;
    bool overallDone = false;
    GroupComparisons comparisons;
    UnivariateResults* univariateResults = nullptr;
    Phase phase = Phase::kOverall;
    int overallPass = 0;
    bool findsMedians = false;  // what the pass of the second or third phase is for
    bool hasStepped = false;
    std::vector<GroupBoxPlot> groupBoxes;  // of the groups with cases, in their order
    GroupSizes groupSizes;
    std::vector<std::int32_t> activeGroups;  // categories with cases
    MedianSubset overall{-1, -1};
    bool overallSignificant = false;
    bool fisherComputed = false;
    double fisherSig = 0;
    bool yatesComputed = false;
    double yatesChiSquare = 0;
    double yatesSig = 0;
    std::vector<MedianSubset> pairSubsets;
    std::vector<std::int32_t> sortedGroups;  // categories, in ascending order of their medians
    StepwiseComparison steps{ComparisonRulesOf::kKSMedian};
    std::vector<MedianSubset> stepSubsets;  // by their first positions among the sorted groups
};

/// The plan builder of "IMedian". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "userSpecifyMedian" with "median", and "typeOfMultipleComparison", optional.
void PlanKSMedian(const QKSettings& entry, TARNPlan& plan);
