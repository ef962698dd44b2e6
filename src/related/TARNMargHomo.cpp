// Marginal homogeneity test on a pair of ordered categorical fields.
//
// Question    Do two fields with the same categories have the same distribution?
// Data        Records that miss neither field of the pair, counted in a square table. Each category has a score: its
//             value, or its index where categories are texts.
// Statistic   S = sum of c s_i over the cells beside the diagonal, c the count of row i and column j, s the scores;
//             expected M = sum of c (s_i + s_j) / 2, variance V = sum of c ((s_i - s_j) / 2)^2; normal approximation.
// Source      Agresti (1983), Biometrics 39, 505-510; Mehta and Patel (1992), Statistics in Medicine 11, 1457-1476.
// Degenerate  No case at all: an error. All cases on the diagonal, or scores all equal: z = 0, significance 1.

#include "related/TARNMargHomo.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "AllDistinctValuesUsed_R_MarginalHomogeneity_2";

constexpr const char* kScoreList = "scoreList";
constexpr const char* kNumberOfCategories = "numberOfCategories";

constexpr long kNotAligned = 220006_error;
constexpr long kSettingMissing = 221701_error;
constexpr long kNamesMissing = 221703_error;
constexpr long kCategoriesDiffer = 221709_error;
constexpr long kNotCategorical = 221710_error;
constexpr long kNotAPair = 221711_error;

}  // namespace

// ---- Categories ----

QKStatus TARNCategoryTable::AddField(int field) {
    if (Find(field) != nullptr) return QKStatus();
    const IQKVariable* variable = varList->GetVarAt(field);
    if (variable == nullptr || !FieldKind::IsCategorical(variable->GetKind())) return QKStatus(kNotAligned);
    const bool isFirst = columns.empty();
    if (isFirst) isText = variable->GetKind() != FieldKind::kNumericCategories;

    Column column{field, {}};
    const auto count = static_cast<std::size_t>(variable->GetCategoryCount());
    bool aligned = isFirst || count == columns.front().rowOfCategory.size();
    if (!aligned) return QKStatus(kNotAligned);
    for (int category = 0; category < static_cast<int>(count); ++category) {
        const int row = isFirst ? category : FindRow(*variable, category);
        aligned = aligned && row >= 0;
        column.rowOfCategory.push_back(row);
    }
    columns.push_back(std::move(column));
    return aligned ? QKStatus() : QKStatus(kNotAligned);
}

int TARNCategoryTable::FindRow(const IQKVariable& variable, int category) const {
    const IQKVariable* first = varList->GetVarAt(columns.front().field);
    return isText ? first->FindCategory(variable.GetCategoryText(category))
                  : first->FindCategory(variable.GetCategoryValue(category));
}

std::vector<int> TARNCategoryTable::RowsOf(int field) const {
    const Column* column = Find(field);
    return column == nullptr ? std::vector<int>() : column->rowOfCategory;
}

const TARNCategoryTable::Column* TARNCategoryTable::Find(int field) const {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& column) { return column.field == field; });
    return found == columns.end() ? nullptr : &*found;
}

int TARNCategoryTable::FindAligned(int field, int category) const {
    const Column* column = Find(field);
    if (column == nullptr || category < 0) return -1;
    const auto index = static_cast<std::size_t>(category);
    return index < column->rowOfCategory.size() ? column->rowOfCategory[index] : -1;
}

double TARNCategoryTable::ScoreOf(int row) const {
    if (isText) return row;
    const bool known = !columns.empty() && row < static_cast<int>(columns.front().rowOfCategory.size());
    return known ? varList->GetVarAt(columns.front().field)->GetCategoryValue(row) : 0.0;
}

// ---- Plan ----

namespace {

/// Null if the fields are not there or not categorical; then their indices aren't written either, and the condition
/// shows none.
std::unique_ptr<TARNCategoryTable> PlanPair(TARNPlanBuilder& builder, TARNPlan& plan,
                                            const std::vector<std::string>& names) {
    const QKVarList& varList = plan.GetVarList();
    const int pair[] = {varList.FindVariable(names[0]), varList.FindVariable(names[1])};
    for (const int field : pair) {
        const IQKVariable* variable = varList.GetVarAt(field);
        if (variable == nullptr || !FieldKind::IsCategorical(variable->GetKind())) {
            builder.Fail(kNotCategorical);
            return nullptr;
        }
    }
    builder.TestSettings().AddSetting(SettingKey::kVariablePairFirstIndex, pair[0]);
    builder.TestSettings().AddSetting(SettingKey::kVariablePairSecondIndex, pair[1]);
    auto table = std::make_unique<TARNCategoryTable>(varList);
    for (const int field : pair) {
        if (!table->AddField(field).IsError()) continue;
        builder.Fail(kCategoriesDiffer);
        return table;
    }
    const int categoryCount = varList.GetVarAt(pair[0])->GetCategoryCount();
    builder.TestSettings().AddSetting(kNumberOfCategories, categoryCount);
    if (categoryCount == 0) {
        builder.Fail(kNotCategorical);
        return table;
    }
    for (const int field : pair) plan.Request(field, Statistic::kFrequencies);
    return table;
}

}  // namespace

void PlanMargHomo(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    std::vector<std::string> names;
    std::unique_ptr<TARNCategoryTable> table;
    if (!builder.Read(SettingKey::kVariableName, names)) {
        builder.Fail(kNamesMissing);
    } else if (names.size() != 2) {
        builder.Fail(kNotAPair);
    } else {
        table = PlanPair(builder, plan, names);
    }
    builder.AddToMainWorker<TARNMargHomo>(std::move(table));
}

// ---- Pass ----

QKStatus TARNMargHomo::BeginPass() {
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    settings->GetSettingValByName(SettingKey::kVariablePairFirstIndex, firstVariableIndex);
    settings->GetSettingValByName(SettingKey::kVariablePairSecondIndex, secondVariableIndex);
    if (status.IsError()) return status;
    if (!settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel) || !ReadScores()) {
        AddStatusMessage(QKStatus(kSettingMissing), MessageKind::kError);
        return status;
    }
    // An empty cell adds nothing, unless its score is no number that 0 times it were 0.
    const bool areFinite = std::all_of(scores.begin(), scores.end(), [](double score) { return std::isfinite(score); });
    cells.Clear(scores.size() + 1, areFinite);
    PlaceColumns();
    passesRemaining = 1;
    return status;
}

/// False if there are none and nothing to make them from.
bool TARNMargHomo::ReadScores() {
    if (settings->GetSettingValByName(kScoreList, scores)) return true;
    int categoryCount = 0;
    if (!settings->GetSettingValByName(kNumberOfCategories, categoryCount) || categoryTable == nullptr) return false;
    for (int category = 0; category < categoryCount; ++category) scores.push_back(categoryTable->ScoreOf(category));
    return true;
}

/// At last stands where a category goes that the second field doesn't list.
void TARNMargHomo::PlaceColumns() {
    const auto beside = static_cast<std::uint32_t>(scores.size());
    columnOfCategory.clear();
    if (categoryTable != nullptr) {
        for (const int row : categoryTable->RowsOf(secondVariableIndex)) {
            columnOfCategory.push_back(std::min(static_cast<std::uint32_t>(row), beside));
        }
    }
    columnOfCategory.push_back(beside);
}

void TARNMargHomo::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(firstVariableIndex);
    fieldIndices.push_back(secondVariableIndex);
}

/// A category that the fields don't list, or for which a given list of scores is too short, has no cell: it is counted
/// beside the table, where nobody looks.
QKStatus TARNMargHomo::ProcessColumns(ColumnBatch& batch) {
    if (status.IsError() || categoryTable == nullptr) return status;
    const std::int32_t* const first = batch.WholeNumbers(firstVariableIndex);
    const std::int32_t* const second = batch.WholeNumbers(secondVariableIndex);
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    const auto beside = static_cast<std::uint32_t>(scores.size());
    const auto lastCategory = static_cast<std::uint32_t>(columnOfCategory.size() - 1);
    const auto countAll = [&](const auto& cellAt) {
        for (std::size_t i = 0; i < batch.Size(); ++i) {
            const std::uint32_t row = std::min(static_cast<std::uint32_t>(first[i]), beside);
            const std::uint32_t column =
                columnOfCategory[std::min(static_cast<std::uint32_t>(second[i]), lastCategory)];
            cellAt(row, column) += weights[i];
        }
    };
    if (cells.IsSparse()) {
        countAll([this](std::size_t row, std::size_t column) -> std::int64_t& { return cells.Sparse(row, column); });
    } else {
        countAll([this](std::size_t row, std::size_t column) -> std::int64_t& { return cells.Dense(row, column); });
    }
    return status;
}

/// Calls `visit` with the row, the column and the count of each cell of the categories.
template <typename Visit>
void TARNMargHomo::ForEachCell(Visit visit) const {
    const std::size_t beside = scores.size();
    cells.ForEach([&](std::size_t row, std::size_t column, std::int64_t count) {
        if (row < beside && column < beside) visit(row, column, arithmetic.Count(count));
    });
}

/// The sum over the cells beside the diagonal, each with its count and its scores.
template <typename Sum, typename Term>
Sum TARNMargHomo::SumOverChanges(Term term) const {
    Sum sum = 0;
    ForEachCell([&](std::size_t i, std::size_t j, std::int64_t count) {
        if (i != j) sum += term(static_cast<Sum>(count), static_cast<Sum>(scores[i]), static_cast<Sum>(scores[j]));
    });
    return sum;
}

QKStatus TARNMargHomo::EndPass() {
    ForEachCell([&](std::size_t, std::size_t, std::int64_t count) { totalN = arithmetic.Count(totalN + count); });
    if (totalN < 1) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    ComputeStatistic();
    passesRemaining = 0;
    return status;
}

void TARNMargHomo::ComputeStatistic() {
    // As they stand, or with digits enough for scores that cancel.
    const auto sum = [&](auto term) {
        return arithmetic.Carefully([&] { return SumOverChanges<double>(term); },
                                    [&] { return SumOverChanges<long double>(term); });
    };
    testStatistic = sum([](auto count, auto row, auto) { return count * row; });
    const double variance = sum([](auto count, auto row, auto column) {
        const auto halfDistance = (row - column) / 2;
        return halfDistance * halfDistance * count;
    });
    standardError = std::sqrt(variance);
    const double excess = arithmetic.Carefully(
        [&] {
            return testStatistic - SumOverChanges<double>([](auto count, auto row, auto column) {
                                       return count * (row + column);
                                   }) * 0.5;
        },
        [&] {
            return SumOverChanges<long double>(
                [](auto count, auto row, auto column) { return count * (row - column) / 2; });
        });
    if (variance != 0) standardTestStatistic = excess / standardError;
    const double distance = std::fabs(standardTestStatistic);
    asymptoticSig = 2 * arithmetic.UpperTail([=] { return QKMath::QKDistFun::CdfNorm(distance, 0, 1); },
                                             [=] { return QKMath::QKDistFun::SfNorm(distance, 0, 1); });
}

// ---- Element ----

QKXML::XMLElement* TARNMargHomo::MakeResultElement() {
    ResultElement element(Tests::kMarginalHomogeneity, Decide(status, sigLevel, asymptoticSig));
    element.AddCondition(kConditionKey, {IntToString(firstVariableIndex), IntToString(secondVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    statistics.Row(RowName::kTestStatistic, testStatistic);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, standardTestStatistic);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);

    StructuredTable comparison = element.AddTable(TableName::kCategoryFieldsComparison);
    comparison.Row(RowName::kRowNames, firstVariableIndex);
    comparison.Row(RowName::kColumnNames, secondVariableIndex);
    auto content = MakeSimpleTable(TableName::kContent, "", "");
    for (std::size_t i = 0; i < scores.size(); ++i) {
        std::vector<std::int64_t> row = cells.Row(i);
        row.resize(scores.size());
        for (std::int64_t& count : row) count = arithmetic.Count(count);
        content->AddChild(MakeRowElement(JoinValues(row)));
    }
    comparison.Add(std::move(content));
    return element.Release();
}
