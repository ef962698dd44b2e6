#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "contract/TARNPlan.h"
#include "independent/RangeRanks.h"
#include "independent/SeveralGroups.h"
#include "independent/TieScan.h"
#include "platform/common/QKMV.h"
#include "support/PairwiseComparison.h"
#include "support/TARNRank.h"
#include "support/WideNumber.h"

/// The Kruskal-Wallis test of several independent groups, setting "IKruskalWallis", with its comparisons and the box
/// plots of the groups. Its statistic needs the first pass alone, and pairs none of their own.
class TARNKruskalWOneWay : public SeveralGroups {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "numberOfCategories" and "typeOfMultipleComparison".
    explicit TARNKruskalWOneWay(std::unique_ptr<QKSettings> testSettings);

    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// What comes out when some of the groups are tested among themselves.
    struct Result {
        std::int64_t totalN = 0;
        double statistic = QKMV::Missing();
        double degreesOfFreedom = QKMV::Missing();
        double sig = QKMV::Missing();
    };

    /// Some groups as they are ranked among themselves; each of the functions is of one of them, named by its category.
    struct Ranking {
        std::function<double(std::int32_t)> sumOfRanks;
        /// Less the half of a number.
        std::function<long double(std::int32_t, WideNumber)> sumAbove;
        double tieSum;
        /// N cubed minus N less the sum over the ties, for a total of N.
        std::function<long double(std::int64_t)> spread;
    };

    void CountCategories() override;
    int BriefPasses() const override;
    bool NeedsMedians() const override { return wanted.stepwise; }
    void BeginOverall() override;
    void Take(const GroupedRecords& records) override;
    void EndOverallPass() override;
    void BeginSteps() override;
    StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) override;
    void EndStep() override;
    void Release() override;

    void TakeStep(const GroupedRecords& records);
    void ComparePairs();
    Result ComputeH(const std::vector<std::int32_t>& groups, const Ranking& ranking);
    Ranking RankingOf(const SubsetRecord& range);
    PairRecord Compare(std::int32_t a, std::int32_t b) const;
    const GroupRankStats& RanksOf(std::int32_t group) const { return groupRanks[static_cast<std::size_t>(group)]; }
    double SizeAsNumber(std::int32_t group) const { return static_cast<double>(SizeOf(group)); }
    double MeanRank(std::int32_t group) const { return RanksOf(group).sumOfRanks / SizeAsNumber(group); }
    long double MeanRankAboveMiddle(std::int32_t group) const;
    void NoteSubsets() const;
    std::int32_t PositionOf(std::int32_t group) const { return positionOf[static_cast<std::size_t>(group)]; }
    ComparedSamples Samples(const std::vector<std::int32_t>& groups) const;
    ComparedSamples PairedSamples() const;

    TARNRank wholeRank{arithmetic};
    std::vector<GroupRankStats> groupRanks;  // per category, over all records
    double tieSum = 0;
    long double spread = 0;  // N cubed minus N less that sum
    Result overall;
    std::vector<PairRecord> pairs;

    std::vector<std::int32_t> sortedGroups;
    std::vector<std::int32_t> positionOf;  // per category its place among the sorted groups
    /// The ranks of all subsets come from one walk, made with the first step, where that is the same to the last bit;
    /// else each subset is ranked in each step.
    enum class StepRanks { kNone, kAwaitWalk, kOfOneWalk, kOfEachStep };
    StepRanks stepRanks = StepRanks::kNone;
    TieScan tieScan;
    RangeRanks rangeRanks;
    std::vector<TARNRank> subsetRanks;    // of the subsets under test, by their first positions
    std::vector<std::int32_t> positions;  // of the records of a batch
};

/// The plan builder of "IKruskalWallis". Keys: "variableName", "groupVariableName", "typeOfMultipleComparison";
/// "originVariableName", optional.
void PlanKruskalWOneWay(const QKSettings& entry, TARNPlan& plan);
