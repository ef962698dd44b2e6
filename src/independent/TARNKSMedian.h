#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/TARNPlan.h"
#include "independent/MedianSubset.h"
#include "independent/SeveralGroups.h"

/// The median test of several independent groups, setting "IMedian", with its comparisons and the box plots of the
/// groups. In the second and third phase passes for the medians of the subsets alternate with those that count; with a
/// given median all of them count.
class TARNKSMedian : public SeveralGroups {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "userSpecifyMedian", "median", "pairWise" and "stepWise".
    explicit TARNKSMedian(std::unique_ptr<QKSettings> testSettings);

    QKStatus BeginPass() override;
    QKStatus ProcessRecord(Record& record) override;
    QKStatus EndPass() override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
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
    bool Judge(MedianSubset& subset, Mode mode, const std::vector<std::int32_t>& named);
    void MakeDegenerate(MedianSubset& subset, Mode mode, const long (&codes)[3],
                        const std::vector<std::int32_t>& named);
    double DecidingSig() const;
    FourfoldTable TableOf(const MedianSubset& subset) const;

    void AddStatistics(ResultElement& element) const;
    void AddMedianBoxes(ResultElement& element) const;
    ComparedSamples Samples(const std::vector<std::int32_t>& groups) const;

    bool userSpecifyMedian = false;
    double givenMedian = 0;
    bool findsMedians = false;  // what the pass of the second or third phase is for
    bool hasStepped = false;
    MedianSubset overall{-1, -1};
    bool fisherComputed = false;
    double fisherSig = 0;
    bool yatesComputed = false;
    double yatesChiSquare = 0;
    double yatesSig = 0;
    std::vector<MedianSubset> pairSubsets;
    std::vector<std::int32_t> sortedGroups;  // categories, in ascending order of their medians
    std::vector<MedianSubset> stepSubsets;   // by their first positions among the sorted groups
};

/// The plan builder of "IMedian". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "userSpecifyMedian" with "median", and "typeOfMultipleComparison", optional.
void PlanKSMedian(const QKSettings& entry, TARNPlan& plan);
