#pragma once

#include <cstdint>

#include "host/beyond/exact/ExactTails.h"

namespace tarn {

/// Exact significances of the number of runs in a sequence of two kinds of cases, by all orders of the cases (Wald and
/// Wolfowitz, 1940, Annals of Mathematical Statistics 11, 147-162; Swed and Eisenhart, 1943, Annals of Mathematical
/// Statistics 14, 66-87). `less` is small where there are few runs.
///
/// Each tail is a sum of terms above 0, with a relative error below 1e-15 for each thousand of runs. All are 1 where
/// one of the kinds doesn't occur.
ExactTails RunsExact(std::int64_t runs, std::int64_t firstCount, std::int64_t secondCount);

/// About how many additions `RunsExact` takes.
double RunsExactCost(std::int64_t firstCount, std::int64_t secondCount);

}  // namespace tarn
