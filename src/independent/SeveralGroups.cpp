#include "independent/SeveralGroups.h"

#include <numeric>
#include <span>

#include "support/UnivariateResults.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

namespace {

constexpr std::int32_t kFewestCategories = 2;
constexpr std::size_t kFewestToCompare = 3;
constexpr int kOverallPasses = 3;

}  // namespace

GroupedFields PlanSeveralGroups(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes,
                                const ComparisonRules& rules) {
    const GroupedFields fields = PlanGroupedFields(builder, plan, codes, AfterFailedTestField::kStop);
    builder.RequestOriginFrequencies(Origins::kOne);
    builder.ReadComparison(rules);
    return fields;
}

// ---- What comes next ----

QKStatus SeveralGroups::BeginPass() {
    const bool isFirstPass = phase == Phase::kOverall && overallPass == kSizesPass;
    if (isFirstPass && rules_.failedPlan == FailedPlan::kShowsFields) ReadFields();
    if (status.IsError()) return status;
    if (isFirstPass) {
        BeginSizes();
    } else if (phase == Phase::kOverall && overallPass == kQuantilesPass) {
        BeginOverall();
    }
    if (isPrepared || status.IsError()) return status;
    if (phase == Phase::kPairs) {
        isPreparing = preparesComparisons;
    } else if (IsStepping()) {
        if (!stepsBegun) BeginSteps();
        stepsBegun = true;
        isPreparing = preparesComparisons;
    }
    return status;
}

QKStatus SeveralGroups::EndPass() {
    split.Release();
    if (status.IsError()) return status;
    --passesRemaining;
    const bool endsStep = IsStepping();
    if (phase == Phase::kOverall) {
        if (overallPass == kSizesPass) FindGroups();
        if (overallPass == kQuantilesPass) {
            for (GroupBoxPlot& box : groupBoxes) box.Finish();
        }
        EndOverallPass();
        ++overallPass;
    }
    if (isPreparing) {
        EndPreparation();
    } else if (phase == Phase::kPairs) {
        EndPairs();
        pairwiseDone = true;
    } else if (endsStep) {
        EndStep();
    }
    isPrepared = isPreparing;
    isPreparing = false;
    phase = NextPhase();
    if (phase == Phase::kFinished || status.IsError()) Release();
    return status;
}

SeveralGroups::Phase SeveralGroups::NextPhase() const {
    if (overallPass < OverallPasses()) return Phase::kOverall;
    if (wanted.pairwise && !pairwiseDone) return Phase::kPairs;
    if (wanted.stepwise && !steps.IsDone()) return Phase::kSteps;
    return Phase::kFinished;
}

int SeveralGroups::OverallPasses() const {
    return isBrief ? BriefPasses() : kOverallPasses;
}

bool SeveralGroups::IsStepping() const {
    const bool isEarly = rules_.firstStep == FirstStep::kWithTheOutliers && phase == Phase::kOverall &&
                         overallPass == kOutliersPass && wanted.stepwise;
    return isEarly || phase == Phase::kSteps;
}

bool SeveralGroups::NeedsAnotherPass() {
    const bool isOpen = phase != Phase::kFinished;
    if (rules_.foretold == Foretold::kOnceOnly && (isOpen || status.IsError())) passesRemaining = 0;
    return isOpen && !status.IsError();
}

void SeveralGroups::Settle(bool isSignificant) {
    if (isSignificant && activeGroups.size() >= kFewestToCompare) return;
    for (const TestMessage& warning : wanted.Refuse(isSignificant ? rules_.tooFewGroups : rules_.notSignificant)) {
        AddStatusMessage(warning.status, warning.kind);
    }
    passesRemaining = OverallPasses() - 1 - overallPass;
}

void SeveralGroups::EndStep() {
    AddMessages(steps.EndPass(sigLevel, [this](SubsetRecord& range) { return ComputeStep(range); }));
}

// ---- Settings, groups and their boxes ----

void SeveralGroups::ReadFields() {
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
}

void SeveralGroups::BeginSizes() {
    ReadFields();
    ReadOwnSettings();
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    wanted = ComparisonRequest::OfTest(*settings, steps.Rules().wanted);
    CountCategories();
    if (status.IsError()) return;
    groupSizes.assign(static_cast<std::size_t>(categoryCount), 0);
    std::vector<std::int32_t> categories(groupSizes.size());
    std::iota(categories.begin(), categories.end(), 0);
    split.SetGroups(std::move(categories), groupSizes.size());
    passesRemaining = OverallPasses() + (wanted.pairwise ? rules_.passesOfPairs : 0);
    if (wanted.stepwise) passesRemaining += rules_.passesOfStep * (categoryCount - 2);
}

void SeveralGroups::CountCategories() {
    if (univariateResults == nullptr) {
        AddStatusMessage(QKStatus(rules_.noUnivariateResults), MessageKind::kError);
        return;
    }
    categoryCount = univariateResults->GetCategoryCount(groupVariableIndex);
    if (categoryCount < kFewestCategories) {
        AddStatusMessage(QKStatus(rules_.tooFewCategories), MessageKind::kError);
    }
}

void SeveralGroups::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

void SeveralGroups::FindGroups() {
    for (std::int64_t& size : groupSizes) size = arithmetic.Count(size);
    for (std::int32_t category = 0; category < categoryCount; ++category) {
        const std::int64_t size = SizeOf(category);
        if (rules_.groups == GroupsAre::kOfPositiveSize ? size > 0 : size != 0) activeGroups.push_back(category);
    }
    split.SetGroups(PlacesOf(activeGroups), activeGroups.size());
}

std::vector<std::int32_t> SeveralGroups::PlacesOf(const std::vector<std::int32_t>& categories) const {
    std::vector<std::int32_t> places(static_cast<std::size_t>(categoryCount), GroupSplit::kNoGroup);
    for (std::size_t place = 0; place < categories.size(); ++place) {
        places[static_cast<std::size_t>(categories[place])] = static_cast<std::int32_t>(place);
    }
    return places;
}

void SeveralGroups::BeginBoxes() {
    if (!isBrief || NeedsMedians()) {
        for (const std::int32_t group : activeGroups) {
            groupBoxes.emplace_back(SizeOf(group));
        }
    }
    if (activeGroups.empty()) AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
}

// ---- Records ----

QKStatus SeveralGroups::ProcessColumns(ColumnBatch& batch) {
    split.Take(batch, groupVariableIndex);
    const GroupedRecords records{batch.Size(), batch.Values(variableIndex), batch.Weights(weightIndex), split.Groups(),
                                 batch.WholeNumbers(groupVariableIndex)};
    if (phase == Phase::kOverall) {
        if (overallPass == kSizesPass) {
            AddSizes(records);
        } else if (!groupBoxes.empty()) {
            AddToBoxes(records);
        }
    }
    Take(records);
    return status;
}

void SeveralGroups::AddSizes(const GroupedRecords& records) {
    for (std::size_t i = 0; i < records.size; ++i) {
        if (records.groups[i] == GroupSplit::kNoGroup) continue;
        groupSizes[static_cast<std::size_t>(records.groups[i])] += records.weights[i];
        sumOfWeights += records.weights[i];
        hasNegativeWeight = hasNegativeWeight || records.weights[i] < 0;
    }
}

void SeveralGroups::AddToBoxes(const GroupedRecords& records) {
    const bool areQuantiles = overallPass == kQuantilesPass;
    if (!areQuantiles && isBrief) return;
    split.Part(records.values, areQuantiles && weightIndex >= 0 ? records.weights : nullptr);
    for (std::size_t place = 0; place < groupBoxes.size(); ++place) {
        const std::span<const double> values = split.Values(place);
        if (areQuantiles) {
            groupBoxes[place].AddAscendingToQuantiles(values.data(), split.Weights(place), values.size());
        } else {
            groupBoxes[place].AddAscendingToOutliers(values.data(), nullptr, values.size());
        }
    }
}

// ---- Element ----

void SeveralGroups::AddBoxes(ResultElement& element, const std::function<void(StructuredTable&)>& addOverall,
                             const std::function<void(StructuredTable&, std::size_t place)>& addGroup) const {
    const bool byCategory = rules_.boxes == BoxesAre::kByCategory;
    StructuredTable boxes = element.AddTable(TableName::kBoxPlotInfo);
    boxes.Row(RowName::kGroupFieldIndex, groupVariableIndex);
    boxes.Row(RowName::kGroupCount, byCategory ? categoryCount : static_cast<std::int32_t>(activeGroups.size()));
    if (addOverall) addOverall(boxes);
    for (std::size_t place = 0; place < activeGroups.size(); ++place) {
        const std::int32_t group = activeGroups[place];
        StructuredTable table = boxes.Table(GroupTableName(byCategory ? static_cast<std::size_t>(group) : place));
        table.Row(RowName::kGroupIndex, group);
        if (addGroup) addGroup(table, place);
        if (!isBrief) groupBoxes[place].AddTables(table);
    }
}

void SeveralGroups::AddSteps(ResultElement& element, const ComparedSamples& samples) const {
    if (!steps.IsDone()) return;
    // The search has reported the groups that stand alone; writing them adds nothing to that.
    static_cast<void>(AddStepwiseResult(element, steps, samples));
}
