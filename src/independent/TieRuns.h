#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "machine/WorkShare.h"

/// The runs of equal values among the records of several groups, in ascending order, with the weight of each group in
/// each run. From them come the corrections for ties of any choice of groups: sums over the runs of some `term` of the
/// run's weight in these groups, a function with term(0) = term(1) = 0. Runs that can't matter to any choice, a single
/// case alone, are not kept.
///
/// Each sum is added up in the order of the runs. Only where the caller knows that it is exact is it put together in
/// another order.
class TieRuns {
 public:
    struct Part {
        std::uint32_t group;
        std::int64_t weight;
    };

    /// `work`: what is asked whether to stop; may be null. Once it says so, the sums are of no use. Borrowed.
    void Begin(std::size_t groupCount, const WorkShare* work = nullptr) {
        *this = TieRuns();
        weightOf_.assign(groupCount, 0);
        work_ = work;
    }
    /// Takes a record into the run in hand.
    void Add(std::size_t group, std::int32_t weight) {
        if (weight == 0) return;
        if (weightOf_[group] == 0) present_.push_back(static_cast<std::uint32_t>(group));
        weightOf_[group] += weight;
    }
    /// Ends the run in hand, if there is any.
    void EndRun() {
        if (!present_.empty()) Keep();
    }

    std::size_t GroupCount() const { return weightOf_.size(); }
    std::size_t Count() const { return ends_.size(); }
    /// The groups of a run in ascending order, with their weights in it.
    std::span<const Part> Run(std::size_t run) const {
        const std::size_t begin = run == 0 ? 0 : ends_[run - 1];
        return {parts_.data() + begin, ends_[run] - begin};
    }
    bool HasNegative() const { return hasNegative_; }

    /// Of the groups that `isMember` says.
    template <typename Sum, typename Term, typename IsMember>
    Sum SumOf(Term term, IsMember isMember) const {
        Sum sum = 0;
        for (std::size_t run = 0; run < Count() && GoesOn(run); ++run) {
            std::int64_t weight = 0;
            for (const Part& part : Run(run)) {
                if (isMember(part.group)) weight += part.weight;
            }
            sum += term(weight);
        }
        return sum;
    }

    /// Of the groups `first` to `last`, for each `first` from 0 to `last`.
    template <typename Sum, typename Term>
    std::vector<Sum> SumsOfRanges(std::size_t last, Term term) const;
    /// The same of all ranges, at `first` * groups + `last`, for sums and differences of them that are exact. It takes
    /// one walk over the runs.
    template <typename Sum, typename Term>
    std::vector<Sum> SumsOfAllRanges(Term term) const;

    /// Of each pair of the groups, in the order of `PairPlace`.
    template <typename Sum, typename Term>
    std::vector<Sum> SumsOfPairs(Term term, bool isExact) const;

    /// The place of a pair in a list of all pairs of groups: row by row, each group with those in front of it.
    static std::size_t PairPlace(std::size_t first, std::size_t second) { return second * (second - 1) / 2 + first; }

 private:
    void Keep();
    bool GoesOn(std::size_t run) const {
        constexpr std::size_t kBetweenQuestions = 1024;
        return work_ == nullptr || run % kBetweenQuestions != 0 || !work_->IsStopped();
    }

    std::vector<Part> parts_;
    std::vector<std::size_t> ends_;  // of the parts of each run
    bool hasNegative_ = false;
    const WorkShare* work_ = nullptr;
    // The run in hand.
    std::vector<std::int64_t> weightOf_;
    std::vector<std::uint32_t> present_;
};

/// The sums of ranges that are asked for one after the other, those of one `last` together.
template <typename Sum>
class RangeTieSums {
 public:
    template <typename Term>
    Sum Of(const TieRuns& runs, Term term, bool isExact, std::size_t first, std::size_t last) {
        if (isExact) {
            if (ofAll_.empty()) ofAll_ = runs.SumsOfAllRanges<Sum>(term);
            return ofAll_[first * runs.GroupCount() + last];
        }
        if (ofLast_.size() != last + 1) ofLast_ = runs.SumsOfRanges<Sum>(last, term);
        return ofLast_[first];
    }

 private:
    std::vector<Sum> ofAll_;
    std::vector<Sum> ofLast_;
};

template <typename Sum, typename Term>
std::vector<Sum> TieRuns::SumsOfRanges(std::size_t last, Term term) const {
    std::vector<Sum> sums(last + 1, Sum(0));
    // A run has the same weight for all firsts between two of its groups.
    const auto add = [&](std::size_t begin, std::size_t end, Sum value) {
        for (std::size_t first = begin; first < end; ++first) sums[first] += value;
    };
    for (std::size_t run = 0; run < Count() && GoesOn(run); ++run) {
        const std::span<const Part> parts = Run(run);
        std::int64_t weight = 0;
        std::size_t end = last + 1;
        for (std::size_t i = parts.size(); i-- > 0;) {
            if (parts[i].group > last) continue;
            add(parts[i].group + 1, end, term(weight));
            weight += parts[i].weight;
            end = parts[i].group + 1;
        }
        add(0, end, term(weight));
    }
    return sums;
}

/// What a run adds to the ranges that reach from one of its groups to another one, but to none inside them, is a
/// difference of four terms. A range then has the sum of what lies inside it.
template <typename Sum, typename Term>
std::vector<Sum> TieRuns::SumsOfAllRanges(Term term) const {
    const std::size_t groups = GroupCount();
    std::vector<Sum> sums(groups * groups, Sum(0));
    std::vector<Sum> terms;  // of the parts from the one in hand, and from the one behind it, to each end
    std::vector<Sum> termsBehind;
    for (std::size_t run = 0; run < Count() && GoesOn(run); ++run) {
        const std::span<const Part> parts = Run(run);
        termsBehind.assign(parts.size() + 1, Sum(0));
        for (std::size_t from = parts.size(); from-- > 0;) {
            terms.assign(parts.size() + 1, Sum(0));
            std::int64_t weight = 0;
            for (std::size_t to = from; to < parts.size(); ++to) {
                weight += parts[to].weight;
                terms[to + 1] = term(weight);
                sums[parts[from].group * groups + parts[to].group] +=
                    terms[to + 1] - terms[to] - (termsBehind[to + 1] - termsBehind[to]);
            }
            terms.swap(termsBehind);
        }
    }
    for (std::size_t first = groups; first-- > 0;) {
        for (std::size_t last = first + 1; last < groups; ++last) {
            Sum& sum = sums[first * groups + last];
            sum += sums[first * groups + last - 1] + sums[(first + 1) * groups + last];
            if (last > first + 1) sum -= sums[(first + 1) * groups + last - 1];
        }
    }
    return sums;
}

template <typename Sum, typename Term>
std::vector<Sum> TieRuns::SumsOfPairs(Term term, bool isExact) const {
    const std::size_t groups = weightOf_.size();
    std::vector<Sum> sums(groups < 2 ? 0 : PairPlace(0, groups), Sum(0));
    std::vector<Sum> ofOne(groups, Sum(0));  // of each group alone, where the order does not matter
    std::vector<char> isPresent(groups, false);
    for (std::size_t run = 0; run < Count() && GoesOn(run); ++run) {
        const std::span<const Part> parts = Run(run);
        for (const Part& part : parts) isPresent[part.group] = true;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const std::size_t group = parts[i].group;
            const Sum alone = term(parts[i].weight);
            for (std::size_t j = i + 1; j < parts.size(); ++j) {
                const Sum both = term(parts[i].weight + parts[j].weight);
                sums[PairPlace(group, parts[j].group)] += isExact ? both - alone - term(parts[j].weight) : both;
            }
            if (isExact) {
                ofOne[group] += alone;
            } else if (alone != 0) {
                for (std::size_t other = 0; other < groups; ++other) {
                    if (!isPresent[other]) sums[PairPlace(std::min(group, other), std::max(group, other))] += alone;
                }
            }
        }
        for (const Part& part : parts) isPresent[part.group] = false;
    }
    if (!isExact) return sums;
    for (std::size_t second = 1; second < groups; ++second) {
        for (std::size_t first = 0; first < second; ++first) {
            sums[PairPlace(first, second)] += ofOne[first] + ofOne[second];
        }
    }
    return sums;
}
