// Frequency weight 0 means that a record isn't there. With extended arithmetic that holds to the byte: the document of
// a table is that of the table without such records, whatever their values are, for every test of the catalogue, by
// records and by columns. As defined it doesn't hold, and documents depend on it; that it doesn't is shown here, too,
// or these tables would ask for nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/harness/AllTests.h"
#include "tests/harness/ArithmeticComparison.h"
#include "vocabulary/TestFacts.h"

namespace {

using harness::AllEntries;
using harness::Data;
using harness::Entry;
using harness::Rows;
using harness::Scene;

const Scene kPlain{"plain", 14, 5, 0, true};
const Scene kSpread{"spread", 11, 0, 0, true};
const Scene kMissing{"missing", 40, 7, 0.1, true};
const Scene kListwise{"listwise", 40, 9, 0.02, true, false};
const Scene kGaps{"gaps", 25, 6, 0, true, true, true};

constexpr std::size_t kContinuousFields = 10;

QKSettings Asked(const Scene& scene, bool isExtended) {
    QKSettings settings;
    settings.AddSetting("sigLevel", 0.9);  // so that comparisons are made
    settings.AddSetting("missingTreatment", scene.analysisMissing ? "analysis" : "listwise");
    settings.AddSetting("extendedArithmetic", isExtended);
    for (const Entry& entry : AllEntries()) settings.AddSetting(entry.setting, entry.settings);
    return settings;
}

/// A record of weight 0 whose values are meant to be in the way: a value of another record, one between two of them,
/// those in the middle among them, one beyond all, a large count; each as often as the others.
std::vector<double> WeightlessRow(Data& data, const Scene& scene) {
    std::vector<double> row = data.MakeRow(scene);
    for (std::size_t field = 0; field < kContinuousFields; ++field) {
        const double some = data.rows[data.random() % data.rows.size()][field];
        const double other = data.rows[data.random() % data.rows.size()][field];
        const double between = some == harness::kNone || other == harness::kNone ? 2.25 : (some + other) / 2;
        const double kinds[] = {row[field], some, between, -1000, 1000, 9};
        row[field] = kinds[data.random() % std::size(kinds)];
    }
    constexpr double kWeights[] = {0, -0.0, 0.5, 0.999, -0.75};
    row.back() = kWeights[data.random() % std::size(kWeights)];
    return row;
}

/// The rows, each of which has a weight, with others of weight 0 in front of them, among them and behind them.
Rows WithWeightless(Data& data, const Scene& scene) {
    Rows rows = data.rows;
    for (std::size_t i = 0; i < data.rows.size(); ++i) {
        const auto place = static_cast<std::ptrdiff_t>(data.random() % (rows.size() + 1));
        rows.insert(rows.begin() + place, WeightlessRow(data, scene));
    }
    rows.insert(rows.begin(), WeightlessRow(data, scene));
    rows.push_back(WeightlessRow(data, scene));
    return rows;
}

Data WeightyData(const Scene& scene, unsigned seed) {
    Data data(scene, seed);
    for (std::vector<double>& row : data.rows) row.back() = 1 + static_cast<double>(data.random() % 3);
    return data;
}

std::string TextByRecords(const QKSettings& settings, Data& data, const Rows& rows) {
    harness::RowStream stream(rows);
    return harness::RunStream(settings, data.fields, stream).text;
}

std::string TextByColumns(const QKSettings& settings, Data& data, const Rows& rows) {
    harness::ColumnStream stream(rows);
    return harness::RunStream(settings, data.fields, stream).text;
}

class WeightlessRecords : public testing::TestWithParam<Scene> {};

TEST_P(WeightlessRecords, AreNotThereWithExtendedArithmetic) {
    const Scene& scene = GetParam();
    const QKSettings settings = Asked(scene, true);
    for (unsigned seed = 1; seed <= 25; ++seed) {
        Data data = WeightyData(scene, seed);
        const Rows all = WithWeightless(data, scene);
        const std::string without = TextByRecords(settings, data, data.rows);
        ASSERT_NE(without, "");
        EXPECT_EQ(TextByColumns(settings, data, data.rows), without) << "seed " << seed;
        EXPECT_EQ(TextByRecords(settings, data, all), without) << "seed " << seed;
        EXPECT_EQ(TextByColumns(settings, data, all), without) << "seed " << seed;
        if (HasFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, WeightlessRecords, testing::Values(kPlain, kSpread, kMissing, kListwise, kGaps),
                         [](const auto& one) { return one.param.name; });

// What a run of these tables has in common with one without the records: nothing is in error in both for other reasons.
TEST(WeightlessRecordsTest, AreThereInMostTestsAsDefined) {
    std::set<std::string> disturbed;
    std::set<std::string> seen;
    const QKSettings settings = Asked(kPlain, false);
    for (unsigned seed = 1; seed <= 25; ++seed) {
        Data data = WeightyData(kPlain, seed);
        const Rows all = WithWeightless(data, kPlain);
        const harness::Document a(TextByRecords(settings, data, data.rows));
        const harness::Document b(TextByRecords(settings, data, all));
        ASSERT_EQ(a.TestCount(), b.TestCount());
        for (int i = 0; i < a.TestCount(); ++i) {
            const std::string name = a.Test(i).Attribute("name");
            seen.insert(name);
            if (!harness::DifferencesByArithmetic(a.Test(i).Node(), b.Test(i).Node()).empty()) disturbed.insert(name);
        }
    }
    EXPECT_EQ(seen.size(), std::size(Tests::kAll));
    for (const TestFacts* const test :
         {&Tests::kRuns, &Tests::kKolmogorovSmirnov, &Tests::kMedian, &Tests::kMoses, &Tests::kWaldWolfowitz,
          &Tests::kHodgesLehmannGroups, &Tests::kWilcoxonOneSample}) {
        EXPECT_TRUE(disturbed.contains(std::string(test->resultName))) << test->resultName;
    }
}

TEST(WeightlessRecordsTest, AloneAreNoRecords) {
    Data data = WeightyData(kPlain, 1);
    for (std::vector<double>& row : data.rows) row.back() = 0;
    harness::RowStream records(data.rows);
    harness::ColumnStream columns(data.rows);
    const QKSettings settings = Asked(kPlain, true);
    EXPECT_EQ(harness::RunStream(settings, data.fields, records).status, QKStatus(220003));
    EXPECT_EQ(harness::RunStream(settings, data.fields, columns).status, QKStatus(220003));
}

}  // namespace
