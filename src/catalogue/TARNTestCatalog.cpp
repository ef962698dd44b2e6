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
#include "vocabulary/TestFacts.h"

namespace {

constexpr std::array kCatalog{
    TARNTestRow{Tests::kRuns.Setting(), PlanRuns},
    TARNTestRow{Tests::kChiSquare.Setting(), PlanChiSquare},
    TARNTestRow{KolmogorovSmirnovSetting::kNormal, PlanKSmirnowNormal},
    TARNTestRow{KolmogorovSmirnovSetting::kUniform, PlanKSmirnowUniform},
    TARNTestRow{KolmogorovSmirnovSetting::kPoisson, PlanKSmirnowPoisson},
    TARNTestRow{KolmogorovSmirnovSetting::kExponential, PlanKSmirnowExponential},
    TARNTestRow{Tests::kMannWhitney.Setting(), PlanMannWU},
    TARNTestRow{Tests::kWilcoxonOneSample.Setting(), PlanWilcoxonSR},
    TARNTestRow{Tests::kSign.Setting(), PlanSign},
    TARNTestRow{Tests::kWilcoxonPairs.Setting(), PlanWilcoxonPairs},
    TARNTestRow{Tests::kMoses.Setting(), PlanMoses},
    TARNTestRow{Tests::kCochran.Setting(), PlanCochransQ},
    TARNTestRow{Tests::kBinomial.Setting(), PlanBinomial},
    TARNTestRow{Tests::kWaldWolfowitz.Setting(), PlanWaldWolfRuns},
    TARNTestRow{Tests::kProportionIntervals.Setting(), PlanEstimateCI},
    TARNTestRow{Tests::kMcNemar.Setting(), PlanMcNemar},
    TARNTestRow{Tests::kMarginalHomogeneity.Setting(), PlanMargHomo},
    TARNTestRow{Tests::kFriedman.Setting(), PlanFriedman},
    TARNTestRow{Tests::kKendall.Setting(), PlanKendallsW},
    TARNTestRow{Tests::kKolmogorovSmirnovTwoSample.Setting(), PlanKSmirnowTwoSample},
    TARNTestRow{Tests::kKruskalWallis.Setting(), PlanKruskalWOneWay},
    TARNTestRow{Tests::kJonckheereTerpstra.Setting(), PlanJonckTer},
    TARNTestRow{Tests::kMedian.Setting(), PlanKSMedian},
    TARNTestRow{Tests::kHodgesLehmannPairs.Setting(), PlanHodgesLehmannPairs},
    TARNTestRow{Tests::kHodgesLehmannGroups.Setting(), PlanHodgesLehmannTwoIndep},
};

/// Whether each setting of each test has one row, and no row stands for anything else.
consteval bool HasEachSettingOnce() {
    std::size_t settings = 0;
    for (const TestFacts* const test : Tests::kAll) {
        for (const std::string_view setting : test->Settings()) {
            ++settings;
            if (std::ranges::count(kCatalog, setting, &TARNTestRow::settingName) != 1) return false;
        }
    }
    return settings == kCatalog.size();
}
static_assert(HasEachSettingOnce(), "the dispatch table and the facts of the tests differ");

}  // namespace

std::span<const TARNTestRow> TestCatalog() {
    return kCatalog;
}

const TARNTestRow* FindTest(std::string_view settingName) {
    const auto found = std::find_if(kCatalog.begin(), kCatalog.end(),
                                    [&](const TARNTestRow& row) { return row.settingName == settingName; });
    return found == kCatalog.end() ? nullptr : &*found;
}
