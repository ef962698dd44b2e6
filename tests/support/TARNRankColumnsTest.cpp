// Ranks of many values at once, held against the rule as it is told, one value after the other.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "support/Int32.h"
#include "support/TARNRank.h"
#include "tests/harness/ColumnData.h"

namespace {

using harness::ColumnData;

/// A run is opened by its first value, and its values get the mid-rank when it is closed, in their order.
class PlainRank {
 public:
    void Add(double value, std::int32_t weight, std::int32_t group) {
        if (!run.empty() && !(std::fabs(value - opener) < 1e-14)) {
            Close();
            below = Add32(below, tied);
            tied = 0;
            run.clear();
        }
        if (run.empty()) opener = value;
        tied = Add32(tied, weight);
        run.emplace_back(group, weight);
    }

    void Close() {
        const double rank = Add32(tied, 1) * 0.5 + below;
        for (const auto& [group, weight] : run) {
            GroupRankStats& stats = groups[group];
            stats.sumOfRanks += rank * weight;
            if (rank > stats.maxRank) stats.maxRank = rank;
            if (stats.minRank > rank || stats.minRank < 0) stats.minRank = rank;
            stats.ranks.emplace_back(rank, weight);
        }
        if (tied >= 2) ties[opener] = tied;
    }

    double TieSum() const {
        double sum = 0;
        for (const auto& [value, size] : ties) sum += static_cast<double>(size) * size * size - size;
        return sum;
    }

    std::map<std::int32_t, GroupRankStats> groups;

 private:
    std::map<double, std::int32_t> ties;
    std::vector<std::pair<std::int32_t, std::int32_t>> run;
    double opener = 0;
    std::int32_t tied = 0;
    std::int32_t below = 0;
};

struct Table {
    std::vector<double> values;
    std::vector<std::int32_t> weights;  // none: each is 1
    std::vector<std::int32_t> groups;
};

void ExpectAsPlain(const Table& table, const std::vector<std::size_t>& cuts) {
    constexpr std::int32_t kKept = 1;
    PlainRank plain;
    for (std::size_t i = 0; i < table.values.size(); ++i) {
        const std::int32_t weight = table.weights.empty() ? 1 : table.weights[i];
        if (table.groups[i] >= 0) plain.Add(table.values[i], weight, table.groups[i]);
    }
    plain.Close();
    TARNRank rank(Arithmetic::AsDefined());
    rank.KeepRanksOf(kKept);
    std::size_t begin = 0;
    for (const std::size_t end : cuts) {
        const std::int32_t* const weights = table.weights.empty() ? nullptr : table.weights.data() + begin;
        rank.AddAscending(table.values.data() + begin, weights, table.groups.data() + begin, end - begin);
        begin = end;
    }
    rank.CloseTieRun();
    ASSERT_TRUE(harness::SameBits(rank.TieCorrectionSum(), plain.TieSum()));
    for (const auto& [group, stats] : plain.groups) {
        ASSERT_TRUE(harness::SameBits(rank.GroupRanks(group).sumOfRanks, stats.sumOfRanks)) << group;
    }
    ASSERT_EQ(rank.GroupRanks(kKept).ranks, plain.groups[kKept].ranks);
    ASSERT_EQ(rank.GroupRanks(kKept).minRank, plain.groups[kKept].minRank);
    ASSERT_EQ(rank.GroupRanks(kKept).maxRank, plain.groups[kKept].maxRank);
}

Table RandomTable(ColumnData& data, std::size_t count) {
    Table table{data.AscendingValues(count), {}, std::vector<std::int32_t>(count)};
    if (data.Chance(0.5)) table.weights = data.Weights(count);
    const std::size_t groups = 1 + data.Below(5);
    const std::int32_t lowest = data.Chance(0.5) ? -1 : 0;  // with -1: some are left out
    for (std::int32_t& group : table.groups) group = lowest + static_cast<std::int32_t>(data.Below(groups + 1));
    return table;
}

TEST(TARNRankColumns, AscendingValuesAreOneAfterTheOther) {
    ColumnData data(11);
    for (int i = 0; i < 800; ++i) {
        const std::size_t count = 1 + data.Below(i % 4 == 0 ? 6 : 3000);
        ExpectAsPlain(RandomTable(data, count), data.Cuts(count));
        if (HasFatalFailure()) return;
    }
}

TEST(TARNRankColumns, WholeTableAtOnceIsOneAfterTheOther) {
    ColumnData data(12);
    for (int i = 0; i < 100; ++i) {
        const Table table = RandomTable(data, 5000);
        ExpectAsPlain(table, {table.values.size()});
        if (HasFatalFailure()) return;
    }
}

/// Up to 9.4e7 the sums are exact in every order; the tables lie on both sides of it, and grow beyond it in one run.
TEST(TARNRankColumns, WeightsAroundTheLastExactSumAreOneAfterTheOther) {
    ColumnData data(13);
    for (const std::int32_t each : {46'999, 47'000, 47'001, 60'001, 1'000'003}) {
        for (int i = 0; i < 20; ++i) {
            Table table = RandomTable(data, 2000);
            table.weights.assign(table.values.size(), each);
            ExpectAsPlain(table, data.Cuts(table.values.size()));
            if (HasFatalFailure()) return;
        }
    }
}

/// A few values, taken one by one or with the others, go beyond it with negative weights, which take nothing back.
TEST(TARNRankColumns, NegativeWeightsCountTowardsTheLastExactSum) {
    constexpr std::size_t kFew = 10;
    ColumnData data(15);
    for (int i = 0; i < 20; ++i) {
        Table table = RandomTable(data, 2000);
        table.weights.assign(table.values.size(), 30'001);
        std::fill_n(table.weights.begin(), kFew, -99'999'937);
        ExpectAsPlain(table, {kFew, table.values.size()});
        ExpectAsPlain(table, {table.values.size()});
        if (HasFatalFailure()) return;
    }
}

TEST(TARNRankColumns, InfiniteValuesAreRunsOfTheirOwn) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    ColumnData data(14);
    Table table = RandomTable(data, 40);
    for (std::size_t i = 0; i < 5; ++i) table.values[i] = -kInfinity;
    for (std::size_t i = 30; i < 40; ++i) table.values[i] = kInfinity;
    table.weights.assign(40, 3);
    ExpectAsPlain(table, {40});
    ExpectAsPlain(table, {17, 33, 40});
}

TEST(TARNRankColumns, NoValueAndNoneOfAGroupChangeNothing) {
    TARNRank rank(Arithmetic::AsDefined());
    rank.AddAscending(nullptr, nullptr, nullptr, 0);
    const double values[] = {1, 2, 3};
    const std::int32_t groups[] = {-1, -5, -1};
    rank.AddAscending(values, nullptr, groups, 3);
    rank.CloseTieRun();
    EXPECT_EQ(rank.TieCorrectionSum(), 0);
    EXPECT_EQ(rank.GroupRanks(0).sumOfRanks, 0);
}

}  // namespace
