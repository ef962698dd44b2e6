#include "host/beyond/explain/RankBlocks.h"

#include <algorithm>
#include <cmath>

#include "host/NumberText.h"

namespace tarn {

namespace {

/// Up to so many rows a table is shown in full, of a longer one its first and its last rows.
constexpr std::size_t kMostRowsInFull = 200;
constexpr std::size_t kRowsAtEachEnd = 10;
/// More groups than that are no columns that a line holds.
constexpr std::size_t kMostGroupColumns = 6;

struct CountedValue {
    double value;
    std::size_t group;
    double cases;
};

std::vector<RankBlock> RankInOrder(std::vector<CountedValue> values, std::size_t groups) {
    std::ranges::sort(values, {}, &CountedValue::value);
    std::vector<RankBlock> blocks;
    for (const CountedValue& one : values) {
        if (blocks.empty() || blocks.back().value != one.value) {
            blocks.push_back({one.value, std::vector<double>(groups, 0), 0, 0});
        }
        blocks.back().counts[one.group] += one.cases;
        blocks.back().size += one.cases;
    }
    double below = 0;
    for (RankBlock& block : blocks) {
        block.rank = below + (block.size + 1) / 2;
        below += block.size;
    }
    return blocks;
}

}  // namespace

std::vector<RankBlock> RankTogether(const std::vector<AscendingSample>& samples) {
    std::vector<CountedValue> values;
    for (std::size_t group = 0; group < samples.size(); ++group) {
        for (std::size_t i = 0; i < samples[group].values.size(); ++i) {
            values.push_back({samples[group].values[i] + 0.0, group, samples[group].WeightAt(i)});
        }
    }
    return RankInOrder(std::move(values), samples.size());
}

std::vector<RankBlock> RankMagnitudes(const AscendingSample& differences) {
    constexpr std::size_t kSigns = 2;
    std::vector<CountedValue> values;
    for (std::size_t i = 0; i < differences.values.size(); ++i) {
        const double value = differences.values[i];
        if (value != 0) values.push_back({std::fabs(value), value > 0 ? 0U : 1U, differences.WeightAt(i)});
    }
    return RankInOrder(std::move(values), kSigns);
}

long double TieSumOf(const std::vector<RankBlock>& blocks) {
    long double sum = 0;
    for (const RankBlock& block : blocks) {
        const long double size = block.size;
        sum += size * size * size - size;
    }
    return sum;
}

double RankSumOf(const std::vector<RankBlock>& blocks, std::size_t group) {
    double sum = 0;
    for (const RankBlock& block : blocks) sum += block.RankSumOf(group);
    return sum;
}

void AddRows(ExplanationTable& table, std::size_t count,
             const std::function<std::vector<std::string>(std::size_t)>& rowOf) {
    const bool isShort = count <= kMostRowsInFull;
    for (std::size_t row = 0; row < count; ++row) {
        const bool isBetween = !isShort && row >= kRowsAtEachEnd && row + kRowsAtEachEnd < count;
        if (!isBetween) {
            table.rows.push_back(rowOf(row));
        } else if (row == kRowsAtEachEnd) {
            table.rows.emplace_back(table.columns.size(), "...");
        }
    }
}

void AddRankTable(StepWriter& steps, const std::string& title, const std::string& valueTitle,
                  const std::vector<std::string>& groups, const std::vector<RankBlock>& blocks) {
    const bool hasGroups = groups.size() <= kMostGroupColumns;
    std::vector<ExplanationTable::Column> columns{{valueTitle}};
    for (const std::string& group : hasGroups ? groups : std::vector<std::string>{"cases"}) columns.push_back({group});
    columns.push_back({"rank"});
    AddRows(steps.Table(title, columns), blocks.size(), [&](std::size_t row) {
        const RankBlock& block = blocks[row];
        std::vector<std::string> cells{ExactText(block.value)};
        for (const double count : hasGroups ? block.counts : std::vector<double>{block.size}) {
            cells.push_back(CalculatorText(count));
        }
        cells.push_back(CalculatorText(block.rank));
        return cells;
    });
}

}  // namespace tarn
