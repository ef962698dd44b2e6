#include "support/PairwiseComparison.h"

#include "support/Significance.h"

double AdjustForPairs(double sig, std::size_t sampleCount) {
    const auto k = static_cast<double>(sampleCount);
    const double adjusted = k * sig * (k - 1) / 2;
    return adjusted > 1 ? 1 : adjusted;
}

double AdjustByPairCount(double sig, std::int32_t sampleCount, const Arithmetic& arithmetic) {
    const double adjusted = arithmetic.Signed32((Whole(sampleCount) - 1) * sampleCount) * sig / 2;
    return adjusted > 1 ? 1 : adjusted;
}

PairRecord MakeNormalPair(std::int32_t sample1, std::int32_t sample2, double testStatistic, double standardError,
                          std::size_t sampleCount, const Arithmetic& arithmetic) {
    PairRecord pair;
    pair.sample1 = sample1;
    pair.sample2 = sample2;
    pair.testStatistic = testStatistic;
    pair.standardError = standardError;
    pair.standardTestStatistic = testStatistic / standardError;
    pair.sig = TwoTailedNormal(pair.standardTestStatistic, arithmetic);
    pair.adjSig = AdjustForPairs(pair.sig, sampleCount);
    return pair;
}

std::vector<PairRecord> CompareNormalPairs(std::size_t sampleCount, double standardError,
                                           const std::function<double(std::size_t, std::size_t)>& difference,
                                           const Arithmetic& arithmetic) {
    std::vector<PairRecord> pairs;
    for (std::size_t i = 0; i < sampleCount; ++i) {
        for (std::size_t j = i + 1; j < sampleCount; ++j) {
            pairs.push_back(MakeNormalPair(static_cast<std::int32_t>(i), static_cast<std::int32_t>(j), difference(i, j),
                                           standardError, sampleCount, arithmetic));
        }
    }
    return pairs;
}
