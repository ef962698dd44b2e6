#include "independent/SeveralGroups.h"

#include <cstddef>

#include "platform/common/Truncation.h"
#include "support/Int32.h"
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

// ---- Sizes ----

void GroupSizes::Add(std::int32_t category, std::int32_t weight) {
    const auto index = static_cast<std::size_t>(category);
    if (index >= sizes.size()) sizes.resize(index + 1, 0);
    sizes[index] = Add32(sizes[index], weight);
}

std::int32_t GroupSizes::Of(std::int32_t category) const {
    const auto index = static_cast<std::size_t>(category);
    return index < sizes.size() ? sizes[index] : 0;
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
        BeginPairs();
        isPreparing = preparesComparisons;
    } else if (IsStepping()) {
        stepsBegun ? BeginNextStep() : BeginSteps();
        stepsBegun = true;
        isPreparing = preparesComparisons;
    }
    return status;
}

QKStatus SeveralGroups::EndPass() {
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
    return status;
}

SeveralGroups::Phase SeveralGroups::NextPhase() const {
    if (overallPass < kOverallPasses) return Phase::kOverall;
    if (wanted.pairwise && !pairwiseDone) return Phase::kPairs;
    if (wanted.stepwise && !steps.IsDone()) return Phase::kSteps;
    return Phase::kFinished;
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
    passesRemaining = kOverallPasses - 1 - overallPass;
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
    passesRemaining = kOverallPasses + (wanted.pairwise ? rules_.passesOfPairs : 0);
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

std::int32_t SeveralGroups::CategoryOf(const Record& record) const {
    const std::int32_t category = TruncateToInt32(record[static_cast<std::size_t>(groupVariableIndex)]);
    return category >= 0 && category < categoryCount ? category : -1;
}

void SeveralGroups::FindGroups() {
    for (std::int32_t category = 0; category < categoryCount; ++category) {
        const std::int32_t size = groupSizes.Of(category);
        if (rules_.groups == GroupsAre::kOfPositiveSize ? size > 0 : size != 0) activeGroups.push_back(category);
    }
}

void SeveralGroups::BeginBoxes() {
    for (const std::int32_t group : activeGroups) {
        groupBoxes.emplace_back(groupSizes.Of(group), variableIndex, weightIndex, GroupBoxPlot::kNoCaseId);
    }
    if (activeGroups.empty()) AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
}

// ---- Element ----

void SeveralGroups::AddBoxes(ResultElement& element, const std::function<void(StructuredTable&)>& addOverall,
                             const std::function<void(StructuredTable&, std::size_t place)>& addGroup) const {
    const bool byCategory = rules_.boxes == BoxesAre::kByCategory;
    StructuredTable boxes = element.AddTable(TableName::kBoxPlotInfo);
    boxes.Row(RowName::kGroupFieldIndex, groupVariableIndex);
    boxes.Row(RowName::kGroupCount, byCategory ? categoryCount : static_cast<std::int32_t>(groupBoxes.size()));
    if (addOverall) addOverall(boxes);
    for (std::size_t place = 0; place < groupBoxes.size(); ++place) {
        const std::int32_t group = activeGroups[place];
        StructuredTable table = boxes.Table(GroupTableName(byCategory ? static_cast<std::size_t>(group) : place));
        table.Row(RowName::kGroupIndex, group);
        if (addGroup) addGroup(table, place);
        groupBoxes[place].AddTables(table);
    }
}

void SeveralGroups::AddSteps(ResultElement& element, const ComparedSamples& samples) const {
    if (!steps.IsDone()) return;
    // The search has reported the groups that stand alone; writing them adds nothing to that.
    static_cast<void>(AddStepwiseResult(element, steps, samples));
}
