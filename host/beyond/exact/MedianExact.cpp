#include "host/beyond/exact/MedianExact.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "host/beyond/StopQuestion.h"
#include "host/beyond/exact/WalkFromMode.h"
#include "host/beyond/exact/WideInteger.h"

namespace tarn {

namespace {

/// A group of the median test.
struct Group {
    std::int64_t size = 0;
    std::int64_t above = 0;
};

struct Groups {
    std::vector<Group> list;
    std::int64_t size = 0;
    std::int64_t above = 0;

    std::int64_t MostAboveIn(std::size_t group) const { return std::min(list[group].size, above); }
    bool HasOneOutcome() const { return list.size() < 2 || above == 0 || above == size; }
};

/// The groups that have cases, the largest one last. Which of both rows is above makes no difference to chi-square nor
/// to Fisher's two-sided significance, so that it is the one with fewer cases.
Groups GroupsOf(const std::vector<std::int64_t>& above, const std::vector<std::int64_t>& notAbove) {
    Groups groups;
    for (std::size_t g = 0; g < above.size(); ++g) {
        const std::int64_t size = above[g] + notAbove[g];
        if (size == 0) continue;
        groups.list.push_back({size, above[g]});
        groups.size += size;
        groups.above += above[g];
    }
    if (groups.above > groups.size - groups.above) {
        for (Group& group : groups.list) group.above = group.size - group.above;
        groups.above = groups.size - groups.above;
    }
    std::ranges::stable_sort(groups.list, {}, &Group::size);
    return groups;
}

/// Sum over the groups of above^2 / size times a common factor. With the margins given, chi-square rises with it.
class SumOfShares {
 public:
    explicit SumOfShares(const Groups& groups) : groups_(groups) {
        constexpr WideInteger kMostBits = static_cast<WideInteger>(1) << 125;
        for (const Group& group : groups.list) {
            const auto divisor = std::gcd(static_cast<std::int64_t>(factor_ % group.size), group.size);
            const std::int64_t further = group.size / divisor;
            // The sum is at most the number of all cases above times the factor.
            if (factor_ > kMostBits / further / groups.above) {
                isExact_ = false;
                break;
            }
            factor_ *= further;
        }
        if (isExact_) return;
        factor_ = 1;
        while (factor_ < kMostBits / 2 / groups.above / groups.above) factor_ *= 2;
    }

    WideInteger Term(std::int64_t size, std::int64_t above) const {
        const WideInteger square = static_cast<WideInteger>(above) * above;
        return isExact_ ? square * (factor_ / size) : square * factor_ / size;
    }

    /// From which sum on chi-square is as large as the observed one.
    WideInteger Limit() const {
        constexpr long double kTolerance = 1e-9L;
        WideInteger observed = 0;
        for (const Group& group : groups_.list) observed += Term(group.size, group.above);
        if (isExact_) return observed;
        const auto atZero = static_cast<long double>(Term(groups_.size, groups_.above));
        const long double excess = static_cast<long double>(observed) - atZero;
        return observed - static_cast<WideInteger>(excess * kTolerance) - static_cast<WideInteger>(groups_.list.size());
    }

 private:
    const Groups& groups_;
    WideInteger factor_ = 1;
    bool isExact_ = true;
};

/// All ways that some of the groups can have so many cases above and such a sum of shares.
struct Outcome {
    std::int64_t above = 0;
    WideInteger sum = 0;
    double chance = 0;
};

void Merge(std::vector<Outcome>& outcomes) {
    std::ranges::sort(outcomes, [](const Outcome& a, const Outcome& b) {
        return a.above != b.above ? a.above < b.above : a.sum < b.sum;
    });
    std::size_t last = 0;
    for (std::size_t i = 1; i < outcomes.size(); ++i) {
        if (outcomes[i].above == outcomes[last].above && outcomes[i].sum == outcomes[last].sum) {
            outcomes[last].chance += outcomes[i].chance;
        } else {
            outcomes[++last] = outcomes[i];
        }
    }
    outcomes.resize(last + 1);
}

/// The chances of 0, 1, .. cases above, each case above with the share of all: the condition that all groups together
/// have as many as observed makes the hypergeometric chances of it.
std::vector<double> BinomialChances(const Groups& groups, std::size_t group) {
    const std::int64_t size = groups.list[group].size;
    const std::int64_t most = groups.MostAboveIn(group);
    std::vector<double> chances(static_cast<std::size_t>(most) + 1, 0.0);
    const auto yes = static_cast<long double>(groups.above);
    const long double odds = yes / static_cast<long double>(groups.size - groups.above);
    const auto ratio = [&](std::int64_t k) {
        return static_cast<long double>(size - k) / static_cast<long double>(k + 1) * odds;
    };
    const long double mean = static_cast<long double>(size) * yes / static_cast<long double>(groups.size);
    long double all = 0;
    WalkFromMode(0, static_cast<std::int64_t>(mean), most, ratio, [&](std::int64_t k, long double weight) {
        chances[static_cast<std::size_t>(k)] = static_cast<double>(weight);
        all += weight;
    });
    for (double& chance : chances) chance /= static_cast<double>(all);
    return chances;
}

/// Whether the groups after the first `done` ones can have what is left to them.
bool CanBeCompleted(const Groups& groups, std::int64_t above, std::int64_t sizeDone) {
    return above <= groups.above && groups.above - above <= groups.size - sizeDone;
}

/// What there is after one more group.
std::vector<Outcome> WithGroup(const Groups& groups, const SumOfShares& sums, const std::vector<Outcome>& outcomes,
                               std::size_t group, std::int64_t sizeDone) {
    const std::int64_t size = groups.list[group].size;
    const std::vector<double> chances = BinomialChances(groups, group);
    std::vector<Outcome> next;
    for (const Outcome& outcome : outcomes) {
        AskNowAndThen();
        for (std::int64_t more = 0; more <= groups.MostAboveIn(group); ++more) {
            if (!CanBeCompleted(groups, outcome.above + more, sizeDone)) continue;
            next.push_back({outcome.above + more, outcome.sum + sums.Term(size, more),
                            outcome.chance * chances[static_cast<std::size_t>(more)]});
        }
    }
    Merge(next);
    return next;
}

/// Puts the two last groups, whose outcomes are too many to be kept, together with those of the others.
double ShareReaching(const Groups& groups, const SumOfShares& sums, const std::vector<Outcome>& outcomes) {
    const WideInteger limit = sums.Limit();
    const std::int64_t lastSize = groups.list.back().size;
    const std::size_t nextToLast = groups.list.size() - 2;
    const std::int64_t nextToLastSize = groups.list[nextToLast].size;
    const std::vector<double> lastChances = BinomialChances(groups, nextToLast + 1);
    const std::vector<double> nextToLastChances = BinomialChances(groups, nextToLast);
    double all = 0;
    double reaching = 0;
    for (const Outcome& outcome : outcomes) {
        AskNowAndThen();
        const std::int64_t left = groups.above - outcome.above;
        for (std::int64_t more = std::max<std::int64_t>(0, left - lastSize); more <= std::min(left, nextToLastSize);
             ++more) {
            const std::int64_t last = left - more;
            const double chance = outcome.chance * nextToLastChances[static_cast<std::size_t>(more)] *
                                  lastChances[static_cast<std::size_t>(last)];
            all += chance;
            if (outcome.sum + sums.Term(nextToLastSize, more) + sums.Term(lastSize, last) >= limit) reaching += chance;
        }
    }
    return std::min(1.0, reaching / all);
}

double ChanceOfChiSquare(const Groups& groups) {
    const SumOfShares sums(groups);
    std::vector<Outcome> outcomes{{0, 0, 1.0}};
    std::int64_t sizeDone = 0;
    for (std::size_t g = 0; g + 2 < groups.list.size(); ++g) {
        sizeDone += groups.list[g].size;
        outcomes = WithGroup(groups, sums, outcomes, g, sizeDone);
    }
    return ShareReaching(groups, sums, outcomes);
}

FourfoldTable TableOf(const Groups& groups) {
    const Group& first = groups.list[0];
    const Group& second = groups.list[1];
    return {first.above, first.size - first.above, second.above, second.size - second.above};
}

}  // namespace

ExactTails FisherExact(const FourfoldTable& table) {
    constexpr long double kTolerance = 1e-7L;
    const std::int64_t firstSize = table.firstYes + table.firstNo;
    const std::int64_t secondSize = table.secondYes + table.secondNo;
    const std::int64_t yes = table.firstYes + table.secondYes;
    const std::int64_t fewest = std::max<std::int64_t>(0, yes - secondSize);
    const std::int64_t most = std::min(yes, firstSize);
    if (fewest == most) return {};
    const auto ratio = [&](std::int64_t k) {
        return static_cast<long double>(firstSize - k) / static_cast<long double>(k + 1) *
               static_cast<long double>(yes - k) / static_cast<long double>(secondSize - yes + k + 1);
    };
    const auto cases = static_cast<WideInteger>(firstSize) + secondSize;
    const auto mode = static_cast<std::int64_t>((static_cast<WideInteger>(firstSize) + 1) * (yes + 1) / (cases + 2));
    long double observed = 0;
    WalkFromMode(fewest, mode, most, ratio, [&](std::int64_t k, long double weight) {
        if (k == table.firstYes) observed = weight;
    });
    long double all = 0;
    long double less = 0;
    long double greater = 0;
    long double twoSided = 0;
    WalkFromMode(fewest, mode, most, ratio, [&](std::int64_t k, long double weight) {
        all += weight;
        if (k <= table.firstYes) less += weight;
        if (k >= table.firstYes) greater += weight;
        if (weight <= observed * (1 + kTolerance)) twoSided += weight;
    });
    const auto share = [&](long double sum) { return std::min(1.0, static_cast<double>(sum / all)); };
    return {share(less), share(greater), share(twoSided)};
}

double FisherExactCost(const FourfoldTable& table) {
    constexpr double kAdditionsForEach = 100;
    const std::int64_t smallest = std::min({table.firstYes + table.firstNo, table.secondYes + table.secondNo,
                                            table.firstYes + table.secondYes, table.firstNo + table.secondNo});
    return kAdditionsForEach * static_cast<double>(smallest + 1);
}

double MedianExact(const std::vector<std::int64_t>& above, const std::vector<std::int64_t>& notAbove) {
    const Groups groups = GroupsOf(above, notAbove);
    if (groups.HasOneOutcome()) return 1;
    return groups.list.size() == 2 ? FisherExact(TableOf(groups)).twoSided : ChanceOfChiSquare(groups);
}

double MedianExactCost(const std::vector<std::int64_t>& above, const std::vector<std::int64_t>& notAbove) {
    constexpr double kAdditionsForKept = 200;
    constexpr double kAdditionsForEach = 40;  // the sums of shares are divided as whole numbers of 128 bits
    const Groups groups = GroupsOf(above, notAbove);
    if (groups.HasOneOutcome()) return 1;
    if (groups.list.size() == 2) return FisherExactCost(TableOf(groups));
    const auto outcomesOf = [&](std::size_t group) { return static_cast<double>(groups.MostAboveIn(group)) + 1; };
    const std::size_t nextToLast = groups.list.size() - 2;
    double kept = 1;
    for (std::size_t g = 0; g < nextToLast; ++g) kept *= outcomesOf(g);
    return kAdditionsForKept * kept + kAdditionsForEach * (kept * outcomesOf(nextToLast) + outcomesOf(nextToLast + 1));
}

}  // namespace tarn
