#include "independent/SeveralGroups.h"

#include <cstddef>
#include <string>

#include "platform/common/Truncation.h"
#include "support/Int32.h"
#include "support/UnivariateResults.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

namespace {

constexpr std::int32_t kFewestCategories = 2;
constexpr std::size_t kFewestToCompare = 3;

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

std::vector<std::int32_t> GroupSizes::WithCases(std::int32_t categoryCount) const {
    std::vector<std::int32_t> categories;
    for (std::int32_t category = 0; category < categoryCount; ++category) {
        if (Of(category) > 0) categories.push_back(category);
    }
    return categories;
}

// ---- Passes ----

void SeveralGroups::ReadCommonSettings() {
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    wanted = ComparisonRequest::OfTest(*settings, steps.Rules().wanted);
    if (univariateResults == nullptr) {
        AddStatusMessage(QKStatus(codes_.noUnivariateResults), MessageKind::kError);
        return;
    }
    categoryCount = univariateResults->GetCategoryCount(groupVariableIndex);
    if (categoryCount < kFewestCategories) AddStatusMessage(QKStatus(codes_.tooFewCategories), MessageKind::kError);
}

void SeveralGroups::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

std::int32_t SeveralGroups::CategoryOf(const Record& record) const {
    const std::int32_t category = TruncateToInt32(record[static_cast<std::size_t>(groupVariableIndex)]);
    return category >= 0 && category < categoryCount ? category : -1;
}

void SeveralGroups::BeginBoxes() {
    activeGroups = groupSizes.WithCases(categoryCount);
    for (const std::int32_t group : activeGroups) {
        groupBoxes.emplace_back(groupSizes.Of(group), variableIndex, weightIndex, GroupBoxPlot::kNoCaseId);
    }
    if (activeGroups.empty()) AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
}

bool SeveralGroups::NeedsAnotherPass() {
    const bool pairsAreOpen = wanted.pairwise && !pairwiseDone;
    const bool stepsAreOpen = wanted.stepwise && !stepwiseDone;
    const bool isOpen = !overallDone || pairsAreOpen || stepsAreOpen;
    if (isOpen || status.IsError()) passesRemaining = 0;
    return isOpen && !status.IsError();
}

void SeveralGroups::EndOverallPhase(bool overallSignificant) {
    overallDone = true;
    if (!overallSignificant) {
        Refuse(codes_.notSignificant);
    } else if (activeGroups.size() < kFewestToCompare) {
        Refuse(codes_.tooFewGroups);
    }
    phase = wanted.pairwise ? Phase::kPairs : wanted.stepwise ? Phase::kSteps : Phase::kFinished;
}

void SeveralGroups::Refuse(const RefusalCodes& refusal) {
    AddMessages(wanted.Refuse(refusal));
    passesRemaining = 0;
}

void SeveralGroups::EndPairsPhase() {
    pairwiseDone = true;
    phase = wanted.stepwise ? Phase::kSteps : Phase::kFinished;
}

void SeveralGroups::EndStepsPhase() {
    if (!steps.IsDone()) return;
    stepwiseDone = true;
    phase = Phase::kFinished;
}

// ---- Element ----

void SeveralGroups::AddBoxes(ResultElement& element, const std::function<void(StructuredTable&)>& addOverall,
                             const std::function<void(StructuredTable&, std::size_t place)>& addGroup) const {
    StructuredTable boxes = element.AddTable(TableName::kBoxPlotInfo);
    boxes.Row(RowName::kGroupFieldIndex, groupVariableIndex);
    boxes.Row(RowName::kGroupCount, static_cast<std::int32_t>(groupBoxes.size()));
    if (addOverall) addOverall(boxes);
    for (std::size_t place = 0; place < groupBoxes.size(); ++place) {
        StructuredTable table = boxes.Table(GroupTableName(place));
        table.Row(RowName::kGroupIndex, activeGroups[place]);
        if (addGroup) addGroup(table, place);
        groupBoxes[place].AddTables(table);
    }
}

void SeveralGroups::AddSteps(ResultElement& element, const ComparedSamples& samples) const {
    // The search has told of the groups that stand alone; writing them adds no word to that.
    static_cast<void>(AddStepwiseResult(element, steps, samples));
}
