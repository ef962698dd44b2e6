#include "catalogue/TARNTestCatalog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const std::vector<std::string> kNames{
    "ORuns",
    "OChiSquare",
    "OKolmogorovSmirnovNormal",
    "OKolmogorovSmirnovUniform",
    "OKolmogorovSmirnovPoisson",
    "OKolmogorovSmirnovExponential",
    "IMannWhitneyU",
    "OWilcoxonSignedRanks",
    "RSign",
    "RWilcoxonSignedRanks",
    "IMoses",
    "RCochransQ",
    "OBinomial",
    "IWaldWolfowitzRuns",
    "OEstimateConfidenceInterval",
    "RMcNemar",
    "RMarginalHomogeneity",
    "RFriedmansTwoWayByRanks",
    "RKendallsCoefficient",
    "IKolmogorovSmirnov",
    "IKruskalWallis",
    "IJonckheereTerpstra",
    "IMedian",
    "RHodgesLehmannEstimatePairs",
    "IHodgesLehmannEstimateGroups",
};

}  // namespace

TEST(TARNTestCatalogTest, HoldsAll25NamesInTheOrderOfDispatch) {
    std::vector<std::string> names;
    for (const TARNTestRow& row : TestCatalog()) names.emplace_back(row.settingName);
    EXPECT_EQ(names, kNames);
}

TEST(TARNTestCatalogTest, FindsATestByItsExactNameAlone) {
    for (const std::string& name : kNames) {
        const TARNTestRow* row = FindTest(name);
        ASSERT_NE(row, nullptr) << name;
        EXPECT_EQ(row->settingName, name);
        EXPECT_EQ(FindTest(name + " "), nullptr);
        EXPECT_EQ(FindTest(name.substr(1)), nullptr);
        EXPECT_EQ(FindTest(name.substr(0, name.size() - 1)), nullptr);
    }
    for (const std::string name : {"", "rsign", "RSIGN", "OKolmogorovSmirnov", "variableName"}) {
        EXPECT_EQ(FindTest(name), nullptr) << name;
    }
}
