#include "host/report/PairsAgainst.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/NumberText.h"

namespace tarn {

namespace {

Number Bonferroni(const Number& p, std::size_t count) {
    if (std::isnan(p.value)) return p;
    return Number(ExactText(std::min(1.0, p.value * static_cast<double>(count))));
}

}  // namespace

void KeepPairsWith(ResultReading& result, const std::string& sample, const MessageCatalogue& texts) {
    for (TestReading& test : result.tests) {
        if (test.pairs.empty()) continue;
        std::erase_if(test.pairs,
                      [&](const PairComparison& pair) { return pair.first != sample && pair.second != sample; });
        for (PairComparison& pair : test.pairs) pair.adjustedP = Bonferroni(pair.p, test.pairs.size());
        const std::vector<std::string> parameters{sample, std::to_string(test.pairs.size())};
        if (const std::string* const text = texts.Remark("pairs-against")) {
            test.remarks.push_back(FillIn(*text, {&parameters}));
        }
    }
}

}  // namespace tarn
