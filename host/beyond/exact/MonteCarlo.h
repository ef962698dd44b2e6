#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/beyond/Estimate.h"
#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/ScoreRows.h"
#include "machine/WorkShare.h"

namespace tarn {

/// Significances estimated by random arrangements of the data, each as likely as the others under the hypothesis. An
/// estimate is (1 + hits) / (1 + draws), where the hits are the arrangements at least as extreme as the observed one
/// (Phipson and Smyth, 2010, Statistical Applications in Genetics and Molecular Biology 9, 39). Its limits hold the
/// significance over all arrangements with a confidence of 99 % (Clopper and Pearson, 1934, Biometrika 26, 404-413).
///
/// Whole numbers decide what is as extreme, ties included. The same data, seed and number of draws give the same
/// estimates with any number of threads.
///
/// Every function here returns nothing where the work was stopped, where no draws are asked for, where there are fewer
/// than two groups with cases (or treatments, or no case at all), and with more than `kMostMonteCarloCases`.

struct MonteCarloPlan {
    std::uint64_t draws = 10000;
    std::uint64_t seed = 0;
};

struct MonteCarloTails {
    Estimate less;     ///< the statistic is as small or smaller
    Estimate greater;  ///< it is as large or larger
    Estimate
        twoSided;  ///< it is as far from its expectation, or further; where only large ones count: that of `greater`
    std::uint64_t draws = 0;
};

/// The largest differences of the distribution functions of two groups: as large or larger than the observed ones.
struct MonteCarloSmirnov {
    Estimate either;    ///< whatever the sign (D)
    Estimate positive;  ///< the first group's function is above that of the second (D+)
    Estimate negative;  ///< it is below (D-)
    std::uint64_t draws = 0;
};

/// A rank of absolute differences, times 2, and how many differences have it.
struct CountedRank {
    std::int64_t doubledRank = 0;
    std::int64_t count = 0;
};

/// Arrangements are held in memory, case by case, once for each thread.
inline constexpr std::int64_t kMostMonteCarloCases = std::int64_t{1} << 24;

/// The sum of the ranks of the first of two groups (Wilcoxon, 1945, Biometrics Bulletin 1, 80-83).
std::optional<MonteCarloTails> RankSumMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                 const WorkShare& work);

/// Two groups (Smirnov, 1939, Bulletin of Moscow University 2).
std::optional<MonteCarloSmirnov> SmirnovMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                   const WorkShare& work);

/// H of any number of groups (Kruskal and Wallis, 1952, Journal of the American Statistical Association 47, 583-621).
std::optional<MonteCarloTails> KruskalWallisMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                       const WorkShare& work);

/// Pearson's chi-square of how many cases of each group lie above the median (Mood, 1950, Introduction to the Theory of
/// Statistics). `blocksBelow`: the blocks, from the first, that lie not above it.
std::optional<MonteCarloTails> MedianMonteCarlo(const TieBlocks& blocks, std::size_t blocksBelow,
                                                const MonteCarloPlan& plan, const WorkShare& work);

/// J, how many pairs of cases of different groups have the larger value in the later group, half of the tied ones
/// (Jonckheere, 1954, Biometrika 41, 133-145).
std::optional<MonteCarloTails> JonckheereMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                    const WorkShare& work);

/// The sum of the ranks of positive differences, where each difference has either sign (Wilcoxon, 1945).
/// `doubledPositiveSum`: the observed one, times 2. Differences of 0 are not among the ranks.
std::optional<MonteCarloTails> SignedRankMonteCarlo(const std::vector<CountedRank>& ranks,
                                                    std::int64_t doubledPositiveSum, const MonteCarloPlan& plan,
                                                    const WorkShare& work);

/// The chi-square of treatments by their sums of scores, where the scores of each row are arranged by chance:
/// Friedman's with doubled ranks (Friedman, 1937, Journal of the American Statistical Association 32, 675-701),
/// Cochran's Q with scores of 0 and 1 (Cochran, 1950, Biometrika 37, 256-266). Nothing, too, where the squares of the
/// column sums could add up to 2^62 or more.
std::optional<MonteCarloTails> RowsMonteCarlo(const ScoreRows& rows, const MonteCarloPlan& plan, const WorkShare& work);

/// The number of runs of `first` cases of one kind and `second` of another (Wald and Wolfowitz, 1940, Annals of
/// Mathematical Statistics 11, 147-162).
std::optional<MonteCarloTails> RunsMonteCarlo(std::int64_t first, std::int64_t second, std::int64_t runs,
                                              const MonteCarloPlan& plan, const WorkShare& work);

}  // namespace tarn
