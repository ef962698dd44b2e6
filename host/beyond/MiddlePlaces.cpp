#include "host/beyond/MiddlePlaces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "host/beyond/TestCases.h"
#include "machine/Lanes.h"

namespace tarn {

namespace {

constexpr std::size_t kLookedAt = 32768;
constexpr std::size_t kFewestValues = 2 * kLookedAt;

/// Places that are wanted, and the values between which they should be found.
struct Window {
    std::size_t firstPlace = 0;
    std::size_t lastPlace = 0;
    double least = 0;
    double largest = 0;
    std::size_t below = 0;  ///< how many values are smaller than the least
    std::vector<double> values = {};
};

/// The values themselves, one at a time or as many as there are lanes.
class PlainValues {
 public:
    explicit PlainValues(std::span<const double> values) : values_(values) {}

    std::size_t Size() const { return values_.size(); }
    double At(std::size_t i) const { return values_[i]; }
    DoubleLanes LanesAt(std::size_t i) const { return LoadLanes(values_.data() + i, kLanes); }

 private:
    std::span<const double> values_;
};

class Differences {
 public:
    Differences(std::span<const double> first, std::span<const double> second) : first_(first), second_(second) {}

    std::size_t Size() const { return first_.Size(); }
    double At(std::size_t i) const { return first_.At(i) - second_.At(i); }
    DoubleLanes LanesAt(std::size_t i) const { return first_.LanesAt(i) - second_.LanesAt(i); }

 private:
    PlainValues first_;
    PlainValues second_;
};

/// Every so manieth value, in ascending order.
template <typename Source>
std::vector<double> SomeOf(const Source& source) {
    std::vector<double> some(kLookedAt);
    for (std::size_t i = 0; i < kLookedAt; ++i) some[i] = source.At(i * source.Size() / kLookedAt);
    return Ascending(std::move(some), {}).values;
}

/// A window about a share of the values, with so many places to each side.
Window WindowAbout(double share, double spread, std::size_t size, const std::vector<double>& some) {
    constexpr double kSafety = 5;  // standard deviations of a share of those that were looked at
    const double last = static_cast<double>(size) - 1;
    const double margin = spread / last + kSafety * std::sqrt(share * (1 - share) / static_cast<double>(kLookedAt));
    const auto at = [](double part, double largest) {
        return static_cast<std::size_t>(std::clamp(part, 0.0, 1.0) * largest);
    };
    Window window;
    window.firstPlace = at(share - spread / last, last);
    window.lastPlace = at(share + spread / last, last);
    const auto lastLooked = static_cast<double>(kLookedAt - 1);
    window.least = some[at(share - margin, lastLooked)];
    window.largest = some[at(share + margin, lastLooked)];
    return window;
}

using Windows = std::array<Window, 3>;

/// Fills the windows in one walk over all values, of which most lie in no window. False where one isn't finite.
template <typename Source>
bool Fill(Windows& windows, const Source& source) {
    std::array<WholeLanes, 3> below{};
    WholeLanes areFinite = ~WholeLanes{};
    std::vector<double> near;  // those that lie in a window, and some beside them
    const auto look = [&](DoubleLanes lanes) {
        areFinite &= lanes - lanes == DoubleLanes{};
        WholeLanes inside{};
        for (std::size_t w = 0; w < windows.size(); ++w) {
            const WholeLanes isBelow = lanes < windows[w].least;
            below[w] -= isBelow;
            inside |= (lanes <= windows[w].largest) & ~isBelow;
        }
        if ((inside[0] | inside[1]) != 0) near.insert(near.end(), {lanes[0], lanes[1]});
    };
    const std::size_t whole = source.Size() / kLanes * kLanes;
    for (std::size_t i = 0; i < whole; i += kLanes) look(source.LanesAt(i));
    // Behind the last value there is a lane that counts nowhere.
    constexpr double kBeyondAll = std::numeric_limits<double>::max();
    if (whole < source.Size()) look(DoubleLanes{source.At(whole), kBeyondAll});
    near = Ascending(std::move(near), {}).values;
    for (std::size_t w = 0; w < windows.size(); ++w) {
        windows[w].below = static_cast<std::size_t>(SumOfLanes(below[w]));
        const auto first = std::ranges::lower_bound(near, windows[w].least);
        windows[w].values.assign(first, std::upper_bound(first, near.end(), windows[w].largest));
    }
    return (areFinite[0] & areFinite[1]) != 0;
}

bool HoldsItsPlaces(const Window& window) {
    return window.firstPlace >= window.below && window.lastPlace < window.below + window.values.size();
}

template <typename Source>
std::optional<AscendingSample> MiddleOfAll(const Source& source) {
    if (source.Size() < kFewestValues) return std::nullopt;
    const std::vector<double> some = SomeOf(source);
    if (!std::isfinite(some.front()) || !std::isfinite(some.back())) return std::nullopt;
    constexpr double kNeighbours = 2;
    AscendingSample sample;
    sample.size = static_cast<double>(source.Size());
    const double spread = kMiddleSpread * std::sqrt(sample.size);
    Windows windows{WindowAbout(0.25, kNeighbours, source.Size(), some), WindowAbout(0.5, spread, source.Size(), some),
                    WindowAbout(0.75, kNeighbours, source.Size(), some)};
    if (!Fill(windows, source) || !std::ranges::all_of(windows, HoldsItsPlaces)) return std::nullopt;
    for (Window& window : windows) sample.middle.push_back({window.below, std::move(window.values)});
    return sample;
}

}  // namespace

std::optional<AscendingSample> MiddleOf(std::span<const double> values) {
    return MiddleOfAll(PlainValues(values));
}

std::optional<AscendingSample> MiddleOfDifferences(std::span<const double> first, std::span<const double> second) {
    return MiddleOfAll(Differences(first, second));
}

}  // namespace tarn
