#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/beyond/exact/ScoreRows.h"

namespace tarn {

/// Significances of block designs over all arrangements of the scores within each row. The columns' sums decide, of
/// which the chi-squares are a function that doesn't tell the columns apart; rows are added one by one to the sums in
/// ascending order (Friedman, 1937, Journal of the American Statistical Association 32, 675-701, found his tables so).
///
/// Both give nothing with fewer than two columns or more than 64, with no row or more than 100,000, where a row has
/// more than 40,320 arrangements (8 columns without ties), and where the states would take more memory than is allowed
/// (256 MiB).

/// P(Q >= q) of Friedman's test, q that of the rows as they are, whose scores are doubled ranks. Ties are allowed.
std::optional<double> FriedmanExact(const ScoreRows& rows);

/// P(Q >= q) of Cochran's test (Cochran, 1950, Biometrika 37, 256-266; Patil, 1975, Journal of the American Statistical
/// Association 70, 186-189). `successes`: of each row, 0 to the number of columns; `columnSums`: the observed successes
/// of each column. Nothing, too, where the sums of both are not equal.
std::optional<double> CochranExact(const std::vector<std::int64_t>& successes,
                                   const std::vector<std::int64_t>& columnSums);

/// About how many steps these take, at 1e8 a second; infinite where they give nothing whatever the memory. Quickly
/// found for any data.
double FriedmanExactSteps(const ScoreRows& rows);
double CochranExactSteps(const std::vector<std::int64_t>& successes, const std::vector<std::int64_t>& columnSums);

}  // namespace tarn
