#include "tests/harness/ArithmeticComparison.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <string_view>

#include "tests/harness/Document.h"
#include "vocabulary/TestFacts.h"

namespace harness {

namespace {

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
        {Tests::kHodgesLehmannPairs.resultName, {"Estimate", "Lower", "Upper"}},
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

/// `slack`: what a significance may be off by; 0 for any other number. `share`: of its value what a number may be off
/// by. A tail makes more of the digits of its statistic.
Difference CompareTexts(const std::string& a, const std::string& b, double slack, double share) {
    if (a == b) return Difference::kNone;
    char* endA = nullptr;
    char* endB = nullptr;
    const double x = std::strtod(a.c_str(), &endA);
    const double y = std::strtod(b.c_str(), &endB);
    if (a.empty() || b.empty() || *endA != '\0' || *endB != '\0') return Difference::kMore;
    constexpr double kMoreOfTails = 10;
    const double most = std::max((slack > 0 ? kMoreOfTails : 1) * share * std::max(std::fabs(x), std::fabs(y)), slack);
    return std::fabs(x - y) <= most ? Difference::kDigits : Difference::kMore;
}

/// Two elements of the two documents.
class Comparison {
 public:
    Comparison(const std::string& element, double share)
        : digits_(DigitsOf(element)), slack_(SlackOf(element)), share_(share) {}

    /// Differences are added to `Found`, with their place. `table`: the name of the element around them.
    void Compare(const pugi::xml_node& a, const pugi::xml_node& b, const std::string& place, const std::string& table) {
        for (const pugi::xml_attribute& attribute : a.attributes()) {
            const bool isRow =
                std::string_view(a.name()) == "Attribute" && std::string_view(attribute.name()) == "value";
            const std::string row = isRow ? a.attribute("name").value() : "";
            Take(attribute.value(), b.attribute(attribute.name()).value(), row, place + "@" + attribute.name());
        }
        if (std::string_view(a.name()) == "Row") {
            const std::vector<std::string> cellsA = SplitValues(a.text().get());
            const std::vector<std::string> cellsB = SplitValues(b.text().get());
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
        const Difference difference = CompareTexts(a, b, hasSlack ? slack_ : 0, share_);
        if (difference == Difference::kMore || (difference == Difference::kDigits && !mayDiffer)) Add(place, a, b);
    }
    void Add(const std::string& place, const std::string& a, const std::string& b) {
        found_.push_back(place + ": " + a + ", extended " + b);
    }

    const std::set<std::string>* digits_;
    double slack_;
    double share_;
    std::vector<std::string> found_;
};

}  // namespace

std::vector<std::string> DifferencesByArithmetic(const pugi::xml_node& defined, const pugi::xml_node& extended,
                                                 double share) {
    const std::string name = defined.attribute("name").value();
    Comparison comparison(name, share);
    comparison.Compare(defined, extended, name, "");
    return comparison.Found();
}

}  // namespace harness
