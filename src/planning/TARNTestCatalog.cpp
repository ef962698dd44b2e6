#include "planning/TARNTestCatalog.h"

#include <algorithm>
#include <array>

#include "independent/TARNHodgesLehmannTwoIndep.h"
#include "independent/TARNJonckTer.h"
#include "independent/TARNKSMedian.h"
#include "independent/TARNKruskalWOneWay.h"
#include "independent/TARNMannWU.h"
#include "independent/TARNMoses.h"
#include "independent/TARNWaldWolfRuns.h"
#include "onesample/TARNBinomial.h"
#include "onesample/TARNChiSquare.h"
#include "onesample/TARNEstimateCI.h"
#include "onesample/TARNRuns.h"
#include "onesample/TARNWilcoxonSR.h"
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
    TARNTestRow{"IMannWhitneyU", PlanMannWU},
    TARNTestRow{"OWilcoxonSignedRanks", PlanWilcoxonSR},
    TARNTestRow{"RSign", PlanSign},
    TARNTestRow{"RWilcoxonSignedRanks", PlanWilcoxonPairs},
    TARNTestRow{"IMoses", PlanMoses},
    TARNTestRow{"RCochransQ", kNotBuiltYet},
    TARNTestRow{"OBinomial", PlanBinomial},
    TARNTestRow{"IWaldWolfowitzRuns", PlanWaldWolfRuns},
    TARNTestRow{"OEstimateConfidenceInterval", PlanEstimateCI},
    TARNTestRow{"RMcNemar", PlanMcNemar},
    TARNTestRow{"RMarginalHomogeneity", PlanMargHomo},
    TARNTestRow{"RFriedmansTwoWayByRanks", kNotBuiltYet},
    TARNTestRow{"RKendallsCoefficient", kNotBuiltYet},
    TARNTestRow{"IKolmogorovSmirnov", kNotBuiltYet},
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
