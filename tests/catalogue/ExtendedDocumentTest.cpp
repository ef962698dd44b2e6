// Below the limits of the widths the extended arithmetic gives the document as defined, to the byte, but for two kinds
// of numbers: digits, of tails that are worked out by themselves and of sums that cancel, and what is the textbook's,
// whose element says so. Here the two documents of random runs of every test are held against each other, with plots
// and without; and where an element says that it is another one, it has to be one. Records of weight 0 are not there
// with extended arithmetic, which WeightlessRecordsTest.cpp holds to the byte, so that these runs have none.

#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/harness/AllTests.h"
#include "tests/harness/ArithmeticComparison.h"
#include "vocabulary/TestFacts.h"

namespace {

using harness::AllEntries;
using harness::Data;
using harness::Entry;
using harness::kScenes;
using harness::Scene;

harness::Outcome RunAll(Data& data, const Scene& scene, bool isBrief, bool isExtended) {
    QKSettings settings;
    settings.AddSetting("sigLevel", 0.9);  // so that comparisons are made
    settings.AddSetting("missingTreatment", scene.analysisMissing ? "analysis" : "listwise");
    if (isBrief) settings.AddSetting("brief", true);
    if (isExtended) settings.AddSetting("extendedArithmetic", true);
    for (const Entry& entry : AllEntries()) settings.AddSetting(entry.setting, entry.settings);
    return harness::Run(settings, data.fields, data.rows);
}

/// Among the many cases of the long scene these have a product beyond 32 bits: n (n + 1), the pairs of two samples.
const std::set<std::string_view> kBeyond32Bits{Tests::kWilcoxonPairs.resultName, Tests::kHodgesLehmannPairs.resultName,
                                               Tests::kKolmogorovSmirnovTwoSample.resultName};
/// The same of the square of the cases, which is behind the pairs of fields alone.
const std::string_view kBeyond32BitsInPairs = Tests::kCochran.resultName;

class ExtendedDocument : public testing::TestWithParam<Scene> {};

TEST_P(ExtendedDocument, IsTheDefinedOneButForDigitsAndForWhatSaysSo) {
    const Scene& scene = GetParam();
    const bool isLong = scene.records > 1000;
    for (unsigned seed = 1; seed <= (isLong ? 1 : 8); ++seed) {
        Data data(scene, seed);
        // A missing weight is as far below 0 as 32 bits reach.
        for (std::vector<double>& row : data.rows) row.back() = row.back() == harness::kNone ? 2 : row.back();
        data.rows = harness::WeightyRows(data.fields, data.rows);
        for (const bool isBrief : {false, true}) {
            const harness::Outcome defined = RunAll(data, scene, isBrief, false);
            const harness::Outcome extended = RunAll(data, scene, isBrief, true);
            ASSERT_EQ(defined.document.TestCount(), extended.document.TestCount());
            EXPECT_EQ(defined.text.find("arithmetic="), std::string::npos);
            for (int i = 0; i < defined.document.TestCount(); ++i) {
                const pugi::xml_node a = defined.document.Test(i).Node();
                const pugi::xml_node b = extended.document.Test(i).Node();
                const std::string name = a.attribute("name").value();
                const std::vector<std::string> found = harness::DifferencesByArithmetic(a, b);
                const std::string ways = b.attribute("arithmetic").value();
                const std::string first = found.empty() ? "" : found.front();
                EXPECT_EQ(ways.empty(), first.empty())
                    << "seed " << seed << (isBrief ? ", brief, " : ", ") << ways << " " << name << " " << i << "\n"
                    << first;
                if (isLong && name == kBeyond32BitsInPairs &&
                    !b.find_child_by_attribute("name", "PairwiseResult").empty()) {
                    EXPECT_EQ(ways, "extended") << name;
                    continue;
                }
                const bool isWide = isLong && kBeyond32Bits.contains(name);
                EXPECT_EQ(ways.find("extended") != std::string::npos, isWide) << name;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, ExtendedDocument, testing::ValuesIn(kScenes),
                         [](const auto& one) { return one.param.name; });

}  // namespace
