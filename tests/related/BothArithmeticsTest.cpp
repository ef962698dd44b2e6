// The tests of related samples in both arithmetics, over random tables: an element is marked exactly where a number of
// it is another one than as defined. The Hodges-Lehmann estimate is left out: its interval, which ends at values of the
// data, may stay where it is though the positions are others.

#include <gtest/gtest.h>

#include <cmath>
#include <pugixml.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/BothArithmetics.h"
#include "tests/related/PairRun.h"
#include "tests/related/RankedRun.h"

namespace {

using harness::BothArithmetics;
using harness::Fields;
using harness::Rows;

/// The texts of an element. Numbers are told apart by their first three digits: a sum that cancels loses many in 64
/// bits, a tail that is one minus another all that it has, and a number that wrapped around is quite another one.
class Numbers {
 public:
    explicit Numbers(const pugi::xml_node& node) { Add(node); }

    bool AreThoseOf(const Numbers& other, double share, double bound) const {
        if (values_.size() != other.values_.size()) return false;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            if (!IsSame(values_[i], other.values_[i], share, bound)) return false;
        }
        return true;
    }

 private:
    void Add(const pugi::xml_node& node) {
        for (const pugi::xml_attribute attribute : node.attributes()) {
            if (std::string(attribute.name()) != "arithmetic") AddText(attribute.value());
        }
        if (node.type() == pugi::node_pcdata) AddText(node.value());
        for (const pugi::xml_node child : node.children()) Add(child);
    }
    void AddText(const std::string& text) {
        std::istringstream parts(text);
        for (std::string part; std::getline(parts, part, ';');) values_.push_back(part);
    }
    static bool IsSame(const std::string& a, const std::string& b, double share, double bound) {
        if (a == b) return true;
        char* end = nullptr;
        const double first = std::strtod(a.c_str(), &end);
        const double second = std::strtod(b.c_str(), nullptr);
        return *end == '\0' && std::fabs(first - second) <= share * std::fabs(second) + bound;
    }

    std::vector<std::string> values_;
};

/// What the extended element says of itself: nothing, "extended", "textbook" or both.
std::string MarkOf(const BothArithmetics& both) {
    return harness::WayOf(both.Extended());
}

/// Weights of records: small ones, and some up to the largest. None is 0, since extended such a record isn't there.
const std::vector<std::vector<double>> kWeights = {
    {1, 2, 3, 7}, {1000, 5000, 20000}, {46340, 46341, 1}, {65535, 65536}, {2147483647, 1000000, 12345678}};

struct Scene {
    const char* test;
    std::size_t fields;
    bool isCategorical;
    const char* comparison;  // null for a test of a pair
};

const Scene kScenes[] = {
    {"RSign", 2, false, nullptr},
    {"RWilcoxonSignedRanks", 2, false, nullptr},
    {"RMcNemar", 2, true, nullptr},
    {"RMarginalHomogeneity", 2, true, nullptr},
    {"RCochransQ", 4, true, "none"},
    {"RCochransQ", 3, true, "pairWise"},
    {"RCochransQ", 5, true, "stepWise"},
    {"RFriedmansTwoWayByRanks", 4, false, "none"},
    {"RFriedmansTwoWayByRanks", 3, false, "pairWise"},
    {"RFriedmansTwoWayByRanks", 5, false, "stepWise"},
    {"RKendallsCoefficient", 4, false, "stepWise"},
};

class BothArithmeticsOf : public testing::TestWithParam<Scene> {
 protected:
    Fields MakeFields() {
        Fields fields;
        for (std::size_t i = 0; i < GetParam().fields; ++i) {
            const std::string name = "x" + std::to_string(i);
            if (GetParam().isCategorical) {
                // The same categories, though not in the same order.
                fields.Text(name, random() % 2 == 0 ? std::vector<std::string>{"no", "yes"}
                                                    : std::vector<std::string>{"yes", "no"});
            } else {
                fields.Continuous(name);
            }
        }
        fields.Weight("w");
        return fields;
    }

    Rows MakeRows(std::size_t count, const std::vector<double>& weights) {
        const unsigned steps = random() % 2 == 0 ? 3 : 1000;
        Rows rows(count);
        for (std::vector<double>& row : rows) {
            for (std::size_t i = 0; i < GetParam().fields; ++i) {
                const bool isLow = random() % (2 + i) != 0;
                row.push_back(GetParam().isCategorical ? static_cast<double>(isLow)
                                                       : static_cast<double>(random() % steps) + (isLow ? 0 : 1));
            }
            row.push_back(weights[random() % weights.size()]);
        }
        return rows;
    }

    QKSettings Entry() const {
        QKSettings entry = pairs::Entry(ranked::Names(GetParam().fields));
        if (GetParam().comparison != nullptr) entry.AddSetting("typeOfMultipleComparison", GetParam().comparison);
        if (!GetParam().isCategorical) return entry;
        entry.AddSetting("classFormation", "givenCategoryList");
        AddVecSetting(entry, "successCategoryList", harness::Texts({"yes"}), false);
        AddVecSetting(entry, "categoriesList", harness::Texts({"yes"}), false);
        return entry;
    }

    std::mt19937 random{20'261'122};
};

TEST_P(BothArithmeticsOf, AreMarkedExactlyWhereTheyDiffer) {
    int marked = 0;
    int unmarked = 0;
    for (int round = 0; round < 300; ++round) {
        Fields fields = MakeFields();
        const Rows rows = MakeRows(3 + random() % 30, kWeights[static_cast<std::size_t>(round) % kWeights.size()]);
        const double sigLevel = round % 3 == 0 ? 0.05 : 0.9;  // so that comparisons are made
        const BothArithmetics both = harness::RunBoth(GetParam().test, Entry(), fields, rows, {{"sigLevel", sigLevel}});
        const Numbers asDefined(both.Defined().Node());
        const Numbers extended(both.Extended().Node());
        if (MarkOf(both).empty()) {
            EXPECT_TRUE(extended.AreThoseOf(asDefined, 1e-3, 1e-6)) << round;
        } else {
            EXPECT_FALSE(extended.AreThoseOf(asDefined, 1e-10, 1e-14)) << round << ": " << MarkOf(both);
        }
        ++(MarkOf(both).empty() ? unmarked : marked);
    }
    EXPECT_GT(marked, 10);
    EXPECT_GT(unmarked, 10);
}

/// 12 records of weights up to 40, and as many equal records.
TEST_P(BothArithmeticsOf, WeightsAreEqualRecords) {
    for (int round = 0; round < 10; ++round) {
        Fields fields = MakeFields();
        const Rows weighted = MakeRows(12, {1, 2, 17, 40});
        Rows expanded;
        for (const std::vector<double>& row : weighted) {
            for (int i = 0; i < static_cast<int>(row.back()); ++i) {
                expanded.push_back(row);
                expanded.back().back() = 1;
            }
        }
        QKSettings settings;
        settings.AddSetting("extendedArithmetic", true);
        settings.AddSetting("brief", true);
        settings.AddSetting("sigLevel", 0.9);
        settings.AddSetting(GetParam().test, Entry());
        std::ostringstream ofWeighted;
        std::ostringstream ofExpanded;
        harness::Run(settings, fields, weighted).document.Test(0).Node().print(ofWeighted);
        harness::Run(settings, fields, expanded).document.Test(0).Node().print(ofExpanded);
        EXPECT_NE(ofWeighted.str().find("StatisticsResult"), std::string::npos);
        EXPECT_EQ(ofWeighted.str(), ofExpanded.str());
    }
}

std::string NameOf(const testing::TestParamInfo<Scene>& info) {
    return info.param.test + std::string(info.param.comparison == nullptr ? "" : info.param.comparison);
}
void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.test;
}

INSTANTIATE_TEST_SUITE_P(, BothArithmeticsOf, testing::ValuesIn(kScenes), NameOf);

}  // namespace
