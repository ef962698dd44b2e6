#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// The stepwise searches written down step by step, one per way of walking, with nothing shared between them: slow and
/// plain, to hold the real one against.
namespace plain {

struct Found {
    int first;
    int last;
    double sig;
    double adjSig;
    bool untestable;

    friend bool operator==(const Found&, const Found&) = default;
};

struct Result {
    std::vector<Found> shown;           ///< in the order of display
    std::vector<std::string> warnedOf;  ///< "group" of each warning, in order
    int passes = 0;
};

/// The significance of the positions first .. last; below 0 for a subset without a statistic.
using SigOf = std::function<double(int first, int last)>;

inline double Adjusted(double sig, int size, int samples) {
    if (size == samples || size == samples - 1) return sig;
    return 1.0 - std::pow(1.0 - sig, static_cast<double>(samples) / size);
}

inline bool Inside(const std::vector<Found>& list, int first, int last) {
    for (const Found& entry : list) {
        if (entry.first <= first && entry.last >= last) return true;
    }
    return false;
}

inline std::vector<std::pair<int, int>> FirstCandidates(int positions) {
    std::vector<std::pair<int, int>> candidates;
    for (int i = 0; i <= positions - 2; ++i) candidates.emplace_back(i, positions - 1);
    candidates[0].second = positions - 2;
    return candidates;
}

inline std::string Twice(int position) {
    return std::to_string(position) + ";" + std::to_string(position);
}

/// Of the tests that rank rows.
inline Result SearchOfRankedRows(int k, double level, const SigOf& sigOf) {
    Result result;
    std::vector<std::pair<int, int>> candidates = FirstCandidates(k);
    std::vector<Found> finalSubsets;
    while (!candidates.empty()) {
        ++result.passes;
        std::size_t at = 0;
        while (at < candidates.size()) {
            const int first = candidates[at].first;
            const double sig = sigOf(first, candidates[at].second);
            const double adjSig = Adjusted(sig, candidates[at].second - first + 1, k);
            if (level > adjSig) {
                candidates[at].second -= 1;
                if (first != candidates[at].second) {
                    ++at;
                    continue;
                }
            }
            const int last = candidates[at].second;
            if (!Inside(finalSubsets, first, last)) finalSubsets.push_back({first, last, sig, adjSig, false});
            if (first != 0) {
                candidates.resize(at);
                break;
            }
            candidates.erase(candidates.begin() + static_cast<std::ptrdiff_t>(at));
        }
    }
    for (int p = 0; p < k; ++p) {
        if (!Inside(finalSubsets, p, p)) finalSubsets.push_back({p, p, 0, 0, false});
    }
    const std::vector<Found> copy = finalSubsets;
    std::size_t at = 0;
    while (at < finalSubsets.size()) {
        int count = 0;
        for (const Found& entry : copy) {
            if (entry.first <= finalSubsets[at].first && entry.last >= finalSubsets[at].last) ++count;
        }
        if (count > 1) finalSubsets.erase(finalSubsets.begin() + static_cast<std::ptrdiff_t>(at));
        ++at;  // also after an erase
    }
    for (int first = 0; first < k; ++first) {  // ascending by first position, equal ones as they are
        for (const Found& entry : finalSubsets) {
            if (entry.first != first) continue;
            result.shown.push_back(entry);
            if (entry.first == entry.last) result.warnedOf.push_back(Twice(first));
        }
    }
    return result;
}

/// Of the tests that drop a candidate of one sample at once.
inline Result SearchOfDroppingTests(int positions, int samples, double level, const SigOf& sigOf) {
    Result result;
    std::vector<std::pair<int, int>> candidates = FirstCandidates(positions);
    std::vector<Found>& finalSubsets = result.shown;
    while (!candidates.empty()) {
        ++result.passes;
        std::size_t at = 0;
        while (at < candidates.size()) {
            const auto erase = [&] { candidates.erase(candidates.begin() + static_cast<std::ptrdiff_t>(at)); };
            auto& [first, last] = candidates[at];
            const double sig = sigOf(first, last);
            if (sig < 0) {
                finalSubsets.push_back({first, last, 0, 0, true});
                erase();
                continue;
            }
            const double adjSig = Adjusted(sig, last - first + 1, samples);
            if (level > adjSig) {
                last -= 1;
                if (first == last) {
                    erase();
                } else {
                    ++at;
                }
                continue;
            }
            if (!Inside(finalSubsets, first, last)) finalSubsets.push_back({first, last, sig, adjSig, false});
            if (first != 0) {
                candidates.resize(at);
                break;
            }
            erase();
        }
    }
    for (int p = 0; p < positions; ++p) {
        if (Inside(finalSubsets, p, p)) continue;
        finalSubsets.push_back({p, p, 0, 0, false});
        result.warnedOf.push_back(Twice(p));
    }
    return result;
}

/// Of the test whose candidates are lists of groups. The groups are named by letters here, so that no position and no
/// arithmetic on positions helps.
inline Result SearchOfGroupLists(int positions, int samples, double level, const SigOf& sigOf) {
    using Groups = std::vector<char>;
    struct Homogeneous {
        Groups groups;
        double sig;
        double adjSig;
    };
    Groups sortedGroups;
    for (int i = 0; i < positions; ++i) sortedGroups.push_back(static_cast<char>('0' + i));
    const auto positionOf = [](char group) { return group - '0'; };
    const auto holds = [](const Groups& groups, char group) {
        return groups.end() != std::find(groups.begin(), groups.end(), group);
    };

    std::vector<Groups> stepSubsets;
    for (int i = 0; i <= positions - 2; ++i) {
        stepSubsets.emplace_back(sortedGroups.begin() + i, sortedGroups.end() - (i == 0 ? 1 : 0));
    }
    Result result;
    std::vector<Homogeneous> homogeneousSubsets;
    while (!stepSubsets.empty()) {
        ++result.passes;
        std::vector<Groups> kept;
        for (Groups& groups : stepSubsets) {
            bool isInside = false;
            for (const Homogeneous& entry : homogeneousSubsets) {
                isInside = isInside || (holds(entry.groups, groups.front()) && holds(entry.groups, groups.back()));
            }
            if (isInside) continue;
            const int size = static_cast<int>(groups.size());
            const double sig = sigOf(positionOf(groups.front()), positionOf(groups.back()));
            if (sig >= level) {
                homogeneousSubsets.push_back({groups, sig, Adjusted(sig, size, samples)});
                continue;
            }
            groups.pop_back();
            kept.push_back(groups);
        }
        stepSubsets.clear();
        for (const Groups& groups : kept) {
            if (groups.size() != 1) stepSubsets.push_back(groups);
        }
    }
    for (const Homogeneous& entry : homogeneousSubsets) {
        result.shown.push_back(
            {positionOf(entry.groups.front()), positionOf(entry.groups.back()), entry.sig, entry.adjSig, false});
    }
    for (const char group : sortedGroups) {
        bool isIn = false;
        for (const Homogeneous& entry : homogeneousSubsets) isIn = isIn || holds(entry.groups, group);
        if (isIn) continue;
        result.shown.push_back({positionOf(group), positionOf(group), 0, 0, false});
        result.warnedOf.push_back(Twice(positionOf(group)));
    }
    return result;
}

}  // namespace plain
