// Kendall's coefficient of concordance over related continuous fields.
//
// Question    Do the records, as judges, rank k fields alike?
// Data        Records that miss none of the fields. Each is a judge, whose k values are ranked among themselves.
// Statistic   W = chi-square / ((k - 1) n), of the Friedman statistic with its tie correction and its significance:
//             1 for full agreement, 0 for none. Comparisons are those of the Friedman test, chi-squares included.
// Source      Kendall and Babington Smith (1939), Annals of Mathematical Statistics 10, 275-287.
// Degenerate  No case at all: an error. All rows constant: W 0, retained.

#include "related/TARNKendallsW.h"

#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

#include "support/Int32.h"

namespace {

constexpr RankedRowsTest kKendallsW{
    .facts = Tests::kKendall,
    .conditionKey = "R_KendallsCoefficient_1",
    .namesMissing = 221911_error,
    .unknownField = 221903_error,
    .tooFewFields = 221909_error,
    .notContinuous = 221904_error,
    .comparisonMissing = 221901_error,
    .notSignificant = {.pairwise = 221913_warning, .stepwise = 221914_warning},
    .tooFewToCompare = {.pairwise = 221915_warning, .stepwise = 221916_warning},
    .rules = ComparisonRulesOf::kKendallsW,
};

double Concordance(double chiSquare, std::int32_t k, std::int64_t n) {
    return chiSquare / (static_cast<double>(Subtract32(k, 1)) * static_cast<double>(n));
}

}  // namespace

TARNKendallsW::TARNKendallsW(std::unique_ptr<QKSettings> testSettings)
    : RankedRows(std::move(testSettings), kKendallsW) {}

/// Takes records of a test in error, too, whose status is then theirs. The Friedman test differs, which is intended; a
/// worker hands no record to a test that began in error.
QKStatus TARNKendallsW::ProcessColumns(ColumnBatch& batch) {
    AddRows(batch);
    status = QKStatus();
    return status;
}

void TARNKendallsW::AddStatistic(StructuredTable& statistics) const {
    statistics.Row(RowName::kKendallsW, Concordance(chiSquare, k, n));
    statistics.Row(RowName::kTestStatistic, chiSquare);
}

void PlanKendallsW(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    PlanRankedRows(builder, plan, kKendallsW);
    builder.AddToMainWorker<TARNKendallsW>();
}
