// Friedman's two-way analysis of variance by ranks over related continuous fields.
//
// Question    Do k fields have the same distribution?
// Data        Records that miss none of the fields. Each is a block: its k values are ranked among themselves.
// Statistic   (12 / (k (k + 1) n) sum of R_i^2 - 3 n (k + 1)) / (1 - sum of (t^3 - t) / ((k - 1) k (k + 1) n)), R_i the
//             rank sums, t the sizes of ties within rows: chi-square with k - 1 degrees of freedom. After a significant
//             result on three fields and more, all pairs or homogeneous subsets on request.
// Source      Friedman (1937), Journal of the American Statistical Association 32, 675-701; tie correction: Lehmann
//             (1975), Nonparametrics; pairs: Dunn (1964), Technometrics 6, 241-252.
// Degenerate  No case at all: an error. All rows constant: statistic 0, retained.

#include "related/TARNFriedman.h"

#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr RankedRowsTest kFriedman{
    .facts = Tests::kFriedman,
    .conditionKey = "R_FriedmansTwoWayByRanks_1",
    .namesMissing = 221811_error,
    .unknownField = 221803_error,
    .tooFewFields = 221809_error,
    .notContinuous = 221804_error,
    .comparisonMissing = 221801_error,
    .notSignificant = {.pairwise = 221813_warning, .stepwise = 221814_warning},
    .tooFewToCompare = {.pairwise = 221815_warning, .stepwise = 221816_warning},
    .rules = ComparisonRulesOf::kFriedman,
};

}  // namespace

TARNFriedman::TARNFriedman(std::unique_ptr<QKSettings> testSettings) : RankedRows(std::move(testSettings), kFriedman) {}

QKStatus TARNFriedman::ProcessColumns(ColumnBatch& batch) {
    if (status.IsError()) return status;
    AddRows(batch);
    return QKStatus();
}

void TARNFriedman::AddStatistic(StructuredTable& statistics) const {
    statistics.Row(RowName::kTestStatistic, chiSquare);
}

void PlanFriedman(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    PlanRankedRows(builder, plan, kFriedman);
    builder.AddToMainWorker<TARNFriedman>();
}
