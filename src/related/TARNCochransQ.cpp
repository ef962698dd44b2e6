// Cochran's Q test over related dichotomous fields.
//
// Question    Do k fields have the same proportion of successes?
// Data        Records that miss none of the fields; each is a block. Success is a list of categories or, without one,
//             the first field's category in the first record.
// Statistic   Q = (k sum of T_j^2 - (sum of T_j)^2) (k - 1) / (k sum of L_i - sum of L_i^2), T_j the successes of a
//             field, L_i those of a record: chi-square with k - 1 degrees of freedom. After a significant result on
//             three fields and more, all pairs or homogeneous subsets on request.
// Source      Cochran (1950), Biometrika 37, 256-266; pairs: Marascuilo and McSweeney (1967), Psychological Bulletin
//             67, 401-412.
// Degenerate  No success, or nothing but successes: an error. Every record all success or all failure: Q 0, retained.

#include "related/TARNCochransQ.h"

#include <algorithm>
#include <array>

#include "contract/TARNPlanBuilder.h"
#include "related/BlockWeights.h"
#include "support/ComparisonTables.h"
#include "support/Int32.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_R_CochransQ_1";
constexpr const char* kConditionOfList = "CategoryListsAreSpecified_R_CochransQ_1";

constexpr long kUnknownField = 221203_error;
constexpr long kNoUnivariateResults = 221206_error;
constexpr long kCategoriesUnusable = 221209_error;
constexpr long kSuccessUnusable = 221210_error;
constexpr long kThirdCategory = 221213_error;
constexpr long kTooFewFields = 221214_error;
constexpr long kNamesMissing = 221215_error;
constexpr long kNotCategorical = 221216_error;
constexpr RefusalCodes kNotSignificant{.pairwise = 221220_warning, .stepwise = 221218_warning};
constexpr RefusalCodes kTooFewToCompare{.pairwise = 221219_warning, .stepwise = 221217_warning};

constexpr std::size_t kFewestFields = 2;
constexpr std::size_t kFewestToCompare = 3;

}  // namespace

// ---- Plan ----

namespace {

std::vector<int> PlanFields(TARNPlanBuilder& builder, const QKVarList& varList) {
    std::vector<std::string> names;
    if (!builder.Read(SettingKey::kVariableName, names)) {
        builder.Fail(kNamesMissing);
        return {};
    }
    std::vector<int> indices = builder.ResolveFields(names, kUnknownField);
    AddVecSetting(builder.TestSettings(), SettingKey::kVariableIndex, indices, false);
    for (std::size_t i = 0; builder.IsOK() && i < indices.size(); ++i) {
        if (!FieldKind::IsCategorical(varList.GetVarAt(indices[i])->GetKind())) {
            builder.Fail(kNotCategorical, IntToString(indices[i]));
        }
    }
    if (builder.IsOK() && indices.size() < kFewestFields) builder.Fail(kTooFewFields);
    return indices;
}

template <typename Value>
void PlanSuccessList(TARNPlanBuilder& builder, const char* listKey) {
    std::vector<Value> list;
    builder.Read(SettingKey::kSuccessCategoryList, list);
    if (!list.empty()) {
        AddVecSetting(builder.TestSettings(), listKey, list, false);
    } else if (builder.IsOK()) {
        builder.Fail(kSuccessUnusable);
    }
}

void PlanSuccess(TARNPlanBuilder& builder, const QKVarList& varList, const std::vector<int>& indices) {
    std::string formation;
    const bool isGiven =
        builder.Read(SettingKey::kClassFormation, formation) && formation == ClassFormation::kGivenCategoryList;
    builder.TestSettings().AddSetting(SettingKey::kUserSpecifyGroupList, isGiven);
    if (!isGiven) return;
    const bool isNumeric =
        !indices.empty() && varList.GetVarAt(indices.front())->GetKind() == FieldKind::kNumericCategories;
    if (isNumeric) {
        PlanSuccessList<double>(builder, SettingKey::kSuccessCategoryListNum);
    } else {
        PlanSuccessList<std::string>(builder, SettingKey::kSuccessCategoryListStr);
    }
}

}  // namespace

void PlanCochransQ(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const std::vector<int> indices = PlanFields(builder, plan.GetVarList());
    PlanSuccess(builder, plan.GetVarList(), indices);
    builder.ReadComparison(ComparisonRulesOf::kCochransQ);
    if (builder.IsOK()) {
        for (const int field : indices) plan.Request(field, Statistic::kFrequencies);
    }
    builder.AddToMainWorker<TARNCochransQ>(CategoryMatcher(plan.GetVarList()));
}

// ---- Passes ----

QKStatus TARNCochransQ::BeginPass() {
    if (state == State::kOverall) {
        ReadSettings();
        PrepareCategories();  // of a test that its plan builder failed, too: it may show both errors
        if (status.IsError()) return status;
        passesRemaining = comparison.stepwise ? static_cast<int>(variableIndices.size()) - 1 : 1;
        counts = SuccessCounts(arithmetic, variableIndices.size());
    } else if (state == State::kBeforeSteps) {
        orderedSamples = OrderSamples(counts.Proportions());
        steps.Begin(orderedSamples.size(), orderedSamples.size());
        commonSuccesses = CommonSuccesses(orderedSamples.size());
        hasOwnSuccesses = !HaveTheSameSuccesses() && arithmetic.WantsTextbook();
        if (hasOwnSuccesses) ownSuccesses = CommonSuccesses(orderedSamples.size());
        state = State::kSteps;
    }
    return status;
}

void TARNCochransQ::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndices);
    settings->GetSettingValByName(SettingKey::kUserSpecifyGroupList, userSpecifyGroupList);
    settings->GetSettingValByName(SettingKey::kSuccessCategoryListNum, successListNum);
    settings->GetSettingValByName(SettingKey::kSuccessCategoryListStr, successListStr);
    comparison = ComparisonRequest::OfTest(*settings, steps.Rules().wanted);
}

void TARNCochransQ::PrepareCategories() {
    if (univariateResults == nullptr) {
        AddStatusMessage(QKStatus(kNoUnivariateResults), MessageKind::kError);
    } else if (variableIndices.size() < kFewestFields) {
        AddStatusMessage(QKStatus(kTooFewFields), MessageKind::kError);
    } else if (userSpecifyGroupList) {
        success.SetList(variableIndices, successListNum, successListStr);
        // A list is of use if it holds some category and not all.
        if (!success.HasSuccess() || !success.HasFailure()) {
            AddStatusMessage(QKStatus(kSuccessUnusable), MessageKind::kError);
        }
    } else {
        CheckCategoriesOfData();
    }
}

void TARNCochransQ::CheckCategoriesOfData() {
    std::vector<int> categoryCounts;
    for (const int field : variableIndices) categoryCounts.push_back(univariateResults->GetCategoryCount(field));
    const auto classes = success.Categories().CheckTwoClasses(variableIndices, categoryCounts);
    if (classes == CategoryMatcher::Classes::kTwo) return;
    const bool isThird = classes == CategoryMatcher::Classes::kThirdSingleCategory;
    AddStatusMessage(QKStatus(isThird ? kThirdCategory : kCategoriesUnusable), MessageKind::kError);
}

void TARNCochransQ::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.insert(fieldIndices.end(), variableIndices.begin(), variableIndices.end());
}

QKStatus TARNCochransQ::ProcessColumns(ColumnBatch& batch) {
    if (status.IsError()) return status;
    if (state == State::kOverall) {
        AddToOverall(batch);
    } else if (state == State::kSteps && isFirstStep) {
        AddCommonSuccesses(batch);
    }
    return status;
}

void TARNCochransQ::AddToOverall(ColumnBatch& batch) {
    if (!success.AreKnown()) {
        success.SetFromFirst(variableIndices, batch.WholeNumbers(variableIndices.front())[0]);
    }
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    std::vector<const std::int32_t*> columns;
    for (const int field : variableIndices) columns.push_back(batch.WholeNumbers(field));
    const auto k = static_cast<double>(columns.size());
    for (std::size_t begin = 0; begin < batch.Size(); begin += BlockWeights::kRows) {
        const std::size_t count = std::min(BlockWeights::kRows, batch.Size() - begin);
        if (BlockWeights::AreNarrow(weights + begin, count, k * k)) {
            AddBlock<std::int32_t>(columns, weights, begin, count);
        } else {
            AddBlock<std::int64_t>(columns, weights, begin, count);
        }
    }
}

template <typename Sum>
void TARNCochransQ::AddBlock(const std::vector<const std::int32_t*>& columns, const std::int32_t* weights,
                             std::size_t begin, std::size_t count) {
    std::array<std::uint32_t, BlockWeights::kRows> succeeds;
    std::array<std::uint32_t, BlockWeights::kRows> successesOfRow{};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        success.Of(i).Mark(columns[i] + begin, count, succeeds.data());
        Sum sum = 0;
        for (std::size_t row = 0; row < count; ++row) {
            sum += static_cast<Sum>(weights[begin + row]) & -static_cast<Sum>(succeeds[row]);
            successesOfRow[row] += succeeds[row];
        }
        counts.ofField[i] += sum;
    }
    Sum cases = 0;
    Sum squares = 0;
    for (std::size_t row = 0; row < count; ++row) {
        const Sum weight = weights[begin + row];
        const auto successes = static_cast<Sum>(successesOfRow[row]);
        cases += weight;
        squares += successes * successes * weight;
    }
    counts.n += cases;
    counts.sumRowSuccessSquared = counts.sumRowSuccessSquared + squares;
}

/// The successes of the field that stands at a position of the order.
const CategorySet& TARNCochransQ::SuccessesOf(std::size_t position) const {
    return success.Of(static_cast<std::size_t>(orderedSamples[position].sample));
}

/// Whether each ordered field has the successes of the listed one at its position.
bool TARNCochransQ::HaveTheSameSuccesses() const {
    for (std::size_t i = 0; i < orderedSamples.size(); ++i) {
        if (!SuccessesOf(i).IsSameAs(success.Of(i))) return false;
    }
    return true;
}

/// The successes of an ordered field are given by the categories of the listed field at the same position, not by its
/// own. Documents depend on it; it matters only where the fields don't have the same categories in the same order.
void TARNCochransQ::AddCommonSuccesses(ColumnBatch& batch) {
    std::vector<const std::int32_t*> columns;
    std::vector<const CategorySet*> ofListed;
    std::vector<const CategorySet*> own;
    for (std::size_t i = 0; i < orderedSamples.size(); ++i) {
        columns.push_back(batch.WholeNumbers(variableIndices[static_cast<std::size_t>(orderedSamples[i].sample)]));
        ofListed.push_back(&success.Of(i));
        own.push_back(&SuccessesOf(i));
    }
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    commonSuccesses.Add(columns, ofListed, weights, batch.Size(), work);
    if (hasOwnSuccesses) ownSuccesses.Add(columns, own, weights, batch.Size(), work);
}

QKStatus TARNCochransQ::EndPass() {
    --passesRemaining;  // below 0 in the passes of a stepwise comparison
    if (state == State::kOverall) {
        EndOverall();
    } else if (state == State::kSteps) {
        EndStep();
    }
    return status;
}

void TARNCochransQ::EndOverall() {
    if (!counts.HasSuccess()) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return;
    }
    if (!counts.HasBothOutcomes()) {
        AddStatusMessage(QKStatus(kSuccessUnusable), MessageKind::kError);
        return;
    }
    q = counts.Q();
    sig = ChiSquareSig(q, static_cast<double>(variableIndices.size()) - 1, arithmetic);
    Compare();
    state = comparison.stepwise ? State::kBeforeSteps : State::kFinished;
}

void TARNCochransQ::Compare() {
    const bool isSignificant = sigLevel > sig;
    if (!isSignificant || variableIndices.size() < kFewestToCompare) {
        AddMessages(comparison.Refuse(isSignificant ? kTooFewToCompare : kNotSignificant));
        passesRemaining = 0;
    } else if (comparison.pairwise) {
        pairwiseResults = CompareNormalPairs(
            variableIndices.size(), counts.StandardError(),
            [&](std::size_t i, std::size_t j) { return counts.Difference(i, j); }, arithmetic);
        pairwiseDone = true;
    }
}

bool TARNCochransQ::NeedsAnotherPass() {
    const bool isOpen = (comparison.pairwise && !pairwiseDone) || (comparison.stepwise && !steps.IsDone());
    if (isOpen || status.IsError()) passesRemaining = 0;
    return isOpen && !status.IsError();
}

void TARNCochransQ::EndStep() {
    if (isFirstStep) {
        commonSuccesses.Close();
        if (hasOwnSuccesses) ownSuccesses.Close();
        isFirstStep = false;
    }
    AddMessages(steps.EndPass(sigLevel, [&](SubsetRecord& subset) {
        subset.statistic = SubsetQ(subset);
        subset.sig = ChiSquareSig(subset.statistic, static_cast<double>(subset.Size()) - 1, arithmetic);
        return StepwiseComparison::Outcome::kComputed;
    }));
    if (!steps.IsDone()) return;
    passesRemaining = 0;
    state = State::kFinished;
}

/// The counts of successes are those of the listed fields at the subset's positions, not of the ordered ones; documents
/// depend on it.
double TARNCochransQ::SubsetQ(const SubsetRecord& subset) const {
    std::vector<std::int64_t> ofListed;
    std::vector<std::int64_t> own;
    for (std::size_t position = subset.firstPosition; position <= subset.lastPosition; ++position) {
        ofListed.push_back(counts.ofField[position]);
        own.push_back(counts.ofField[static_cast<std::size_t>(orderedSamples[position].sample)]);
    }
    const CommonSuccesses& ofRows = hasOwnSuccesses ? ownSuccesses : commonSuccesses;
    const CochranTerms listed(ofListed, commonSuccesses.RowTerm(subset.firstPosition, subset.lastPosition));
    const CochranTerms textbook(own, ofRows.RowTerm(subset.firstPosition, subset.lastPosition));
    const double degreesOfFreedom = static_cast<double>(subset.Size()) - 1;
    const bool differs =
        steps.LeaveOtherTraces(subset, listed.WideQ(), textbook.WideQ(), sigLevel,
                               [=, this](double value) { return ChiSquareSig(value, degreesOfFreedom, arithmetic); });
    return arithmetic.TakesTextbook(differs) ? textbook.Q(arithmetic) : listed.Q(arithmetic);
}

// ---- Element ----

QKXML::XMLElement* TARNCochransQ::MakeResultElement() {
    ResultElement element(Tests::kCochran, Decide(status, sigLevel, sig));
    element.AddCondition(userSpecifyGroupList ? kConditionOfList : kConditionOfData, {JoinValues(variableIndices)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    AddClasses(element);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, arithmetic.Count(counts.n));
    statistics.Row(RowName::kTestStatistic, q);
    statistics.Row(RowName::kDegreeOfFreedom, static_cast<std::int32_t>(variableIndices.size()) - 1);
    statistics.Row(RowName::kAsymptoticSig2Tailed, sig);
    if (pairwiseDone && !pairwiseResults.empty()) {
        std::vector<std::int64_t> successes;
        for (const std::int64_t count : counts.ofField) successes.push_back(arithmetic.Count(count));
        AddPairwiseResult(element, ComparisonRulesOf::kCochransQ,
                          {{}, JoinValues(variableIndices), JoinValues(successes)}, pairwiseResults);
    }
    if (steps.IsDone()) {
        AddMessages(AddStepwiseResult(element, steps, FieldsInOrder(variableIndices, orderedSamples)));
    }
    return element.Release();
}

void TARNCochransQ::AddClasses(ResultElement& element) const {
    auto content = MakeSimpleTable(TableName::kContent, JoinValues(variableIndices), Literal::kTwoColumns);
    for (std::size_t i = 0; i < variableIndices.size(); ++i) {
        // Truncated, and the other class gets the rest: the two add up to 100.
        const std::int32_t percent = counts.Percentage(i);
        const std::int32_t rest = Subtract32(100, percent);
        const bool isFirstClass = success.Of(i).Contains(0) != 0;
        content->AddChild(
            MakeRowElement(JoinValues(isFirstClass ? std::vector{percent, rest} : std::vector{rest, percent})));
    }
    StructuredTable classes = element.AddTable(TableName::kTwoClassComparison);
    classes.Add(std::move(content));
}
