// Below the limits of the widths the extended arithmetic gives the document as defined, to the byte, but for two kinds
// of numbers: digits, of tails that are worked out by themselves and of sums that cancel, and what is the textbook's,
// whose element says so. Here the two documents of random runs of every test are held against each other, with plots
// and without; and where an element says that it is another one, it has to be one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/catalogue/AllTests.h"
#include "tests/harness/Document.h"
#include "vocabulary/TestFacts.h"

namespace {

using catalogue::AllEntries;
using catalogue::Data;
using catalogue::Entry;
using catalogue::kScenes;
using catalogue::Scene;

// ---- What may differ in digits ----

/// The rows of an element in which digits may differ; "Content" is a table of pairs or of subsets.
const std::set<std::string>* DigitsOf(const std::string& element) {
    using Rows = std::set<std::string>;
    static const Rows kSignificances{"AsymptoticSig2Tailed", "AsymptoticSig1Tailed", "ExactSig2Tailed",
                                     "ExactSig1Tailed"};
    static const Rows kNormal{"StandardError", "StandardTestStatistic", "AsymptoticSig2Tailed"};
    static const Rows kSeveral{"TestStatistic",        "StandardError", "StandardTestStatistic",
                               "AsymptoticSig2Tailed", "KendallsW",     "Content"};
    static const std::map<std::string_view, Rows> kDigits{
        {Tests::kBinomial.resultName,
         {"StandardTestStatistic", "AsymptoticSig2Tailed", "AsymptoticSig1Tailed", "ExactSig2Tailed",
          "ExactSig1Tailed"}},
        {Tests::kChiSquare.resultName, {"TestStatistic", "AsymptoticSig2Tailed"}},
        {Tests::kRuns.resultName, {"StandardTestStatistic", "AsymptoticSig2Tailed"}},
        {Tests::kWilcoxonOneSample.resultName, kNormal},
        {Tests::kKolmogorovSmirnov.resultName,
         {"AsymptoticSig2Tailed", "TestStatistic", "Absolute", "Positive", "Negative"}},
        {Tests::kProportionIntervals.resultName, {"Lower", "Upper"}},
        {Tests::kSign.resultName, {"StandardTestStatistic", "AsymptoticSig2Tailed", "ExactSig2Tailed"}},
        {Tests::kWilcoxonPairs.resultName, kNormal},
        {Tests::kMcNemar.resultName, {"TestStatistic", "AsymptoticSig2Tailed", "ExactSig2Tailed"}},
        {Tests::kMarginalHomogeneity.resultName, kNormal},
        {Tests::kFriedman.resultName, kSeveral},
        {Tests::kKendall.resultName, kSeveral},
        {Tests::kCochran.resultName, kSeveral},
        {Tests::kMannWhitney.resultName, kNormal},
        {Tests::kKolmogorovSmirnovTwoSample.resultName, {"AsymptoticSig2Tailed"}},
        {Tests::kWaldWolfowitz.resultName, {"StandardTestStatistic", "AsymptoticSig2Tailed"}},
        {Tests::kMoses.resultName, kSignificances},
        {Tests::kKruskalWallis.resultName, kSeveral},
        {Tests::kJonckheereTerpstra.resultName, kSeveral},
        {Tests::kMedian.resultName,
         {"TestStatistic", "ChiSquare", "AsymptoticSig2Tailed", "FisherExactSig", "Content"}},
    };
    const auto found = kDigits.find(element);
    return found == kDigits.end() ? nullptr : &found->second;
}

/// What a number may be off by beside its digits: a significance that is one minus a distribution function,
/// Kolmogorov's limit, which is cut at both ends, and the end of an interval that is searched for.
double SlackOf(const std::string& element) {
    constexpr double kEndOfSearch = 1e-7;
    constexpr double kCutTails = 5e-7;
    constexpr double kRoundedTails = 5e-15;
    if (element == Tests::kProportionIntervals.resultName) return kEndOfSearch;
    return element.find("Kolmogorov") != std::string::npos ? kCutTails : kRoundedTails;
}

// ---- Comparison ----

enum class Difference { kNone, kDigits, kMore };

/// `slack`: what a significance may be off by; 0 for any other number. A tail makes more of the digits of its
/// statistic.
Difference Compare(const std::string& a, const std::string& b, double slack) {
    if (a == b) return Difference::kNone;
    char* endA = nullptr;
    char* endB = nullptr;
    const double x = std::strtod(a.c_str(), &endA);
    const double y = std::strtod(b.c_str(), &endB);
    if (a.empty() || b.empty() || *endA != '\0' || *endB != '\0') return Difference::kMore;
    const double share = slack > 0 ? 1e-8 : 1e-9;
    const double most = std::max(share * std::max(std::fabs(x), std::fabs(y)), slack);
    return std::fabs(x - y) <= most ? Difference::kDigits : Difference::kMore;
}

/// Two elements of the two documents.
class Comparison {
 public:
    explicit Comparison(const std::string& element) : digits_(DigitsOf(element)), slack_(SlackOf(element)) {}

    /// Differences are added to `Found`, with their place. `table`: the name of the element around them.
    void Compare(const pugi::xml_node& a, const pugi::xml_node& b, const std::string& place, const std::string& table) {
        for (const pugi::xml_attribute& attribute : a.attributes()) {
            const bool isRow =
                std::string_view(a.name()) == "Attribute" && std::string_view(attribute.name()) == "value";
            const std::string row = isRow ? a.attribute("name").value() : "";
            Take(attribute.value(), b.attribute(attribute.name()).value(), row, place + "@" + attribute.name());
        }
        if (std::string_view(a.name()) == "Row") {
            const std::vector<std::string> cellsA = harness::SplitValues(a.text().get());
            const std::vector<std::string> cellsB = harness::SplitValues(b.text().get());
            if (cellsA.size() != cellsB.size()) return Add(place, a.text().get(), b.text().get());
            for (std::size_t i = 0; i < cellsA.size(); ++i) Take(cellsA[i], cellsB[i], table, place);
            return;
        }
        const auto childrenA = a.children();
        const auto childrenB = b.children();
        if (std::distance(childrenA.begin(), childrenA.end()) != std::distance(childrenB.begin(), childrenB.end())) {
            return Add(place, "children", "others");
        }
        auto other = childrenB.begin();
        for (const pugi::xml_node& child : childrenA) {
            const std::string name = child.attribute("name").value();
            Compare(child, *other++, place + "/" + name, a.attribute("name").value());
        }
    }
    const std::vector<std::string>& Found() const { return found_; }

 private:
    void Take(const std::string& a, const std::string& b, const std::string& row, const std::string& place) {
        const bool mayDiffer = digits_ != nullptr && digits_->count(row) > 0;
        const bool hasSlack =
            row.find("Sig") != std::string::npos || row == "Content" || row == "Lower" || row == "Upper";
        const Difference difference = ::Compare(a, b, hasSlack ? slack_ : 0);
        if (difference == Difference::kMore || (difference == Difference::kDigits && !mayDiffer)) Add(place, a, b);
    }
    void Add(const std::string& place, const std::string& a, const std::string& b) {
        found_.push_back(place + ": " + a + ", extended " + b);
    }

    const std::set<std::string>* digits_;
    double slack_;
    std::vector<std::string> found_;
};

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
        for (const bool isBrief : {false, true}) {
            const harness::Outcome defined = RunAll(data, scene, isBrief, false);
            const harness::Outcome extended = RunAll(data, scene, isBrief, true);
            ASSERT_EQ(defined.document.TestCount(), extended.document.TestCount());
            EXPECT_EQ(defined.text.find("arithmetic="), std::string::npos);
            for (int i = 0; i < defined.document.TestCount(); ++i) {
                const pugi::xml_node a = defined.document.Test(i).Node();
                const pugi::xml_node b = extended.document.Test(i).Node();
                const std::string name = a.attribute("name").value();
                Comparison comparison(name);
                comparison.Compare(a, b, name + " " + std::to_string(i), "");
                const std::string ways = b.attribute("arithmetic").value();
                const std::string first = comparison.Found().empty() ? "" : comparison.Found().front();
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
