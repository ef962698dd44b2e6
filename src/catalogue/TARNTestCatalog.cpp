#include "catalogue/TARNTestCatalog.h"

#include <algorithm>
#include <array>

#include "independent/TARNHodgesLehmannTwoIndep.h"
#include "independent/TARNJonckTer.h"
#include "independent/TARNKSMedian.h"
#include "independent/TARNKSmirnowTwoSample.h"
#include "independent/TARNKruskalWOneWay.h"
#include "independent/TARNMannWU.h"
#include "independent/TARNMoses.h"
#include "independent/TARNWaldWolfRuns.h"
#include "onesample/TARNBinomial.h"
#include "onesample/TARNChiSquare.h"
#include "onesample/TARNEstimateCI.h"
#include "onesample/TARNKSmirnowOneSample.h"
#include "onesample/TARNRuns.h"
#include "onesample/TARNWilcoxonSR.h"
#include "related/TARNCochransQ.h"
#include "related/TARNFriedman.h"
#include "related/TARNHodgesLehmannPairs.h"
#include "related/TARNKendallsW.h"
#include "related/TARNMargHomo.h"
#include "related/TARNMcNemar.h"
#include "related/TARNSign.h"
#include "related/TARNWilcoxonPairs.h"

namespace {

constexpr std::array kCatalog{
    TARNTestRow{"ORuns", PlanRuns},
    TARNTestRow{"OChiSquare", PlanChiSquare},
    TARNTestRow{"OKolmogorovSmirnovNormal", PlanKSmirnowNormal},
    TARNTestRow{"OKolmogorovSmirnovUniform", PlanKSmirnowUniform},
    TARNTestRow{"OKolmogorovSmirnovPoisson", PlanKSmirnowPoisson},
    TARNTestRow{"OKolmogorovSmirnovExponential", PlanKSmirnowExponential},
    TARNTestRow{"IMannWhitneyU", PlanMannWU},
    TARNTestRow{"OWilcoxonSignedRanks", PlanWilcoxonSR},
    TARNTestRow{"RSign", PlanSign},
    TARNTestRow{"RWilcoxonSignedRanks", PlanWilcoxonPairs},
    TARNTestRow{"IMoses", PlanMoses},
    TARNTestRow{"RCochransQ", PlanCochransQ},
    TARNTestRow{"OBinomial", PlanBinomial},
    TARNTestRow{"IWaldWolfowitzRuns", PlanWaldWolfRuns},
    TARNTestRow{"OEstimateConfidenceInterval", PlanEstimateCI},
    TARNTestRow{"RMcNemar", PlanMcNemar},
    TARNTestRow{"RMarginalHomogeneity", PlanMargHomo},
    TARNTestRow{"RFriedmansTwoWayByRanks", PlanFriedman},
    TARNTestRow{"RKendallsCoefficient", PlanKendallsW},
    TARNTestRow{"IKolmogorovSmirnov", PlanKSmirnowTwoSample},
    TARNTestRow{"IKruskalWallis", PlanKruskalWOneWay},
    TARNTestRow{"IJonckheereTerpstra", PlanJonckTer},
    TARNTestRow{"IMedian", PlanKSMedian},
    TARNTestRow{"RHodgesLehmannEstimatePairs", PlanHodgesLehmannPairs},
    TARNTestRow{"IHodgesLehmannEstimateGroups", PlanHodgesLehmannTwoIndep},
};

}  // namespace

std::span<const TARNTestRow> TestCatalog() {
    return kCatalog;
}

const TARNTestRow* FindTest(std::string_view settingName) {
    const auto found = std::find_if(kCatalog.begin(), kCatalog.end(),
                                    [&](const TARNTestRow& row) { return row.settingName == settingName; });
    return found == kCatalog.end() ? nullptr : &*found;
}
