#include "planning/TARNTestCatalog.h"

#include <algorithm>
#include <array>

#include "independent/TARNHodgesLehmannTwoIndep.h"
#include "independent/TARNKSmirnowTwoSample.h"
#include "independent/TARNMannWU.h"
#include "independent/TARNMoses.h"
#include "independent/TARNWaldWolfRuns.h"
#include "onesample/TARNKSmirnowOneSample.h"
#include "onesample/TARNWilcoxonSR.h"
#include "related/TARNHodgesLehmannPairs.h"
#include "related/TARNMargHomo.h"
#include "related/TARNMcNemar.h"
#include "related/TARNSign.h"
#include "related/TARNWilcoxonPairs.h"

namespace {

constexpr PlanFunction kNotBuiltYet = nullptr;

constexpr std::array kCatalog{
    TARNTestRow{"ORuns", kNotBuiltYet},
    TARNTestRow{"OChiSquare", kNotBuiltYet},
    TARNTestRow{"OKolmogorovSmirnovNormal", PlanKSmirnowNormal},
    TARNTestRow{"OKolmogorovSmirnovUniform", PlanKSmirnowUniform},
    TARNTestRow{"OKolmogorovSmirnovPoisson", PlanKSmirnowPoisson},
    TARNTestRow{"OKolmogorovSmirnovExponential", PlanKSmirnowExponential},
    TARNTestRow{"IMannWhitneyU", PlanMannWU},
    TARNTestRow{"OWilcoxonSignedRanks", PlanWilcoxonSR},
    TARNTestRow{"RSign", PlanSign},
    TARNTestRow{"RWilcoxonSignedRanks", PlanWilcoxonPairs},
    TARNTestRow{"IMoses", PlanMoses},
    TARNTestRow{"RCochransQ", kNotBuiltYet},
    TARNTestRow{"OBinomial", kNotBuiltYet},
    TARNTestRow{"IWaldWolfowitzRuns", PlanWaldWolfRuns},
    TARNTestRow{"OEstimateConfidenceInterval", kNotBuiltYet},
    TARNTestRow{"RMcNemar", PlanMcNemar},
    TARNTestRow{"RMarginalHomogeneity", PlanMargHomo},
    TARNTestRow{"RFriedmansTwoWayByRanks", kNotBuiltYet},
    TARNTestRow{"RKendallsCoefficient", kNotBuiltYet},
    TARNTestRow{"IKolmogorovSmirnov", PlanKSmirnowTwoSample},
    TARNTestRow{"IKruskalWallis", kNotBuiltYet},
    TARNTestRow{"IJonckheereTerpstra", kNotBuiltYet},
    TARNTestRow{"IMedian", kNotBuiltYet},
    TARNTestRow{"RHodgesLehmannEstimatePairs", PlanHodgesLehmannPairs},
    TARNTestRow{"IHodgesLehmannEstimateGroups", PlanHodgesLehmannTwoIndep},
};

}  // namespace

std::span<const TARNTestRow> TestCatalog() { return kCatalog; }

const TARNTestRow* FindTest(std::string_view settingName) {
    const auto found = std::find_if(kCatalog.begin(), kCatalog.end(),
                                    [&](const TARNTestRow& row) { return row.settingName == settingName; });
    return found == kCatalog.end() ? nullptr : &*found;
}
