#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "host/NumberText.h"
#include "host/beyond/TestCases.h"
#include "host/beyond/explain/PairSteps.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/RelatedExplanations.h"
#include "host/beyond/explain/SubsetSteps.h"
#include "host/beyond/explain/SuccessesOfTest.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

// ---- Ranks within each record ----

/// More fields than that are no columns that a line holds.
constexpr std::size_t kMostFieldColumns = 6;

struct RankedFields {
    std::vector<std::vector<double>> ranks;  ///< record by record; of the first and the last records alone where many
    std::vector<double> sums;
    long double tieSum = 0;
};

/// The ranks of one record's values, with the sum of t^3 - t over its ties.
std::vector<double> RanksWithin(const std::vector<double>& values, long double& tieSum) {
    std::vector<AscendingSample> cells(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) cells[i] = {{values[i]}, {}, 1};
    TieTogether(cells);
    const std::vector<RankBlock> blocks = RankTogether(cells);
    tieSum += TieSumOf(blocks);
    std::vector<double> ranks(values.size());
    for (const RankBlock& block : blocks) {
        for (std::size_t i = 0; i < ranks.size(); ++i) {
            if (block.counts[i] > 0) ranks[i] = block.rank;
        }
    }
    return ranks;
}

/// Of some of the fields among themselves.
RankedFields RankFields(const CompleteCases& cases, const std::vector<std::size_t>& fields) {
    RankedFields ranked;
    ranked.sums.assign(fields.size(), 0);
    std::vector<double> values(fields.size());
    for (std::size_t row = 0; row < cases.columns.front().size(); ++row) {
        for (std::size_t i = 0; i < values.size(); ++i) values[i] = cases.columns[fields[i]][row];
        long double ties = 0;
        ranked.ranks.push_back(RanksWithin(values, ties));
        ranked.tieSum += ties * cases.WeightAt(row);
        for (std::size_t i = 0; i < values.size(); ++i) ranked.sums[i] += ranked.ranks.back()[i] * cases.WeightAt(row);
    }
    return ranked;
}

void AddRowRanks(const ExplainedTest& test, const RankedFields& ranked) {
    const std::vector<std::string>& fields = test.Reading().fields;
    if (fields.size() > kMostFieldColumns) return;
    const CompleteCases& cases = test.view.cases;
    const bool isWeighted = !cases.weights.empty();
    std::vector<ExplanationTable::Column> columns{{"case"}};
    if (isWeighted) columns.push_back({"weight"});
    for (const std::string& field : fields) columns.push_back({field});
    AddRows(test.steps.Table("Ranks within each case", columns), ranked.ranks.size(), [&](std::size_t row) {
        std::vector<std::string> cells{std::to_string(row + 1)};
        if (isWeighted) cells.push_back(CalculatorText(cases.WeightAt(row)));
        for (const double rank : ranked.ranks[row]) cells.push_back(CalculatorText(rank));
        return cells;
    });
}

void AddFieldSums(const ExplainedTest& test, const RankedFields& ranked, double n) {
    ExplanationTable& table = test.steps.Table("Rank sums", {{"field", true}, {"rank sum R"}, {"mean rank R / n"}});
    for (std::size_t i = 0; i < ranked.sums.size(); ++i) {
        table.rows.push_back(
            {test.Reading().fields[i], CalculatorText(ranked.sums[i]), CalculatorText(ranked.sums[i] / n)});
    }
}

/// 12 / (k (k + 1) n) times the squared distances of the rank sums from their middle, over the correction for ties.
double AddFriedmanStatistic(const ExplainedTest& test, const RankedFields& ranked, double n, double k,
                            const Number& document) {
    StepWriter& steps = test.steps;
    const double middle = steps.Step("middle", "n (k + 1) / 2", With("# * # / 2", {n, k + 1}), n * (k + 1) / 2);
    long double squares = 0;
    std::vector<std::string> terms;
    for (const double sum : ranked.sums) {
        squares += (static_cast<long double>(sum) - middle) * (static_cast<long double>(sum) - middle);
        terms.push_back(With("(# - #)^2", {sum, middle}));
    }
    const double sumOfSquares = steps.Step("Q", "sum of (R - middle)^2", SumText(terms), static_cast<double>(squares));
    const auto ties = static_cast<double>(ranked.tieSum);
    steps.Step("tie sum", "sum of (t^3 - t), t the sizes of ties within cases", "", ties);
    const long double product = static_cast<long double>(k - 1) * k * (k + 1) * n;
    const auto correction = static_cast<double>((product - ranked.tieSum) / product);
    steps.Step("C", "1 - tie sum / ((k - 1) k (k + 1) n)", With("1 - # / (# * # * # * #)", {ties, k - 1, k, k + 1, n}),
               correction);
    if (correction == 0) return steps.Told("chi2", "0, since all cases have their values tied", "", 0, document);
    const long double statistic = 12 * squares * (k - 1) / (product - ranked.tieSum);
    return steps.Told("chi2", "12 Q / (n k (k + 1) C)",
                      With("12 * # / (# * # * # * #)", {sumOfSquares, n, k, k + 1, correction}),
                      static_cast<double>(statistic), document);
}

/// Dunn's pairs: the differences of the mean ranks, with one standard error.
void AddRankPairs(const ExplainedTest& test, const RankedFields& ranked, double n, double k) {
    if (test.Reading().pairs.empty()) return;
    const double standardError =
        test.steps.Step("SE of pairs", "sqrt(k (k + 1) / (6 n))", With("sqrt(# * # / (6 * #))", {k, k + 1, n}),
                        std::sqrt(k * (k + 1) / (6 * n)));
    PairValues values{"mean rank", {}, {}};
    for (const double sum : ranked.sums) values.ofSample.push_back(sum / n);
    values.standardError = [=](std::size_t, std::size_t) { return standardError; };
    AddPairTable(test, values);
}

/// Friedman's statistic of the fields of a subset; W is computed for none.
void AddRankSubsets(const ExplainedTest& test, const RankedFields& all, double n) {
    const auto compare = [&](const std::vector<std::size_t>& fields) {
        const RankedFields ranked = RankFields(test.view.cases, fields);
        const auto m = static_cast<double>(fields.size());
        long double squares = 0;
        std::vector<std::string> sums;
        for (const double sum : ranked.sums) {
            const long double distance = sum - static_cast<long double>(n) * (m + 1) / 2;
            squares += distance * distance;
            sums.push_back(CalculatorText(sum));
        }
        // As defined no correction for ties reaches a subset.
        const long double ties = test.steps.IsAsDefined() ? 0 : ranked.tieSum;
        const long double spread = static_cast<long double>(m - 1) * m * (m + 1) * n - ties;
        WorkedSubset subset;
        subset.statistic = spread == 0 ? 0 : static_cast<double>(12 * squares * (m - 1) / spread);
        subset.p = ChiSquareTail(subset.statistic, m - 1);
        subset.cells = {FewText(sums), CalculatorText(static_cast<double>(ties)), ShortText(subset.statistic)};
        return subset;
    };
    SubsetRule rule{"chi2 as above, of its m fields ranked among themselves, df = m - 1",
                    {{"rank sums R"}, {"tie sum"}, {"chi2"}},
                    "mean rank",
                    {},
                    compare};
    for (const double sum : all.sums) rule.orderValues.push_back(sum / n);
    rule.keepsLastSample = true;
    AddSubsets(test, rule);
}

double ExplainRankedFields(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    std::vector<std::size_t> all(test.view.cases.columns.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    const RankedFields ranked = RankFields(test.view.cases, all);
    AddRowRanks(test, ranked);
    AddFieldSums(test, ranked, test.view.cases.size);
    const double n = steps.Count("n", "cases", test.view.cases.size);
    const double k = steps.Count("k", "fields", static_cast<double>(ranked.sums.size()));
    const double chiSquare = AddFriedmanStatistic(test, ranked, n, k, set.statistic);
    const double degrees = steps.Told("df", "k - 1", With("# - 1", {k}), k - 1, set.df);
    ChiSquareStep(steps, "chi2", chiSquare, degrees, PValueOf(set, PValueKind::kAsymptotic));
    AddRankPairs(test, ranked, n, k);
    AddRankSubsets(test, ranked, n);
    return chiSquare;
}

}  // namespace

void ExplainFriedman(const ExplainedTest& test) {
    ExplainRankedFields(test);
}

void ExplainKendall(const ExplainedTest& test) {
    const double chiSquare = ExplainRankedFields(test);
    const double n = test.view.cases.size;
    const auto k = static_cast<double>(test.view.cases.columns.size());
    test.steps.Told("W", "chi2 / (n (k - 1))", With("# / (# * #)", {chiSquare, n, k - 1}), chiSquare / (n * (k - 1)),
                    test.FigureOf("KendallsW"));
}

// ---- Cochran's Q ----

namespace {

/// Sums over the cases of how many of their fields are successes.
struct SuccessSums {
    std::vector<double> ofField;
    std::map<double, double> cases;  ///< by their number of successes
    long double sum = 0;
    long double squares = 0;

    long double SquaresOfFields() const {
        long double ofFields = 0;
        for (const double count : ofField) ofFields += static_cast<long double>(count) * count;
        return ofFields;
    }
    double Q() const {
        const auto k = static_cast<long double>(ofField.size());
        const long double spread = k * sum - squares;
        return spread == 0 ? 0 : static_cast<double>((k - 1) * (k * SquaresOfFields() - sum * sum) / spread);
    }
};

SuccessSums SumSuccesses(const std::vector<std::vector<double>>& columns, const CompleteCases& cases) {
    SuccessSums sums;
    sums.ofField.assign(columns.size(), 0);
    for (std::size_t row = 0; row < columns.front().size(); ++row) {
        const double weight = cases.WeightAt(row);
        double ofRow = 0;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            sums.ofField[i] += columns[i][row] * weight;
            ofRow += columns[i][row];
        }
        sums.cases[ofRow] += weight;
        sums.sum += static_cast<long double>(ofRow) * weight;
        sums.squares += static_cast<long double>(ofRow) * ofRow * weight;
    }
    return sums;
}

void AddSuccessTables(const ExplainedTest& test, const SuccessSums& sums, const std::string& success) {
    ExplanationTable& fields = test.steps.Table("Success is " + success, {{"field", true}, {"successes T"}});
    for (std::size_t i = 0; i < sums.ofField.size(); ++i) {
        fields.rows.push_back({test.Reading().fields[i], CalculatorText(sums.ofField[i])});
    }
    ExplanationTable& rows = test.steps.Table("Cases by their number of successes", {{"successes L"}, {"cases"}});
    for (const auto& [successes, cases] : sums.cases) {
        rows.rows.push_back({CalculatorText(successes), CalculatorText(cases)});
    }
}

/// Marascuilo and McSweeney's pairs: the differences of the shares, with one standard error.
void AddSharePairs(const ExplainedTest& test, const SuccessSums& sums, double n, double k) {
    if (test.Reading().pairs.empty()) return;
    const auto spread = static_cast<double>(k * sums.sum - sums.squares);
    const double standardError = test.steps.Step("SE of pairs", "sqrt(2 (k B - D) / (n^2 k (k - 1)))",
                                                 With("sqrt(2 * # / (# ^ 2 * # * #))", {spread, n, k, k - 1}),
                                                 std::sqrt(2 * spread / (n * n * k * (k - 1))));
    PairValues values{"share of successes", {}, {}};
    for (const double successes : sums.ofField) values.ofSample.push_back(successes / n);
    values.standardError = [=](std::size_t, std::size_t) { return standardError; };
    AddPairTable(test, values);
}

/// Q of the fields of a subset.
void AddShareSubsets(const ExplainedTest& test, const std::vector<std::vector<double>>& columns, const SuccessSums& all,
                     double n) {
    const auto compare = [&](const std::vector<std::size_t>& fields) {
        std::vector<std::vector<double>> some;
        for (const std::size_t field : fields) some.push_back(columns[field]);
        const SuccessSums sums = SumSuccesses(some, test.view.cases);
        std::vector<std::string> successes;
        for (const double count : sums.ofField) successes.push_back(CalculatorText(count));
        WorkedSubset subset;
        subset.statistic = sums.Q();
        subset.p = ChiSquareTail(subset.statistic, static_cast<double>(fields.size()) - 1);
        subset.cells = {FewText(successes), CalculatorText(static_cast<double>(sums.squares)),
                        ShortText(subset.statistic)};
        return subset;
    };
    SubsetRule rule{"Q as above, of its m fields alone, df = m - 1",
                    {{"successes T"}, {"D"}, {"Q"}},
                    "share of successes",
                    {},
                    compare};
    for (const double count : all.ofField) rule.orderValues.push_back(count / n);
    AddSubsets(test, rule);
}

}  // namespace

void ExplainCochran(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const SuccessesOfTest successes(test);
    const SuccessSums sums = SumSuccesses(successes.Columns(), test.view.cases);
    AddSuccessTables(test, sums, successes.Name());
    const double n = steps.Count("n", "cases", test.view.cases.size);
    const double k = steps.Count("k", "fields", static_cast<double>(sums.ofField.size()));
    std::vector<std::string> terms;
    for (const double count : sums.ofField) terms.push_back(CalculatorText(count) + "^2");
    const auto ofFields = static_cast<double>(sums.SquaresOfFields());
    const auto all = static_cast<double>(sums.sum);
    const auto ofRows = static_cast<double>(sums.squares);
    steps.Step("A", "sum of T^2", SumText(terms), ofFields);
    steps.Step("B", "sum of T, which is the sum of L, too", "", all);
    steps.Step("D", "sum of L^2", "", ofRows);
    const double q =
        k * sums.sum == sums.squares
            ? steps.Told("Q", "0, since the fields of each case are alike", "", 0, set.statistic)
            : steps.Told("Q", "(k - 1) (k A - B^2) / (k B - D)",
                         With("# * (# * # - # ^ 2) / (# * # - #)", {k - 1, k, ofFields, all, k, all, ofRows}), sums.Q(),
                         set.statistic);
    const double degrees = steps.Told("df", "k - 1", With("# - 1", {k}), k - 1, set.df);
    ChiSquareStep(steps, "Q", q, degrees, PValueOf(set, PValueKind::kAsymptotic));
    AddSharePairs(test, sums, n, k);
    AddShareSubsets(test, successes.Columns(), sums, n);
}

}  // namespace tarn
