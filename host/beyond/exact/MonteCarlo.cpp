#include "host/beyond/exact/MonteCarlo.h"

#include <algorithm>
#include <array>
#include <bit>
#include <boost/math/special_functions/beta.hpp>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <utility>

#include "host/beyond/QuietDistributions.h"
#include "host/beyond/exact/CounterRandom.h"
#include "host/beyond/exact/GroupScatter.h"
#include "host/beyond/exact/GroupScores.h"

namespace tarn {

namespace {

constexpr double kTailOfInterval = 0.005;  // on either side of 99 %

/// Draws that were as small as the observed arrangement, as large, and as far from the expectation.
struct Hits {
    std::uint64_t less = 0;
    std::uint64_t greater = 0;
    std::uint64_t twoSided = 0;

    /// Counts a draw of a statistic whose expectation is 0.
    void Count(std::int64_t drawn, std::int64_t observed) {
        less += drawn <= observed ? 1U : 0U;
        greater += drawn >= observed ? 1U : 0U;
        twoSided += std::abs(drawn) >= std::abs(observed) ? 1U : 0U;
    }

    /// Counts a draw of a statistic that only large values of speak against the hypothesis.
    void CountLarge(int comparison) {
        less += comparison <= 0 ? 1U : 0U;
        greater += comparison >= 0 ? 1U : 0U;
        twoSided += comparison >= 0 ? 1U : 0U;
    }
};

Estimate EstimateOf(std::uint64_t hits, std::uint64_t draws) {
    const auto hit = static_cast<double>(hits);
    const auto all = static_cast<double>(draws);
    Estimate estimate{(1 + hit) / (1 + all), 0, 1};
    if (hits > 0) estimate.lower = boost::math::ibeta_inv(hit, all - hit + 1, kTailOfInterval, QuietPolicy());
    if (hits < draws) estimate.upper = boost::math::ibetac_inv(hit + 1, all - hit, kTailOfInterval, QuietPolicy());
    return estimate;
}

std::optional<MonteCarloTails> TailsOf(const std::optional<Hits>& hits, const MonteCarloPlan& plan) {
    if (!hits) return std::nullopt;
    return MonteCarloTails{EstimateOf(hits->less, plan.draws), EstimateOf(hits->greater, plan.draws),
                           EstimateOf(hits->twoSided, plan.draws), plan.draws};
}

/// Makes the draws and adds up their hits. A copy of `prototype`, which has the memory for one draw, makes those of a
/// job; it is called with the random numbers of a draw and the hits to count in, and leaves itself as it was.
/// `steps`: about how many cases it visits for a draw.
template <typename Drawing>
std::optional<Hits> CountHits(const Drawing& prototype, std::int64_t steps, const MonteCarloPlan& plan,
                              const WorkShare& work) {
    constexpr std::int64_t kStepsOfJob = 1 << 20;  // some milliseconds
    constexpr std::uint64_t kMostJobs = 1 << 20;   // places for their hits
    const std::uint64_t few = static_cast<std::uint64_t>(std::max<std::int64_t>(1, kStepsOfJob / (steps + 1)));
    const std::uint64_t drawsOfJob = std::max(few, plan.draws / kMostJobs + 1);
    const std::uint64_t jobs = plan.draws / drawsOfJob + (plan.draws % drawsOfJob == 0 ? 0 : 1);
    std::vector<Hits> hitsOfJobs(jobs);
    const bool isDone = work.Run(jobs, [&](std::size_t job) {
        Drawing drawing = prototype;  // NOLINT: most of them change while they draw
        Hits hits;
        const std::uint64_t begin = job * drawsOfJob;
        const std::uint64_t end = std::min(plan.draws, begin + drawsOfJob);
        for (std::uint64_t draw = begin; draw < end; ++draw) {
            CounterRandom random(plan.seed, draw);
            drawing(random, hits);
            if ((draw - begin) % few == few - 1 && work.IsStopped()) return;
        }
        hitsOfJobs[job] = hits;
    });
    if (!isDone) return std::nullopt;
    Hits sum;
    for (const Hits& hits : hitsOfJobs) {
        sum.less += hits.less;
        sum.greater += hits.greater;
        sum.twoSided += hits.twoSided;
    }
    return sum;
}

/// Cards that are taken one by one at random, as Fisher and Yates (1938) do, and put back in their first order.
template <typename Card>
class Deck {
 public:
    /// At most `most` are taken before they are put back.
    Deck(std::vector<Card> cards, std::size_t most) : order_(std::move(cards)), cards_(order_), places_(most) {}

    Card Take(CounterRandom& random) {
        const auto left = static_cast<std::uint32_t>(cards_.size() - taken_);
        const std::size_t place = taken_ + random.Below(left);
        const Card card = cards_[place];
        cards_[place] = cards_[taken_];  // what stands at the places before is never looked at again
        places_[taken_] = static_cast<std::uint32_t>(place);
        ++taken_;
        return card;
    }

    void PutBack() {
        for (std::size_t i = 0; i < taken_; ++i) cards_[places_[i]] = order_[places_[i]];
        taken_ = 0;
    }

 private:
    std::vector<Card> order_;
    std::vector<Card> cards_;
    std::vector<std::uint32_t> places_;
    std::size_t taken_ = 0;
};

/// For each case its block's card, in the order of the blocks.
template <typename Card, typename Source>
std::vector<Card> CardsOfCases(const std::vector<std::int64_t>& blockSizes, const std::vector<Source>& ofBlocks) {
    std::vector<Card> cards;
    for (std::size_t i = 0; i < blockSizes.size(); ++i) {
        cards.insert(cards.end(), static_cast<std::size_t>(blockSizes[i]), static_cast<Card>(ofBlocks[i]));
    }
    return cards;
}

/// The number of cases that have to be drawn so that the smaller of two groups, or all groups but the largest, are
/// full.
std::size_t CasesToDraw(const std::vector<std::int64_t>& groupSizes) {
    const std::int64_t cases = std::accumulate(groupSizes.begin(), groupSizes.end(), std::int64_t{0});
    return static_cast<std::size_t>(cases - *std::ranges::max_element(groupSizes));
}

bool IsOfTwoGroups(const TieBlocks& blocks) {
    return blocks.groupCount == 2 && std::ranges::min(GroupSizes(blocks)) > 0;
}

/// The cases of all groups; 0 where there are too many, so that no sum of these sizes is ever made.
std::int64_t CasesWithinLimit(const TieBlocks& blocks) {
    std::int64_t cases = 0;
    for (const std::int64_t count : blocks.counts) {
        if (count > kMostMonteCarloCases - cases) return 0;
        cases += count;
    }
    return cases;
}

/// The sum of the scores of the first of two groups; scores have a mean of 0.
class ScoreSumDrawing {
 public:
    explicit ScoreSumDrawing(const GroupScores& scores)
        : deck_(CardsOfCases<std::int32_t>(scores.blockSizes, scores.scores), CasesToDraw(scores.groupSizes)),
          drawn_(CasesToDraw(scores.groupSizes)),
          isOfFirst_(scores.groupSizes[0] <= scores.groupSizes[1]),
          observed_(scores.sums[0]) {}

    void operator()(CounterRandom& random, Hits& hits) {
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < drawn_; ++i) sum += deck_.Take(random);
        deck_.PutBack();
        hits.Count(isOfFirst_ ? sum : -sum, observed_);
    }

 private:
    Deck<std::int32_t> deck_;
    std::size_t drawn_;
    bool isOfFirst_;
    std::int64_t observed_;
};

/// How much the groups' sums of scores scatter. The groups are filled in their order but for the largest, whose sum
/// follows from the others.
class ScatterDrawing {
 public:
    explicit ScatterDrawing(const GroupScores& scores)
        : deck_(CardsOfCases<std::int32_t>(scores.blockSizes, scores.scores), CasesToDraw(scores.groupSizes)),
          scatter_(scores.groupSizes, scores.sums, scores.LargestScore()),
          sizes_(scores.groupSizes),
          sums_(sizes_.size()),
          largest_(static_cast<std::size_t>(std::ranges::max_element(sizes_) - sizes_.begin())) {}

    void operator()(CounterRandom& random, Hits& hits) {
        std::int64_t all = 0;
        for (std::size_t group = 0; group < sizes_.size(); ++group) {
            if (group == largest_) continue;
            std::int64_t sum = 0;
            for (std::int64_t i = 0; i < sizes_[group]; ++i) sum += deck_.Take(random);
            sums_[group] = sum;
            all += sum;
        }
        sums_[largest_] = -all;
        deck_.PutBack();
        hits.CountLarge(scatter_.CompareWithObserved(sums_.data()));
    }

 private:
    Deck<std::int32_t> deck_;
    GroupScatter scatter_;
    std::vector<std::int64_t> sizes_;
    std::vector<std::int64_t> sums_;
    std::size_t largest_;
};

/// The largest differences between the shares of two groups up to a value, in both directions, times the product of
/// the sizes of one of the groups and of all.
struct LargestDifferences {
    std::int64_t above = 0;
    std::int64_t below = 0;

    /// After a block: `own` of the group's `size` cases, `all` of the `cases` of both.
    void Add(std::int64_t own, std::int64_t size, std::int64_t all, std::int64_t cases) {
        const std::int64_t difference = cases * own - size * all;
        above = std::max(above, difference);
        below = std::max(below, -difference);
    }
    std::int64_t Either() const { return std::max(above, below); }
};

/// Counts D, D+ and D- as `twoSided`, `greater` and `less`.
class SmirnovDrawing {
 public:
    explicit SmirnovDrawing(const TieBlocks& blocks)
        : sizes_(BlockSizes(blocks)),
          deck_(CardsOfCases<std::uint32_t>(sizes_, Positions(sizes_.size())), CasesToDraw(GroupSizes(blocks))),
          counts_(sizes_.size()),
          cases_(std::accumulate(sizes_.begin(), sizes_.end(), std::int64_t{0})) {
        const std::vector<std::int64_t> groupSizes = GroupSizes(blocks);
        const std::size_t smaller = groupSizes[0] <= groupSizes[1] ? 0 : 1;
        isOfFirst_ = smaller == 0;
        drawn_ = groupSizes[smaller];
        for (std::size_t i = 0; i < sizes_.size(); ++i) {
            counts_[i] = static_cast<std::uint32_t>(blocks.CountOf(i, smaller));
        }
        observed_ = TakeDifferences();
    }

    void operator()(CounterRandom& random, Hits& hits) {
        for (std::int64_t i = 0; i < drawn_; ++i) ++counts_[deck_.Take(random)];
        deck_.PutBack();
        const LargestDifferences drawn = TakeDifferences();
        hits.twoSided += drawn.Either() >= observed_.Either() ? 1U : 0U;
        hits.greater += drawn.above >= observed_.above ? 1U : 0U;
        hits.less += drawn.below >= observed_.below ? 1U : 0U;
    }

 private:
    static std::vector<std::size_t> Positions(std::size_t count) {
        std::vector<std::size_t> positions(count);
        std::iota(positions.begin(), positions.end(), std::size_t{0});
        return positions;
    }

    /// Those of the first group from the smaller group's counts, which are 0 afterwards.
    LargestDifferences TakeDifferences() {
        LargestDifferences differences;
        std::int64_t own = 0;
        std::int64_t all = 0;
        for (std::size_t i = 0; i < sizes_.size(); ++i) {
            own += counts_[i];
            all += sizes_[i];
            counts_[i] = 0;
            differences.Add(own, drawn_, all, cases_);
        }
        if (!isOfFirst_) std::swap(differences.above, differences.below);
        return differences;
    }

    std::vector<std::int64_t> sizes_;
    Deck<std::uint32_t> deck_;
    std::vector<std::uint32_t> counts_;  // of the smaller group, in each block
    std::int64_t cases_;
    std::int64_t drawn_ = 0;
    bool isOfFirst_ = true;
    LargestDifferences observed_;
};

/// Jonckheere's J, times 4, less its expectation. The cases get their groups in the order of their values.
class JonckheereDrawing {
 public:
    JonckheereDrawing(const TieBlocks& blocks, std::int64_t cases)
        : sizes_(BlockSizes(blocks)),
          deck_(CardsOfCases<std::uint32_t>(GroupSizes(blocks), Groups(blocks.groupCount)),
                static_cast<std::size_t>(cases)),
          before_(blocks.groupCount),
          ofBlock_(blocks.groupCount) {
        const std::vector<std::int64_t> groupSizes = GroupSizes(blocks);
        doubledPairs_ = PairsOfGroups(groupSizes, cases);
        std::int64_t quadrupled = 0;
        for (std::size_t i = 0; i < sizes_.size(); ++i) {
            for (std::size_t group = 0; group < blocks.groupCount; ++group) {
                ofBlock_[group] = blocks.CountOf(i, group);
            }
            quadrupled += EndBlock(sizes_[i]);
        }
        observed_ = quadrupled - doubledPairs_;
        std::ranges::fill(before_, 0);
    }

    void operator()(CounterRandom& random, Hits& hits) {
        std::int64_t quadrupled = 0;
        for (const std::int64_t size : sizes_) {
            for (std::int64_t i = 0; i < size; ++i) ++ofBlock_[deck_.Take(random)];
            quadrupled += EndBlock(size);
        }
        deck_.PutBack();
        std::ranges::fill(before_, 0);
        hits.Count(quadrupled - doubledPairs_, observed_);
    }

 private:
    static std::vector<std::size_t> Groups(std::size_t count) {
        std::vector<std::size_t> groups(count);
        std::iota(groups.begin(), groups.end(), std::size_t{0});
        return groups;
    }

    /// The pairs of cases of different groups, times 2. Half of the pairs are expected to rise, and each of those
    /// counts 4 in 4 J, so that this is the expectation of it.
    static std::int64_t PairsOfGroups(const std::vector<std::int64_t>& groupSizes, std::int64_t cases) {
        std::int64_t pairs = cases * cases;
        for (const std::int64_t size : groupSizes) pairs -= size * size;
        return pairs;
    }

    /// The block's share of 4 J: a pair with a case before the block counts 4 where the later group has the larger
    /// value, a pair within it 2. Adds the block to the cases before.
    std::int64_t EndBlock(std::int64_t size) {
        constexpr std::int64_t kRising = 4;
        std::int64_t earlier = 0;  // cases of earlier groups before the block
        std::int64_t rising = 0;
        std::int64_t tied = size * size;  // pairs of different groups, times 2
        for (std::size_t group = 0; group < before_.size(); ++group) {
            const std::int64_t count = ofBlock_[group];
            rising += earlier * count;
            tied -= count * count;
            earlier += before_[group];
            before_[group] += count;
            ofBlock_[group] = 0;
        }
        return kRising * rising + tied;
    }

    std::vector<std::int64_t> sizes_;
    Deck<std::uint32_t> deck_;
    std::vector<std::int64_t> before_;
    std::vector<std::int64_t> ofBlock_;
    std::int64_t doubledPairs_ = 0;
    std::int64_t observed_ = 0;
};

/// Twice the doubled sum of ranks with a positive sign, less its expectation.
class SignedRankDrawing {
 public:
    SignedRankDrawing(const std::vector<CountedRank>& ranks, std::int64_t doubledPositiveSum) : ranks_(ranks) {
        for (const CountedRank& rank : ranks_) total_ += rank.doubledRank * rank.count;
        observed_ = 2 * doubledPositiveSum - total_;
    }

    void operator()(CounterRandom& random, Hits& hits) const {
        constexpr std::int64_t kBitsOfWord = 32;
        std::uint64_t word = 0;
        std::int64_t bitsLeft = 0;
        std::int64_t sum = 0;
        for (const CountedRank& rank : ranks_) {
            std::int64_t positive = 0;
            for (std::int64_t left = rank.count; left > 0;) {
                if (bitsLeft == 0) {
                    word = random.Next();
                    bitsLeft = kBitsOfWord;
                }
                const std::int64_t bits = std::min(left, bitsLeft);
                positive += std::popcount(word & ((std::uint64_t{1} << bits) - 1));
                word >>= bits;
                bitsLeft -= bits;
                left -= bits;
            }
            sum += rank.doubledRank * positive;
        }
        hits.Count(2 * sum - total_, observed_);
    }

 private:
    std::vector<CountedRank> ranks_;
    std::int64_t total_ = 0;
    std::int64_t observed_ = 0;
};

/// The sum of the squared column sums, which rises and falls with Friedman's and Cochran's chi-squares.
class RowsDrawing {
 public:
    explicit RowsDrawing(const ScoreRows& rows) : rows_(rows), row_(rows.columns), sums_(rows.columns) {
        for (std::size_t i = 0; i < rows_.RowCount(); ++i) {
            for (std::size_t column = 0; column < rows_.columns; ++column) sums_[column] += rows_.At(i, column);
        }
        observed_ = TakeSquares();
    }

    void operator()(CounterRandom& random, Hits& hits) {
        const std::size_t columns = rows_.columns;
        for (std::size_t first = 0; first < rows_.scores.size(); first += columns) {
            const std::int64_t* const scores = rows_.scores.data() + first;
            std::copy(scores, scores + columns, row_.begin());
            for (std::size_t column = 0; column + 1 < columns; ++column) {
                const std::size_t place = column + random.Below(static_cast<std::uint32_t>(columns - column));
                sums_[column] += row_[place];
                row_[place] = row_[column];
            }
            sums_[columns - 1] += row_[columns - 1];
        }
        const std::int64_t drawn = TakeSquares();
        hits.CountLarge(static_cast<int>(drawn > observed_) - static_cast<int>(drawn < observed_));
    }

 private:
    /// The column sums are 0 afterwards.
    std::int64_t TakeSquares() {
        std::int64_t squares = 0;
        for (std::int64_t& sum : sums_) {
            squares += sum * sum;
            sum = 0;
        }
        return squares;
    }

    ScoreRows rows_;
    std::vector<std::int64_t> row_;
    std::vector<std::int64_t> sums_;
    std::int64_t observed_ = 0;
};

/// The number of runs, times the number of cases, less its expectation.
class RunsDrawing {
 public:
    RunsDrawing(std::int64_t fewer, std::int64_t cases, std::int64_t runs)
        : deck_(Places(cases), static_cast<std::size_t>(fewer)),
          isTaken_(static_cast<std::size_t>(cases) + 2),
          chosen_(static_cast<std::size_t>(fewer)),
          cases_(cases),
          expected_(2 * fewer * (cases - fewer) + cases),
          observed_(runs * cases - expected_) {}

    void operator()(CounterRandom& random, Hits& hits) {
        for (std::uint32_t& place : chosen_) {
            place = deck_.Take(random);
            isTaken_[place] = 1;
        }
        deck_.PutBack();
        std::int64_t begins = 0;  // runs of the kind that is taken
        for (const std::uint32_t place : chosen_) begins += 1 - isTaken_[place - 1];
        const std::int64_t atEnds = isTaken_[1] + isTaken_[static_cast<std::size_t>(cases_)];
        for (const std::uint32_t place : chosen_) isTaken_[place] = 0;
        const std::int64_t runs = begins + begins + 1 - atEnds;  // the others lie between, before and behind them
        hits.Count(runs * cases_ - expected_, observed_);
    }

 private:
    static std::vector<std::uint32_t> Places(std::int64_t cases) {
        std::vector<std::uint32_t> places(static_cast<std::size_t>(cases));
        std::iota(places.begin(), places.end(), 1U);
        return places;
    }

    Deck<std::uint32_t> deck_;
    std::vector<std::uint8_t> isTaken_;  // with a place before the first case and one behind the last
    std::vector<std::uint32_t> chosen_;
    std::int64_t cases_;
    std::int64_t expected_;
    std::int64_t observed_;
};

std::optional<MonteCarloTails> ScatterMonteCarlo(const GroupScores& scores, const MonteCarloPlan& plan,
                                                 const WorkShare& work) {
    if (scores.groupSizes.size() < 2) return std::nullopt;
    return TailsOf(CountHits(ScatterDrawing(scores), scores.cases, plan, work), plan);
}

/// Whether the squared column sums add up to less than 2^62, whatever the arrangement.
bool HaveSquaresRoom(const ScoreRows& rows) {
    constexpr int kBits = 62;
    double all = 0;
    double ofColumn = 0;
    for (std::size_t i = 0; i < rows.RowCount(); ++i) {
        double largest = 0;
        for (std::size_t column = 0; column < rows.columns; ++column) {
            const double score = std::fabs(static_cast<double>(rows.At(i, column)));
            all += score;
            largest = std::max(largest, score);
        }
        ofColumn += largest;
    }
    return all * ofColumn < std::ldexp(1.0, kBits);
}

}  // namespace

std::optional<MonteCarloTails> RankSumMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                 const WorkShare& work) {
    const std::int64_t cases = CasesWithinLimit(blocks);
    if (plan.draws == 0 || cases == 0 || !IsOfTwoGroups(blocks)) return std::nullopt;
    return TailsOf(CountHits(ScoreSumDrawing(RankScores(blocks)), cases, plan, work), plan);
}

std::optional<MonteCarloSmirnov> SmirnovMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                   const WorkShare& work) {
    const std::int64_t cases = CasesWithinLimit(blocks);
    if (plan.draws == 0 || cases == 0 || !IsOfTwoGroups(blocks)) return std::nullopt;
    const std::optional<Hits> hits = CountHits(SmirnovDrawing(blocks), cases, plan, work);
    if (!hits) return std::nullopt;
    return MonteCarloSmirnov{EstimateOf(hits->twoSided, plan.draws), EstimateOf(hits->greater, plan.draws),
                             EstimateOf(hits->less, plan.draws), plan.draws};
}

std::optional<MonteCarloTails> KruskalWallisMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                       const WorkShare& work) {
    if (plan.draws == 0 || CasesWithinLimit(blocks) == 0) return std::nullopt;
    return ScatterMonteCarlo(RankScores(blocks), plan, work);
}

std::optional<MonteCarloTails> MedianMonteCarlo(const TieBlocks& blocks, std::size_t blocksBelow,
                                                const MonteCarloPlan& plan, const WorkShare& work) {
    if (plan.draws == 0 || CasesWithinLimit(blocks) == 0) return std::nullopt;
    return ScatterMonteCarlo(MedianScores(blocks, blocksBelow), plan, work);
}

std::optional<MonteCarloTails> JonckheereMonteCarlo(const TieBlocks& blocks, const MonteCarloPlan& plan,
                                                    const WorkShare& work) {
    const std::int64_t cases = CasesWithinLimit(blocks);
    if (plan.draws == 0 || cases == 0 || CasesToDraw(GroupSizes(blocks)) == 0) return std::nullopt;
    const std::int64_t steps = cases + static_cast<std::int64_t>(blocks.counts.size());
    return TailsOf(CountHits(JonckheereDrawing(blocks, cases), steps, plan, work), plan);
}

std::optional<MonteCarloTails> SignedRankMonteCarlo(const std::vector<CountedRank>& ranks,
                                                    std::int64_t doubledPositiveSum, const MonteCarloPlan& plan,
                                                    const WorkShare& work) {
    std::int64_t cases = 0;
    for (const CountedRank& rank : ranks) {
        if (rank.count > kMostMonteCarloCases - cases) return std::nullopt;
        cases += rank.count;
    }
    if (plan.draws == 0 || cases == 0) return std::nullopt;
    return TailsOf(CountHits(SignedRankDrawing(ranks, doubledPositiveSum), cases, plan, work), plan);
}

std::optional<MonteCarloTails> RowsMonteCarlo(const ScoreRows& rows, const MonteCarloPlan& plan,
                                              const WorkShare& work) {
    const auto cases = static_cast<std::int64_t>(rows.scores.size());
    const bool isOfUse = plan.draws > 0 && rows.columns > 1 && cases > 0 && cases <= kMostMonteCarloCases;
    if (!isOfUse || !HaveSquaresRoom(rows)) return std::nullopt;
    return TailsOf(CountHits(RowsDrawing(rows), cases, plan, work), plan);
}

std::optional<MonteCarloTails> RunsMonteCarlo(std::int64_t first, std::int64_t second, std::int64_t runs,
                                              const MonteCarloPlan& plan, const WorkShare& work) {
    const bool areTwo = first > 0 && second > 0;
    if (plan.draws == 0 || !areTwo || first > kMostMonteCarloCases || second > kMostMonteCarloCases - first) {
        return std::nullopt;
    }
    return TailsOf(CountHits(RunsDrawing(std::min(first, second), first + second, runs), first + second, plan, work),
                   plan);
}

}  // namespace tarn
