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
#include <numeric>

#include "contract/TARNPlanBuilder.h"
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

/// Records that are taken at a time, so that what is known of them stays at hand.
constexpr std::size_t kBlock = 1024;

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
        counts = SuccessCounts(variableIndices.size());
    } else if (state == State::kBeforeSteps) {
        orderedSamples = OrderSamples(counts.Proportions());
        steps.Begin(orderedSamples.size(), orderedSamples.size());
        commonSuccesses.assign(orderedSamples.size() * orderedSamples.size(), 0);
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
    std::array<std::uint32_t, kBlock> succeeds;
    for (std::size_t begin = 0; begin < batch.Size(); begin += kBlock) {
        const std::size_t count = std::min(kBlock, batch.Size() - begin);
        std::array<std::uint32_t, kBlock> successesOfRow{};
        for (std::size_t i = 0; i < variableIndices.size(); ++i) {
            success.Of(i).Mark(batch.WholeNumbers(variableIndices[i]) + begin, count, succeeds.data());
            std::uint32_t sum = 0;
            for (std::size_t row = 0; row < count; ++row) {
                sum += static_cast<std::uint32_t>(weights[begin + row]) & -succeeds[row];
                successesOfRow[row] += succeeds[row];
            }
            counts.ofField[i] += sum;
        }
        for (std::size_t row = 0; row < count; ++row) {
            const std::uint32_t weighted = successesOfRow[row] * static_cast<std::uint32_t>(weights[begin + row]);
            counts.n += static_cast<std::uint32_t>(weights[begin + row]);
            counts.sumRowSuccess += weighted;
            counts.sumRowSuccessSquared += successesOfRow[row] * weighted;
        }
    }
}

/// A square of a sum of successes is the sum of the products of any two, so that these serve all candidates of all
/// steps.
///
/// The successes of an ordered field are given by the categories of the listed field at the same position, not by its
/// own. That is intended; it matters only where the fields don't have the same categories in the same order.
void TARNCochransQ::AddCommonSuccesses(ColumnBatch& batch) {
    const std::size_t fields = orderedSamples.size();
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    std::vector<std::uint32_t> masks(fields * kBlock);
    std::array<std::uint32_t, kBlock> weighted;
    for (std::size_t begin = 0; begin < batch.Size() && !(work != nullptr && work->IsStopped()); begin += kBlock) {
        const std::size_t count = std::min(kBlock, batch.Size() - begin);
        for (std::size_t i = 0; i < fields; ++i) {
            const int field = variableIndices[static_cast<std::size_t>(orderedSamples[i].sample)];
            std::uint32_t* const ofField = masks.data() + i * kBlock;
            success.Of(i).Mark(batch.WholeNumbers(field) + begin, count, ofField);
            for (std::size_t row = 0; row < count; ++row) ofField[row] = -ofField[row];
        }
        for (std::size_t i = 0; i < fields; ++i) {
            for (std::size_t row = 0; row < count; ++row) {
                weighted[row] = static_cast<std::uint32_t>(weights[begin + row]) & masks[i * kBlock + row];
            }
            for (std::size_t j = i; j < fields; ++j) {
                std::uint32_t sum = 0;
                for (std::size_t row = 0; row < count; ++row) sum += weighted[row] & masks[j * kBlock + row];
                commonSuccesses[i * fields + j] += sum;
                if (i != j) commonSuccesses[j * fields + i] += sum;
            }
        }
    }
}

/// The sum of the squared successes of a subset's records, from sums up to each two positions.
std::uint32_t TARNCochransQ::RowTerm(const SubsetRecord& subset) const {
    const auto upTo = [&](std::size_t i, std::size_t j) {
        return i == 0 || j == 0 ? 0 : commonSuccesses[(i - 1) * orderedSamples.size() + j - 1];
    };
    const std::size_t first = subset.firstPosition;
    const std::size_t end = std::size_t{subset.lastPosition} + 1;
    return upTo(end, end) - 2 * upTo(first, end) + upTo(first, first);
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
    if (counts.sumRowSuccess == 0) {
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
        const std::size_t fields = orderedSamples.size();
        for (std::size_t i = 0; i < fields; ++i) {
            std::uint32_t* const row = commonSuccesses.data() + i * fields;
            std::partial_sum(row, row + fields, row);
            for (std::size_t j = 0; i > 0 && j < fields; ++j) row[j] += commonSuccesses[(i - 1) * fields + j];
        }
        isFirstStep = false;
    }
    AddMessages(steps.EndPass(sigLevel, [&](SubsetRecord& subset) {
        // The counts are those of the listed fields at these positions, not of the ordered ones. That is intended.
        subset.statistic = counts.SubsetQ(subset.firstPosition, subset.lastPosition, RowTerm(subset));
        subset.sig = ChiSquareSig(subset.statistic, static_cast<double>(subset.Size()) - 1, arithmetic);
        return StepwiseComparison::Outcome::kComputed;
    }));
    if (!steps.IsDone()) return;
    passesRemaining = 0;
    state = State::kFinished;
}

// ---- Element ----

QKXML::XMLElement* TARNCochransQ::MakeResultElement() {
    ResultElement element(Tests::kCochran, Decide(status, sigLevel, sig));
    element.AddCondition(userSpecifyGroupList ? kConditionOfList : kConditionOfData, {JoinValues(variableIndices)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    AddClasses(element);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, static_cast<std::int32_t>(counts.n));
    statistics.Row(RowName::kTestStatistic, q);
    statistics.Row(RowName::kDegreeOfFreedom, static_cast<std::int32_t>(variableIndices.size()) - 1);
    statistics.Row(RowName::kAsymptoticSig2Tailed, sig);
    if (pairwiseDone && !pairwiseResults.empty()) {
        const std::vector<std::int32_t> successes(counts.ofField.begin(), counts.ofField.end());
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
