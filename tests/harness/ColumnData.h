#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace harness {

/// Random columns with everything in them that a sum or a search by columns could take in another way than one value
/// after the other.
class ColumnData {
 public:
    explicit ColumnData(std::uint64_t seed) : random(seed) {}

    std::size_t Below(std::size_t bound) { return random() % bound; }
    bool Chance(double share) { return std::uniform_real_distribution<double>(0, 1)(random) < share; }

    /// Finite numbers of one of several kinds: spread, tied, nearly tied, all equal, in a narrow range far from zero,
    /// of any size; sometimes with zeros of both signs.
    std::vector<double> Values(std::size_t count) {
        const std::size_t kind = Below(7);
        const bool hasZeros = Chance(0.4);
        const double shift = kind == 4 ? 1e15 : kind == 6 ? 1e6 : 0;
        std::normal_distribution<double> normal(Chance(0.5) ? 0 : 20, 4);
        std::vector<double> values(count);
        for (double& value : values) {
            const double drawn = normal(random);
            switch (kind) {
                case 0:
                case 6:
                    value = drawn + shift;
                    break;
                case 1:
                    value = std::round(drawn);
                    break;
                case 2:
                    value = std::round(drawn) * 0.25 + static_cast<double>(Below(5)) * 3e-15;
                    break;
                case 3:
                    value = 2.5;
                    break;
                case 4:
                    value = shift + std::round(drawn * 8) / 8;
                    break;
                default:
                    value = std::exp(std::fabs(drawn) * 6) * (Chance(0.5) ? 1 : -1);
                    break;
            }
            if (hasZeros && Chance(0.2)) value = Chance(0.5) ? 0.0 : -0.0;
        }
        return values;
    }

    std::vector<double> AscendingValues(std::size_t count) {
        std::vector<double> values = Values(count);
        std::stable_sort(values.begin(), values.end());
        return values;
    }

    /// Weights of one of several kinds: small ones, with zeros, with negative ones, so large that counters wrap around.
    std::vector<std::int32_t> Weights(std::size_t count) {
        const std::size_t kind = Below(4);
        std::vector<std::int32_t> weights(count);
        for (std::int32_t& weight : weights) {
            weight = 1 + static_cast<std::int32_t>(Below(4));
            if (kind == 1 && Chance(0.2)) weight = 0;
            if (kind == 2 && Chance(0.2)) weight = -weight;
            if (kind == 3 && Chance(0.1)) weight = 2'000'000'000;
        }
        return weights;
    }

    /// Ends of batches, the last of which is `count`.
    std::vector<std::size_t> Cuts(std::size_t count) {
        const std::size_t longest = 1 + Below(Chance(0.3) ? 3 : count + 1);
        std::vector<std::size_t> ends;
        for (std::size_t end = 0; end < count;) {
            end = std::min(count, end + 1 + Below(longest));
            ends.push_back(end);
        }
        return ends;
    }

    std::mt19937_64 random;
};

/// The same number to the bit; any two that are no numbers are the same.
inline bool SameBits(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

}  // namespace harness
