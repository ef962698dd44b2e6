#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contract/TARNPlan.h"
#include "independent/MedianSubset.h"
#include "independent/SeveralGroups.h"

/// The median test of several independent groups, setting "IMedian", with its comparisons and the box plots of the
/// groups. A pass for the medians of the subsets prepares each comparison; with a given median none does.
class TARNKSMedian : public SeveralGroups {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "userSpecifyMedian", "median", "pairWise" and "stepWise".
    explicit TARNKSMedian(std::unique_ptr<QKSettings> testSettings);

    QKStatus ProcessRecord(Record& record) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// Which codes a judgement raises.
    enum class Mode { kOverall, kPair, kStep };

    void ReadOwnSettings() override;
    void BeginOverall() override;
    void EndOverallPass() override;
    void BeginPairs() override;
    void EndPairs() override;
    void BeginSteps() override;
    void BeginNextStep() override;
    void EndPreparation() override;
    StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) override;
    MedianSubset MakeSubset(const std::vector<std::int32_t>& categories) const;
    void CountOverall(const Record& record, double value, std::int32_t weight, std::int32_t category);
    void AddToSubset(MedianSubset& subset, double value, std::int32_t weight, std::int32_t category) const;
    void Judge(MedianSubset& subset, Mode mode, const std::vector<std::int32_t>& named);
    void MakeDegenerate(MedianSubset& subset, Mode mode, const long (&codes)[3],
                        const std::vector<std::int32_t>& named);
    double DecidingSig() const;

    void AddStatistics(ResultElement& element) const;
    ComparedSamples Samples(const std::vector<std::int32_t>& groups) const;

    bool userSpecifyMedian = false;
    double givenMedian = 0;
    MedianSubset overall{-1, -1};
    std::optional<FourfoldSignificance> ofTwoGroups;
    std::vector<MedianSubset> pairSubsets;
    std::vector<std::int32_t> sortedGroups;  // categories, in ascending order of their medians
    std::vector<MedianSubset> stepSubsets;   // by their first positions among the sorted groups
};

/// The plan builder of "IMedian". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "userSpecifyMedian" with "median", and "typeOfMultipleComparison", optional.
void PlanKSMedian(const QKSettings& entry, TARNPlan& plan);
