#include "host/beyond/exact/FriedmanExact.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

#include "host/beyond/StopQuestion.h"
#include "host/beyond/exact/StateMap.h"

namespace tarn {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr double kMostArrangements = 40320;  // of one row
constexpr std::size_t kMostColumns = 64;
constexpr std::size_t kMostRows = 100000;
constexpr int kMostBits = 28;  // of a column's sum, so that squares of all of them add up within 64 bits

using Scores = std::vector<std::uint64_t>;

/// Rows of one kind: which scores they have, in ascending order, and how many rows there are.
struct RowKind {
    Scores scores;
    std::size_t rows = 0;
    double arrangements = 1;
};

/// What the distribution rests on, in the smallest numbers that tell the same.
struct Design {
    std::size_t columns = 0;
    std::vector<RowKind> kinds;  ///< those with the most arrangements first, when states are fewest
    Scores observed;             ///< sums of the columns

    std::uint64_t LargestSum() const {
        std::uint64_t sum = 0;
        for (const RowKind& kind : kinds) sum += kind.scores.back() * kind.rows;
        return sum;
    }
};

int BitWidth(std::uint64_t number) {
    return static_cast<int>(std::bit_width(number));
}

/// How many different orders the scores have, which ascend.
double ArrangementsOf(const Scores& scores) {
    double arrangements = 1;
    double same = 0;
    for (std::size_t i = 0; i < scores.size(); ++i) {
        same = i > 0 && scores[i] == scores[i - 1] ? same + 1 : 1;
        arrangements *= static_cast<double>(i + 1) / same;
    }
    return std::round(arrangements);
}

/// Whether the design is one that can be gone through, memory aside.
bool IsWithinLimits(const Design& design) {
    const auto hasFew = [](const RowKind& kind) { return kind.arrangements <= kMostArrangements; };
    return design.columns > 1 && design.columns <= kMostColumns && std::ranges::all_of(design.kinds, hasFew) &&
           design.LargestSum() < (std::uint64_t{1} << kMostBits);
}

/// Of rows whose scores ascend, with their number, and the columns' sums. Rows of equal scores tell nothing and are
/// left out; scores are counted from the smallest of their row.
Design DesignOf(std::size_t columns, const std::map<std::vector<std::int64_t>, std::size_t>& rows,
                const std::vector<std::int64_t>& columnSums) {
    Design design;
    design.columns = columns;
    std::int64_t unit = 0;
    std::int64_t lowest = 0;
    for (const auto& row : rows) {
        lowest += row.first.front() * static_cast<std::int64_t>(row.second);
        for (const std::int64_t score : row.first) unit = std::gcd(unit, score - row.first.front());
    }
    unit = std::max<std::int64_t>(1, unit);
    for (const auto& row : rows) {
        if (row.first.front() == row.first.back()) continue;
        RowKind kind;
        for (const std::int64_t score : row.first) {
            kind.scores.push_back(static_cast<std::uint64_t>((score - row.first.front()) / unit));
        }
        kind.rows = row.second;
        kind.arrangements = ArrangementsOf(kind.scores);
        design.kinds.push_back(kind);
    }
    for (const std::int64_t sum : columnSums) {
        design.observed.push_back(static_cast<std::uint64_t>((sum - lowest) / unit));
    }
    std::ranges::stable_sort(design.kinds, std::ranges::greater(), &RowKind::arrangements);
    return design;
}

Design FriedmanDesign(const ScoreRows& rows) {
    std::map<std::vector<std::int64_t>, std::size_t> kinds;
    std::vector<std::int64_t> columnSums(rows.columns);
    std::vector<std::int64_t> row(rows.columns);
    for (std::size_t i = 0; i < rows.RowCount(); ++i) {
        for (std::size_t column = 0; column < rows.columns; ++column) {
            row[column] = rows.At(i, column);
            columnSums[column] += row[column];
        }
        std::ranges::sort(row);
        ++kinds[row];
    }
    return DesignOf(rows.columns, kinds, columnSums);
}

bool IsOfUse(const ScoreRows& rows) {
    return rows.columns > 1 && rows.RowCount() > 0 && rows.RowCount() <= kMostRows;
}

bool IsOfUse(const std::vector<std::int64_t>& successes, const std::vector<std::int64_t>& columnSums) {
    const auto columns = static_cast<std::int64_t>(columnSums.size());
    const auto isWithin = [&](std::int64_t count) { return count >= 0 && count <= columns; };
    return columns > 1 && columns <= static_cast<std::int64_t>(kMostColumns) && !successes.empty() &&
           successes.size() <= kMostRows && std::ranges::all_of(successes, isWithin) &&
           std::accumulate(successes.begin(), successes.end(), std::int64_t{0}) ==
               std::accumulate(columnSums.begin(), columnSums.end(), std::int64_t{0});
}

Design CochranDesign(const std::vector<std::int64_t>& successes, const std::vector<std::int64_t>& columnSums) {
    std::map<std::vector<std::int64_t>, std::size_t> kinds;
    std::map<std::int64_t, std::size_t> rowsOfCount;
    for (const std::int64_t count : successes) ++rowsOfCount[count];
    for (const auto& one : rowsOfCount) {
        std::vector<std::int64_t> row(columnSums.size());
        std::fill(row.end() - one.first, row.end(), 1);
        kinds[row] = one.second;
    }
    return DesignOf(columnSums.size(), kinds, columnSums);
}

/// Adds the rows one by one. A state is the columns' sums in ascending order; the largest follows from the others.
template <typename Key>
class RowByRow {
 public:
    explicit RowByRow(const Design& design)
        : design_(design), packing_{design.columns - 1, BitWidth(design.LargestSum())} {}

    /// Nothing where memory doesn't suffice.
    std::optional<double> UpperTail() {
        states_.Add(0, 1);
        std::size_t rowsLeft = 0;
        for (const RowKind& kind : design_.kinds) rowsLeft += kind.rows;
        if (rowsLeft == 0) return 1;
        double tail = 0;
        for (const RowKind& kind : design_.kinds) {
            TakeArrangements(kind);
            for (std::size_t i = 0; i < kind.rows; ++i) {
                --rowsLeft;
                if (rowsLeft == 0) {
                    tail = TailOfLastRow();
                } else if (!AddRow()) {
                    return std::nullopt;
                }
            }
        }
        return std::min(1.0, tail);
    }

 private:
    using Lanes = std::array<std::uint64_t, kMostColumns>;

    void TakeArrangements(const RowKind& kind) {
        Scores row = kind.scores;
        arrangements_.clear();
        do {
            arrangements_.insert(arrangements_.end(), row.begin(), row.end());
        } while (std::next_permutation(row.begin(), row.end()));
        share_ = 1 / kind.arrangements;
        rowSum_ = std::accumulate(row.begin(), row.end(), std::uint64_t{0});
    }

    void Unpack(Key key, Lanes& lanes) const {
        packing_.Unpack(key, lanes.data());
        std::uint64_t last = total_;
        for (std::size_t i = 0; i < packing_.lanes; ++i) last -= lanes[i];
        lanes[packing_.lanes] = last;
    }

    /// The first row's arrangements are one state; its first stands for all of them.
    bool AddRow() {
        const std::size_t columns = design_.columns;
        const bool isFirst = total_ == 0;
        next_.Clear();
        const bool hasRoom = states_.ForEach([&](Key key, double probability) {
            AskNowAndThen();
            Lanes lanes;
            Unpack(key, lanes);
            if (isFirst) return next_.Add(WithAdded(lanes, arrangements_.data()), probability);
            for (std::size_t i = 0; i < arrangements_.size(); i += columns) {
                if (!next_.Add(WithAdded(lanes, arrangements_.data() + i), probability * share_)) return false;
            }
            return true;
        });
        std::swap(states_, next_);
        total_ += rowSum_;
        return hasRoom;
    }

    Key WithAdded(const Lanes& lanes, const std::uint64_t* row) const {
        Lanes sorted;
        for (std::size_t i = 0; i < design_.columns; ++i) {
            const std::uint64_t sum = lanes[i] + row[i];
            std::size_t place = i;
            for (; place > 0 && sorted[place - 1] > sum; --place) sorted[place] = sorted[place - 1];
            sorted[place] = sum;
        }
        return packing_.Pack(sorted.data());
    }

    double TailOfLastRow() const {
        const std::size_t columns = design_.columns;
        const std::uint64_t observed = std::inner_product(design_.observed.begin(), design_.observed.end(),
                                                          design_.observed.begin(), std::uint64_t{0});
        double tail = 0;
        states_.ForEach([&](Key key, double probability) {
            AskNowAndThen();
            Lanes lanes;
            Unpack(key, lanes);
            std::size_t hits = 0;
            for (std::size_t first = 0; first < arrangements_.size(); first += columns) {
                std::uint64_t squares = 0;
                for (std::size_t i = 0; i < columns; ++i) {
                    const std::uint64_t sum = lanes[i] + arrangements_[first + i];
                    squares += sum * sum;
                }
                hits += squares >= observed ? 1U : 0U;
            }
            tail += probability * (static_cast<double>(hits) * share_);
            return true;
        });
        return tail;
    }

    const Design& design_;
    LanePacking<Key> packing_;
    StateMap<Key> states_;
    StateMap<Key> next_;
    Scores arrangements_;  // of a row, one after another
    double share_ = 1;     // of each of them
    std::uint64_t rowSum_ = 0;
    std::uint64_t total_ = 0;  // of the columns
};

std::optional<double> UpperTail(const Design& design) {
    if (!IsWithinLimits(design)) return std::nullopt;
    const int width = BitWidth(design.LargestSum());
    const std::size_t lanes = design.columns - 1;
    if (LanePacking<std::uint64_t>::Fits(lanes, width)) return RowByRow<std::uint64_t>(design).UpperTail();
    if (LanePacking<WideKey>::Fits(lanes, width)) return RowByRow<WideKey>(design).UpperTail();
    return std::nullopt;
}

/// The states that sums have in ascending order after rows whose largest scores add up to `largest`. Sums of r rows of
/// the ranks 1 to k are the whole numbers in r times the permutohedron, whose volume is k^(k-2) (Stanley, 1980, Annals
/// of Discrete Mathematics 6, 333-342); other scores are taken as if they filled one of the same width.
double StatesByVolume(double columns, double largest) {
    const double scale = largest / (columns - 1) + 1;  // the states on its rim count, too
    return 1 + std::exp((columns - 2) * std::log(columns) + (columns - 1) * std::log(scale) - std::lgamma(columns + 1));
}

/// The ways to divide a whole number into parts, of which states are some (Hardy and Ramanujan, 1918, Proceedings of
/// the London Mathematical Society 17, 75-115). `total`: of the columns' sums.
double StatesByParts(double total) {
    constexpr double kPi = 3.14159265358979323846;
    return std::max(1.0, std::exp(kPi * std::sqrt(2 * total / 3)) / (4 * std::sqrt(3.0) * std::max(1.0, total)));
}

double StepsOf(const Design& design) {
    const int width = BitWidth(design.LargestSum());
    if (!IsWithinLimits(design) || !LanePacking<WideKey>::Fits(design.columns - 1, width)) return kNever;
    constexpr double kStepsOfColumn = 0.25;  // as measured
    const auto columns = static_cast<double>(design.columns);
    double steps = 0;
    double largest = 0;
    double total = 0;       // of the columns' distances from their smallest sum
    double totalBelow = 0;  // of those from their largest sum
    double paths = 1;       // there are no more states than ways to them
    for (const RowKind& kind : design.kinds) {
        const auto rowTotal =
            static_cast<double>(std::accumulate(kind.scores.begin(), kind.scores.end(), std::uint64_t{0}));
        for (std::size_t i = 0; i < kind.rows; ++i) {
            const double byParts = StatesByParts(std::min(total, totalBelow));
            const double states = std::min({paths, byParts, StatesByVolume(columns, largest)});
            steps += states * kind.arrangements * columns * kStepsOfColumn;
            paths *= largest == 0 ? 1 : kind.arrangements;
            largest += static_cast<double>(kind.scores.back());
            total += rowTotal;
            totalBelow += columns * static_cast<double>(kind.scores.back()) - rowTotal;
        }
    }
    return steps;
}

}  // namespace

std::optional<double> FriedmanExact(const ScoreRows& rows) {
    return IsOfUse(rows) ? UpperTail(FriedmanDesign(rows)) : std::nullopt;
}

double FriedmanExactSteps(const ScoreRows& rows) {
    return IsOfUse(rows) ? StepsOf(FriedmanDesign(rows)) : kNever;
}

std::optional<double> CochranExact(const std::vector<std::int64_t>& successes,
                                   const std::vector<std::int64_t>& columnSums) {
    return IsOfUse(successes, columnSums) ? UpperTail(CochranDesign(successes, columnSums)) : std::nullopt;
}

double CochranExactSteps(const std::vector<std::int64_t>& successes, const std::vector<std::int64_t>& columnSums) {
    return IsOfUse(successes, columnSums) ? StepsOf(CochranDesign(successes, columnSums)) : kNever;
}

}  // namespace tarn
