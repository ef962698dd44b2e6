#include "host/beyond/TestCases.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>

#include "machine/Lanes.h"
#include "machine/LargeArray.h"
#include "platform/common/QKSort.h"

namespace tarn {

namespace {

constexpr double kTieTolerance = 1e-14;

/// The cells of a column as the tests take them.
class Cells {
 public:
    Cells(const Table& table, int column)
        : column_(table.Columns()[static_cast<std::size_t>(column)]),
          cells_(table.Cells(static_cast<std::size_t>(column))),
          missing_(column_.IsCategorical() ? kMissingCategory : kMissingNumber),
          isCode_(column_.IsCategorical() && !column_.IsText()) {}

    bool IsMissing(std::size_t row) const { return cells_[row] == missing_; }
    bool HasMissing() const {
        WholeLanes are{};
        // Behind the last cell there is a 0, which is never the sign of a missing one.
        ForLanes(cells_.size(),
                 [&](std::size_t i, std::size_t left) { are |= LoadLanes(cells_.data() + i, left) == missing_; });
        return (are[0] | are[1]) != 0;
    }
    double NumberAt(std::size_t row) const {
        const double cell = cells_[row];
        return isCode_ ? column_.categories[static_cast<std::size_t>(cell)].number : cell;
    }
    /// Whether the cells are the numbers.
    bool AreNumbers() const { return !isCode_; }
    std::span<const double> Numbers() const { return cells_; }
    std::size_t CategoryAt(std::size_t row) const { return static_cast<std::size_t>(cells_[row]); }
    const Column& About() const { return column_; }

 private:
    const Column& column_;
    std::span<const double> cells_;
    double missing_;
    bool isCode_;
};

/// The weight of each record, 0 for one that is no case.
class Weights {
 public:
    Weights(const Table& table, const CaseRule& rule) : isWeighted_(table.WeightIndex() != Table::kNoColumn) {
        if (isWeighted_) weights_ = table.Cells(static_cast<std::size_t>(table.WeightIndex()));
        isLeftOut_ = rule.isLeftOut;
        if (!isLeftOut_.empty()) return;
        for (const int column : rule.listwise) listwise_.emplace_back(table, column);
    }

    bool AreOne() const { return !isWeighted_; }
    /// Whether every record is a case, of weight 1.
    bool TakeAll() const { return !isWeighted_ && listwise_.empty() && isLeftOut_.empty(); }
    double At(std::size_t row) const {
        if (!isLeftOut_.empty() && isLeftOut_[row] != 0) return 0;
        for (const Cells& cells : listwise_) {
            if (cells.IsMissing(row)) return 0;
        }
        if (!isWeighted_) return 1;
        const double weight = std::round(weights_[row]);
        return weight > 0 ? weight : 0;
    }

 private:
    bool isWeighted_;
    std::span<const double> weights_;
    std::span<const char> isLeftOut_;
    std::vector<Cells> listwise_;
};

/// Keys in the order of the numbers. 0 and -0 are one number, and so one key.
std::uint64_t KeyOf(double number) {
    const auto bits = std::bit_cast<std::uint64_t>(number + 0.0);
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}
double NumberOf(std::uint64_t key) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    return std::bit_cast<double>((key & kSign) != 0 ? key & ~kSign : ~key);
}

/// Puts the numbers that `at` gives for each place into `sorted`, which has their size, in ascending order. `at` may
/// read the number of its own place in `sorted`.
///
/// The keys stand in the memory of the numbers for as long as they are sorted: memory that is touched for the first
/// time takes longer than a pass over it.
template <typename At>
void SortInto(std::vector<double>& sorted, At at) {
    static_assert(sizeof(std::uint64_t) == sizeof(double) && alignof(std::uint64_t) == alignof(double));
    if (sorted.empty()) return;
    for (std::size_t i = 0; i < sorted.size(); ++i) new (&sorted[i]) std::uint64_t(KeyOf(at(i)));
    auto* const keys = std::launder(reinterpret_cast<std::uint64_t*>(sorted.data()));
    QKSort::SortKeys(keys, sorted.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) new (&keys[i]) double(NumberOf(keys[i]));
}

void SortNumbers(std::vector<double>& numbers) {
    SortInto(numbers, [&](std::size_t i) { return numbers[i]; });
}

/// Those without weights that `at` gives for each place.
template <typename At>
AscendingSample AscendingOf(std::size_t count, At at) {
    AscendingSample sample;
    sample.size = static_cast<double>(count);
    sample.values = RoomInLargePages<double>(count);
    sample.values.resize(count);
    SortInto(sample.values, at);
    return sample;
}

/// The places of the values in ascending order. Keys are sorted whose lowest bits make room for the place; those that
/// are alike in the others are put right afterwards.
LargeArray<std::uint64_t> OrderOf(std::span<const double> values) {
    const std::uint64_t places = (std::uint64_t{1} << std::bit_width(values.size())) - 1;
    LargeArray<std::uint64_t> order(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) order[i] = (KeyOf(values[i]) & ~places) | i;
    QKSort::SortKeys(order.begin(), order.size());
    const auto isLower = [&](std::uint64_t one, std::uint64_t other) {
        return values[one & places] < values[other & places];
    };
    for (std::size_t begin = 0; begin < order.size();) {
        std::size_t end = begin + 1;
        while (end < order.size() && (order[end] & ~places) == (order[begin] & ~places)) ++end;
        if (end - begin > 1) std::sort(order.begin() + begin, order.begin() + end, isLower);
        begin = end;
    }
    for (std::uint64_t& place : order) place &= places;
    return order;
}

AscendingSample AscendingWeighted(std::span<const double> values, const std::vector<double>& weights) {
    AscendingSample sample;
    for (const std::size_t i : OrderOf(values)) {
        sample.size += weights[i];
        if (!sample.values.empty() && sample.values.back() == values[i]) {
            sample.weights.back() += weights[i];
        } else {
            sample.values.push_back(values[i]);
            sample.weights.push_back(weights[i]);
        }
    }
    return sample;
}

/// Calls `visit(value)` for each value of all samples in ascending order, as a reference that may be set to an equal or
/// slightly smaller one, with the number of its sample.
template <typename Samples, typename Visit>
void WalkTogether(Samples& samples, Visit visit) {
    std::vector<std::size_t> next(samples.size(), 0);
    for (;;) {
        std::size_t lowest = samples.size();
        for (std::size_t i = 0; i < samples.size(); ++i) {
            if (next[i] == samples[i].values.size()) continue;
            if (lowest == samples.size() || samples[i].values[next[i]] < samples[lowest].values[next[lowest]]) {
                lowest = i;
            }
        }
        if (lowest == samples.size()) return;
        visit(lowest, next[lowest]);
        ++next[lowest];
    }
}

/// Numbers beyond this have no neighbours within the tolerance.
bool MayHaveNeighbours(const AscendingSample& sample) {
    constexpr double kFirstWithoutAny = 128;
    if (sample.values.empty()) return false;
    return sample.values.front() < kFirstWithoutAny && sample.values.back() > -kFirstWithoutAny;
}

bool AreNear(double lower, double upper) {
    return (upper > lower) & (upper - lower < kTieTolerance);
}

/// Whether any two different values of ascending ones lie so near.
bool HasNeighbours(const std::vector<double>& values) {
    std::int64_t found = 0;
    for (std::size_t i = 1; i < values.size(); ++i) found += AreNear(values[i - 1], values[i]) ? 1 : 0;
    return found > 0;
}

/// A walk over parts of two ascending lists together, without a jump that depends on which has the smaller value.
template <typename One, typename Other>
class NeighbourWalk {
 public:
    NeighbourWalk(One one, std::size_t oneBegin, std::size_t oneEnd, Other other, std::size_t otherBegin,
                  std::size_t otherEnd)
        : one_(one), other_(other), i_(oneBegin), iEnd_(oneEnd), j_(otherBegin), jEnd_(otherEnd) {}

    bool IsOver() const { return (i_ >= iEnd_) | (j_ >= jEnd_); }
    void Step() {
        const double ofOne = one_(i_);
        const double ofOther = other_(j_);
        has_ |= AreNear(std::min(ofOne, ofOther), std::max(ofOne, ofOther));
        i_ += ofOne <= ofOther ? 1 : 0;
        j_ += ofOne <= ofOther ? 0 : 1;
    }
    /// Goes to the end of either list: whether any two values were neighbours.
    bool Finish() {
        while (!IsOver()) Step();
        return has_;
    }

 private:
    One one_;
    Other other_;
    std::size_t i_;
    std::size_t iEnd_;
    std::size_t j_;
    std::size_t jEnd_;
    bool has_ = false;
};

/// Whether a value of one ascending list and a value of another lie so near. Each step of a walk waits for the one
/// before it, so that two walks, over the lower and the upper halves, take little longer than one of them.
template <typename One, typename Other>
bool HaveNeighbours(std::size_t oneSize, One one, std::size_t otherSize, Other other) {
    if (oneSize == 0 || otherSize == 0) return false;
    const std::size_t oneMiddle = oneSize / 2;
    std::size_t otherMiddle = 0;
    for (std::size_t end = otherSize; otherMiddle < end;) {
        const std::size_t between = otherMiddle + (end - otherMiddle) / 2;
        if (other(between) < one(oneMiddle)) {
            otherMiddle = between + 1;
        } else {
            end = between;
        }
    }
    // Neighbours on either side of the middle.
    if (otherMiddle > 0 && AreNear(other(otherMiddle - 1), one(oneMiddle))) return true;
    if (oneMiddle > 0 && otherMiddle < otherSize && AreNear(one(oneMiddle - 1), other(otherMiddle))) return true;
    NeighbourWalk lower(one, 0, oneMiddle, other, 0, otherMiddle);
    NeighbourWalk upper(one, oneMiddle, oneSize, other, otherMiddle, otherSize);
    while (!lower.IsOver() && !upper.IsOver()) {
        lower.Step();
        upper.Step();
    }
    const bool has = lower.Finish();
    return upper.Finish() || has;
}

bool HaveNeighbours(const std::vector<AscendingSample>& samples) {
    if (!std::ranges::any_of(samples, MayHaveNeighbours)) return false;
    if (samples.size() == 2) {
        const std::vector<double>& one = samples[0].values;
        const std::vector<double>& other = samples[1].values;
        return HasNeighbours(one) || HasNeighbours(other) ||
               HaveNeighbours(
                   one.size(), [&](std::size_t i) { return one[i]; }, other.size(),
                   [&](std::size_t i) { return other[i]; });
    }
    std::vector<double> all;
    for (const AscendingSample& sample : samples) all.insert(all.end(), sample.values.begin(), sample.values.end());
    if (samples.size() > 1) SortNumbers(all);
    return HasNeighbours(all);
}

/// Makes values of two ascending lists equal that count as tied. `one` and `other` give a reference to the place of a
/// value, and `mirror` is what the value of `one` is taken times: 1, or -1 for a list that ascends backwards. Which
/// list goes on is a matter of chance, so that a jump would be foretold wrongly half of the time.
template <typename One, typename Other>
void TieTwo(std::size_t oneSize, One one, double mirror, std::size_t otherSize, Other other) {
    double opener = -std::numeric_limits<double>::infinity();
    const auto tie = [&](double& place, double sign) {
        const double value = sign * place;
        opener = value - opener < kTieTolerance ? opener : value;
        place = sign * opener;
    };
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < oneSize && j < otherSize) {
        double* const ofOne = &one(i);
        double* const ofOther = &other(j);
        const bool isOne = mirror * *ofOne <= *ofOther;
        tie(*(isOne ? ofOne : ofOther), isOne ? mirror : 1.0);
        i += static_cast<std::size_t>(isOne);
        j += static_cast<std::size_t>(!isOne);
    }
    for (; i < oneSize; ++i) tie(one(i), mirror);
    for (; j < otherSize; ++j) tie(other(j), 1.0);
}

/// `lanesAt` takes a place and how many differences are left there, `at` a place.
template <typename LanesAt, typename At>
SignCounts CountSignsOf(std::size_t count, const std::vector<double>& weights, LanesAt lanesAt, At at) {
    if (weights.empty()) {
        WholeLanes positive{};
        WholeLanes negative{};
        ForLanes(count, [&](std::size_t i, std::size_t left) {
            const DoubleLanes lanes = lanesAt(i, left);
            positive -= lanes > 0.0;
            negative -= lanes < 0.0;
        });
        return {static_cast<double>(SumOfLanes(positive)), static_cast<double>(SumOfLanes(negative))};
    }
    SignCounts signs;
    for (std::size_t i = 0; i < count; ++i) {
        signs.positive += at(i) > 0 ? weights[i] : 0;
        signs.negative += at(i) < 0 ? weights[i] : 0;
    }
    return signs;
}

}  // namespace

double GroupedCases::Size() const {
    double size = 0;
    for (const AscendingSample& sample : samples) size += sample.size;
    return size;
}

GroupedCases CasesByGroup(const Table& table, int field, int group, const CaseRule& rule, const WorkShare& work) {
    const Cells values(table, field);
    const Cells groups(table, group);
    const Weights weights(table, rule);
    const std::size_t groupCount = groups.About().categories.size();
    std::vector<std::vector<double>> valuesOf(groupCount);
    std::vector<std::vector<double>> weightsOf(groupCount);
    std::vector<double> missing(groupCount, 0);
    if (groupCount > 0) {
        for (std::vector<double>& ofGroup : valuesOf) ofGroup = RoomInLargePages<double>(table.RowCount() / groupCount);
    }
    for (std::size_t row = 0; row < table.RowCount(); ++row) {
        const double weight = weights.At(row);
        if (weight == 0 || groups.IsMissing(row)) continue;
        const std::size_t category = groups.CategoryAt(row);
        if (values.IsMissing(row)) {
            missing[category] += weight;
            continue;
        }
        valuesOf[category].push_back(values.NumberAt(row));
        if (!weights.AreOne()) weightsOf[category].push_back(weight);
    }
    GroupedCases cases;
    std::vector<std::size_t> kept;
    for (std::size_t i = 0; i < groupCount; ++i) {
        if (valuesOf[i].empty()) continue;
        kept.push_back(i);
        cases.names.push_back(ShownCategory(groups.About(), groups.About().categories[i]));
        cases.missing.push_back(missing[i]);
    }
    cases.samples.resize(kept.size());
    work.Run(kept.size(),
             [&](std::size_t i) { cases.samples[i] = Ascending(std::move(valuesOf[kept[i]]), weightsOf[kept[i]]); });
    return cases;
}

CompleteCases CasesOf(const Table& table, const std::vector<int>& fields, const CaseRule& rule) {
    std::vector<Cells> cells;
    for (const int field : fields) cells.emplace_back(table, field);
    const Weights weights(table, rule);
    CompleteCases cases;
    cases.columns.resize(fields.size());
    cases.missing.assign(fields.size(), 0);
    const bool areAllNumbers = std::ranges::all_of(cells, &Cells::AreNumbers);
    if (weights.TakeAll() && areAllNumbers && std::ranges::none_of(cells, &Cells::HasMissing)) {
        for (std::size_t i = 0; i < cells.size(); ++i) cases.columns[i] = cells[i].Numbers();
        cases.size = static_cast<double>(table.RowCount());
        return cases;
    }
    cases.kept.resize(fields.size());
    for (std::vector<double>& column : cases.kept) column = RoomInLargePages<double>(table.RowCount());
    for (std::size_t row = 0; row < table.RowCount(); ++row) {
        const double weight = weights.At(row);
        if (weight == 0) continue;
        bool isComplete = true;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (!cells[i].IsMissing(row)) continue;
            cases.missing[i] += weight;
            isComplete = false;
        }
        if (!isComplete) continue;
        for (std::size_t i = 0; i < cells.size(); ++i) cases.kept[i].push_back(cells[i].NumberAt(row));
        if (!weights.AreOne()) cases.weights.push_back(weight);
        cases.size += weight;
    }
    for (std::size_t i = 0; i < cells.size(); ++i) cases.columns[i] = cases.kept[i];
    return cases;
}

AscendingSample Ascending(std::vector<double> values, const std::vector<double>& weights) {
    if (!weights.empty()) return AscendingWeighted(values, weights);
    AscendingSample sample;
    sample.size = static_cast<double>(values.size());
    sample.values = std::move(values);
    SortNumbers(sample.values);
    return sample;
}

AscendingSample AscendingCopy(std::span<const double> values, const std::vector<double>& weights) {
    if (!weights.empty()) return AscendingWeighted(values, weights);
    return AscendingOf(values.size(), [&](std::size_t i) { return values[i]; });
}

AscendingSample AscendingDifferences(std::span<const double> first, std::span<const double> second,
                                     const std::vector<double>& weights) {
    const auto difference = [&](std::size_t i) { return first[i] - second[i]; };
    if (weights.empty()) return AscendingOf(first.size(), difference);
    std::vector<double> differences(first.size());
    for (std::size_t i = 0; i < differences.size(); ++i) differences[i] = difference(i);
    return AscendingWeighted(differences, weights);
}

void TieTogether(std::vector<AscendingSample>& samples) {
    if (!HaveNeighbours(samples)) return;
    if (samples.size() == 2) {
        std::vector<double>& one = samples[0].values;
        std::vector<double>& other = samples[1].values;
        const auto in = [](std::vector<double>& values) {
            return [&values](std::size_t i) -> double& { return values[i]; };
        };
        return TieTwo(one.size(), in(one), 1.0, other.size(), in(other));
    }
    double opener = 0;
    bool isFirst = true;
    WalkTogether(samples, [&](std::size_t sample, std::size_t place) {
        double& value = samples[sample].values[place];
        if (isFirst || !(value - opener < kTieTolerance)) opener = value;
        isFirst = false;
        value = opener;
    });
}

void TieMagnitudes(AscendingSample& differences) {
    std::vector<double>& values = differences.values;
    if (!MayHaveNeighbours(differences)) return;
    // Zeros are none, however near to them a difference lies.
    const auto negatives = static_cast<std::size_t>(std::ranges::lower_bound(values, 0.0) - values.begin());
    const auto pastZeros = static_cast<std::size_t>(std::ranges::upper_bound(values, 0.0) - values.begin());
    const bool areTied =
        HasNeighbours(values) || HaveNeighbours(
                                     negatives, [&](std::size_t i) { return -values[negatives - 1 - i]; },
                                     values.size() - pastZeros, [&](std::size_t i) { return values[pastZeros + i]; });
    if (!areTied) return;
    TieTwo(
        negatives, [&](std::size_t i) -> double& { return values[negatives - 1 - i]; }, -1.0, values.size() - pastZeros,
        [&](std::size_t i) -> double& { return values[pastZeros + i]; });
}

TieBlocks BlocksOf(const std::vector<AscendingSample>& samples) {
    TieBlocks blocks;
    blocks.groupCount = samples.size();
    double opener = 0;
    WalkTogether(samples, [&](std::size_t sample, std::size_t place) {
        const double value = samples[sample].values[place];
        if (blocks.counts.empty() || value != opener) {
            opener = value;
            blocks.counts.resize(blocks.counts.size() + samples.size(), 0);
        }
        const auto weight = static_cast<std::int64_t>(samples[sample].WeightAt(place));
        blocks.counts[blocks.counts.size() - samples.size() + sample] += weight;
    });
    return blocks;
}

SignCounts CountSigns(std::span<const double> first, std::span<const double> second,
                      const std::vector<double>& weights) {
    // Behind the last difference there is a 0, which counts nowhere.
    return CountSignsOf(
        first.size(), weights,
        [&](std::size_t i, std::size_t left) {
            return LoadLanes(first.data() + i, left) - LoadLanes(second.data() + i, left);
        },
        [&](std::size_t i) { return first[i] - second[i]; });
}

SignCounts CountSigns(std::span<const double> differences, const std::vector<double>& weights) {
    return CountSignsOf(
        differences.size(), weights,
        [&](std::size_t i, std::size_t left) { return LoadLanes(differences.data() + i, left); },
        [&](std::size_t i) { return differences[i]; });
}

bool HasUnordered(const AscendingSample& sample) {
    return !sample.values.empty() && !(std::isfinite(sample.values.front()) && std::isfinite(sample.values.back()));
}

}  // namespace tarn
