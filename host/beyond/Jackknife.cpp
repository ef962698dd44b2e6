#include "host/beyond/Jackknife.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "host/beyond/IntervalScales.h"

namespace tarn {

namespace {

/// What comes out without one case, as often as there are such cases.
class LeaveOneOut {
 public:
    void Add(double value, double count) {
        count_ += count;
        const double step = (value - mean_) * count / count_;
        squares_ += count * (value - mean_) * (value - mean_ - step);
        mean_ += step;
    }
    double Error() const {
        constexpr double kFewest = 3;
        if (count_ < kFewest) return std::numeric_limits<double>::quiet_NaN();
        return std::sqrt((count_ - 1) / count_ * squares_);
    }

 private:
    double count_ = 0;
    double mean_ = 0;
    double squares_ = 0;
};

/// The ranks of some groups, from which one case after another is left out.
class RankedGroups {
 public:
    explicit RankedGroups(const TieBlocks& blocks) : blocks_(blocks), sizes_(blocks.groupCount), sums_(sizes_) {
        double below = 0;
        for (std::size_t block = 0; block < blocks.BlockCount(); ++block) {
            const double size = SizeOf(block);
            for (std::size_t group = 0; group < sizes_.size(); ++group) {
                const auto count = static_cast<double>(blocks.CountOf(block, group));
                sizes_[group] += count;
                sums_[group] += count * (below + (size + 1) / 2);
            }
            below += size;
            ties_ += size * size * size - size;
        }
        total_ = below;
        above_ = sizes_;
    }

    double Error() {
        LeaveOneOut left;
        double below = 0;
        for (std::size_t block = 0; block < blocks_.BlockCount(); ++block) {
            const double size = SizeOf(block);
            for (std::size_t group = 0; group < sizes_.size(); ++group) {
                above_[group] -= static_cast<double>(blocks_.CountOf(block, group));
            }
            for (std::size_t group = 0; group < sizes_.size(); ++group) {
                const auto count = static_cast<double>(blocks_.CountOf(block, group));
                if (count > 0) left.Add(ShareWithout(block, group, below + (size + 1) / 2, size), count);
            }
            below += size;
        }
        return left.Error();
    }

 private:
    double SizeOf(std::size_t block) const {
        double size = 0;
        for (std::size_t group = 0; group < blocks_.groupCount; ++group) {
            size += static_cast<double>(blocks_.CountOf(block, group));
        }
        return size;
    }

    /// Epsilon squared without a case of that block and group: higher cases lose a rank, equal ones half of one.
    double ShareWithout(std::size_t block, std::size_t group, double rank, double size) const {
        const double total = total_ - 1;
        double between = -total * (total + 1) * (total + 1) / 4;
        for (std::size_t i = 0; i < sizes_.size(); ++i) {
            const double own = i == group ? 1 : 0;
            const double count = sizes_[i] - own;
            if (count <= 0) continue;
            const double equal = static_cast<double>(blocks_.CountOf(block, i)) - own;
            const double sum = sums_[i] - own * rank - above_[i] - equal / 2;
            between += sum * sum / count;
        }
        const double left = size - 1;
        const double ties = ties_ - (size * size * size - size) + (left * left * left - left);
        const double all = (total * total * total - total - ties) / 12;
        return all > 0 ? between / all : 0;
    }

    const TieBlocks& blocks_;
    std::vector<double> sizes_;
    std::vector<double> sums_;
    std::vector<double> above_;  // of each group, behind the block at hand
    double total_ = 0;
    double ties_ = 0;
};

double TiesOf(const ScoreRows& rows, std::size_t row) {
    double ties = 0;
    for (std::size_t column = 0; column < rows.columns; ++column) {
        double equal = 0;
        for (std::size_t other = 0; other < rows.columns; ++other) {
            equal += rows.At(row, other) == rows.At(row, column) ? 1 : 0;
        }
        ties += equal * equal - 1;  // each of t equal ones adds t^2 - 1, all of them t^3 - t
    }
    return ties;
}

}  // namespace

double JackknifeErrorOfEpsilonSquared(const TieBlocks& blocks) {
    return RankedGroups(blocks).Error();
}

double JackknifeErrorOfKendallsW(const ScoreRows& rows) {
    const auto count = static_cast<double>(rows.RowCount());
    const auto columns = static_cast<double>(rows.columns);
    std::vector<double> sums(rows.columns, 0);
    double ties = 0;
    for (std::size_t row = 0; row < rows.RowCount(); ++row) {
        for (std::size_t column = 0; column < rows.columns; ++column) {
            sums[column] += static_cast<double>(rows.At(row, column)) / 2;
        }
        ties += TiesOf(rows, row);
    }
    LeaveOneOut left;
    for (std::size_t row = 0; row < rows.RowCount(); ++row) {
        const double mean = (count - 1) * (columns + 1) / 2;
        double squares = 0;
        for (std::size_t column = 0; column < rows.columns; ++column) {
            const double distance = sums[column] - static_cast<double>(rows.At(row, column)) / 2 - mean;
            squares += distance * distance;
        }
        const double tiesLeft = ties - TiesOf(rows, row);
        const double all = ((count - 1) * (columns * columns * columns - columns) - tiesLeft) * (count - 1) / 12;
        left.Add(all > 0 ? squares / all : 0, 1);
    }
    return left.Error();
}

Estimate Widened(const Estimate& share, double error, double level) {
    if (std::isnan(error) || std::isnan(share.lower)) return share;
    const double reach = NormalBound(level) * error;
    return {share.value, std::max(0.0, std::min(share.lower, share.value - reach)),
            std::min(1.0, std::max(share.upper, share.value + reach))};
}

}  // namespace tarn
