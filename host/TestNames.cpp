#include "host/TestNames.h"

#include <algorithm>
#include <array>

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

}  // namespace tarn
