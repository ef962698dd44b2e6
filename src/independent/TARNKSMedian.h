#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contract/TARNPlan.h"
#include "independent/MedianRecords.h"
#include "independent/MedianSubset.h"
#include "independent/SeveralGroups.h"

/// The median test of several independent groups, setting "IMedian", with its comparisons and the box plots of the
/// groups. A pass prepares each comparison; with a given median none does.
class TARNKSMedian : public SeveralGroups {
 public:
    /// Reads from its settings "variableIndex", "groupVariableIndex", "weightVariableIndex", "sigLevel",
    /// "userSpecifyMedian", "median", "pairWise" and "stepWise".
    explicit TARNKSMedian(std::unique_ptr<QKSettings> testSettings);

    QKXML::XMLElement* MakeResultElement() override;

 private:
    /// Which codes a judgement raises.
    enum class Mode { kOverall, kPair, kStep };

    void ReadOwnSettings() override;
    int BriefPasses() const override { return kOutliersPass + 1; }
    bool NeedsMedians() const override { return wanted.pairwise || wanted.stepwise; }
    void BeginOverall() override;
    void Take(const GroupedRecords& records) override;
    void EndOverallPass() override;
    void EndPairs() override;
    void BeginSteps() override;
    void EndPreparation() override { records.Close(); }
    StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) override;
    void Release() override;

    MedianSubset MakeSubset(const std::vector<std::int32_t>& categories) const;
    void TakeOverall(const GroupedRecords& batch);
    MedianSubset CountedSubset(const std::vector<std::int32_t>& categories);
    void Judge(MedianSubset& subset, Mode mode, const std::vector<std::int32_t>& named);
    void MakeDegenerate(MedianSubset& subset, Mode mode, const long (&codes)[3],
                        const std::vector<std::int32_t>& named);
    double DecidingSig() const;

    void AddStatistics(ResultElement& element) const;
    ComparedSamples Samples(const std::vector<std::int32_t>& groups) const;

    bool userSpecifyMedian = false;
    double givenMedian = 0;
    MedianSubset overall{arithmetic};
    std::optional<FourfoldSignificance> ofTwoGroups;
    MedianRecords records;  // of the groups, kept in the first pass of the comparisons
    std::vector<PairRecord> pairs;
    std::vector<std::int32_t> sortedGroups;  // categories, in ascending order of their medians
};

/// The plan builder of "IMedian". Keys: "variableName", "groupVariableName"; "originVariableName",
/// "userSpecifyMedian" with "median", and "typeOfMultipleComparison", optional.
void PlanKSMedian(const QKSettings& entry, TARNPlan& plan);
