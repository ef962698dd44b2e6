#include "host/TestNames.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace tarn {

namespace {

using enum TestFamily;

// Tests that want their field sorted come first in a family: the engine has a median only once one of them is planned.
constexpr std::array kNames{
    TestName{kOneSample, "kolmogorov-smirnov", "OKolmogorovSmirnov"},
    TestName{kOneSample, "binomial", "OBinomial"},
    TestName{kOneSample, "chi-square", "OChiSquare"},
    TestName{kOneSample, "runs", "ORuns"},
    TestName{kOneSample, "wilcoxon", "OWilcoxonSignedRanks"},
    TestName{kRelated, "sign", "RSign"},
    TestName{kRelated, "wilcoxon", "RWilcoxonSignedRanks"},
    TestName{kRelated, "hodges-lehmann", "RHodgesLehmannEstimatePairs"},
    TestName{kRelated, "friedman", "RFriedmansTwoWayByRanks"},
    TestName{kRelated, "kendall", "RKendallsCoefficient"},
    TestName{kRelated, "mcnemar", "RMcNemar"},
    TestName{kRelated, "cochran", "RCochransQ"},
    TestName{kRelated, "marginal-homogeneity", "RMarginalHomogeneity"},
    TestName{kIndependent, "mann-whitney", "IMannWhitneyU"},
    TestName{kIndependent, "kolmogorov-smirnov", "IKolmogorovSmirnov"},
    TestName{kIndependent, "wald-wolfowitz", "IWaldWolfowitzRuns"},
    TestName{kIndependent, "moses", "IMoses"},
    TestName{kIndependent, "hodges-lehmann", "IHodgesLehmannEstimateIndependent", "IHodgesLehmannEstimateGroups"},
    TestName{kIndependent, "kruskal-wallis", "IKruskalWallis"},
    TestName{kIndependent, "jonckheere", "IJonckheereTerpstra"},
    TestName{kIndependent, "median", "IKMedian", "IMedian"},
};

/// The number of letters to change, add or drop (Levenshtein, 1966, Soviet Physics Doklady 10, 707-710).
std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::span<const TestName> TestNames() {
    return kNames;
}

std::string_view FamilyTitle(TestFamily family) {
    switch (family) {
        case kOneSample:
            return "One sample";
        case kRelated:
            return "Related samples";
        case kIndependent:
            return "Independent samples";
    }
    return "";
}

const TestName* FindTestName(TestFamily family, std::string_view name) {
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&](const TestName& test) { return test.family == family && test.name == name; });
    return found == kNames.end() ? nullptr : &*found;
}

std::vector<std::string_view> NearestNames(std::string_view name, std::span<const std::string_view> known) {
    constexpr std::size_t kAtMost = 3;
    std::vector<std::string_view> nearest;
    std::size_t smallest = name.size();  // a name of which nothing is kept is not near
    for (const std::string_view candidate : known) {
        const std::size_t distance = EditDistance(name, candidate);
        if (distance > smallest || distance >= name.size()) continue;
        if (distance < smallest) nearest.clear();
        smallest = distance;
        if (nearest.size() < kAtMost && std::find(nearest.begin(), nearest.end(), candidate) == nearest.end()) {
            nearest.push_back(candidate);
        }
    }
    return nearest;
}

}  // namespace tarn
