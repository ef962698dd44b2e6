#include "planning/TARNTestCatalog.h"

#include <algorithm>
#include <array>

#include "onesample/TARNBinomial.h"
#include "onesample/TARNChiSquare.h"
#include "onesample/TARNEstimateCI.h"
#include "onesample/TARNRuns.h"
#include "related/TARNHodgesLehmannPairs.h"
#include "related/TARNMargHomo.h"
#include "related/TARNMcNemar.h"
#include "related/TARNSign.h"
#include "related/TARNWilcoxonPairs.h"

namespace {

constexpr PlanFunction kNotBuiltYet = nullptr;

constexpr std::array kCatalog{
    TARNTestRow{"ORuns", PlanRuns},
    TARNTestRow{"OChiSquare", PlanChiSquare},
    TARNTestRow{"OKolmogorovSmirnovNormal", kNotBuiltYet},
    TARNTestRow{"OKolmogorovSmirnovUniform", kNotBuiltYet},
    TARNTestRow{"OKolmogorovSmirnovPoisson", kNotBuiltYet},
    TARNTestRow{"OKolmogorovSmirnovExponential", kNotBuiltYet},
    TARNTestRow{"IMannWhitneyU", kNotBuiltYet},
    TARNTestRow{"OWilcoxonSignedRanks", kNotBuiltYet},
    TARNTestRow{"RSign", PlanSign},
    TARNTestRow{"RWilcoxonSignedRanks", PlanWilcoxonPairs},
    TARNTestRow{"IMoses", kNotBuiltYet},
    TARNTestRow{"RCochransQ", kNotBuiltYet},
    TARNTestRow{"OBinomial", PlanBinomial},
    TARNTestRow{"IWaldWolfowitzRuns", kNotBuiltYet},
    TARNTestRow{"OEstimateConfidenceInterval", PlanEstimateCI},
    TARNTestRow{"RMcNemar", PlanMcNemar},
    TARNTestRow{"RMarginalHomogeneity", PlanMargHomo},
    TARNTestRow{"RFriedmansTwoWayByRanks", kNotBuiltYet},
    TARNTestRow{"RKendallsCoefficient", kNotBuiltYet},
    TARNTestRow{"IKolmogorovSmirnov", kNotBuiltYet},
    TARNTestRow{"IKruskalWallis", kNotBuiltYet},
    TARNTestRow{"IJonckheereTerpstra", kNotBuiltYet},
    TARNTestRow{"IMedian", kNotBuiltYet},
    TARNTestRow{"RHodgesLehmannEstimatePairs", PlanHodgesLehmannPairs},
    TARNTestRow{"IHodgesLehmannEstimateGroups", kNotBuiltYet},
};

}  // namespace

std::span<const TARNTestRow> TestCatalog() { return kCatalog; }

const TARNTestRow* FindTest(std::string_view settingName) {
    const auto found = std::find_if(kCatalog.begin(), kCatalog.end(),
                                    [&](const TARNTestRow& row) { return row.settingName == settingName; });
    return found == kCatalog.end() ? nullptr : &*found;
}
