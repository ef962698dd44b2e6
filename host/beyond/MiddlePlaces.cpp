#include "host/beyond/MiddlePlaces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

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

/// Every so manieth value, in ascending order.
std::vector<double> SomeOf(const std::vector<double>& values) {
    std::vector<double> some(kLookedAt);
    for (std::size_t i = 0; i < kLookedAt; ++i) some[i] = values[i * values.size() / kLookedAt];
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

/// Collects a value in the windows that hold it, and counts it below those that lie above it.
void Place(double value, Windows& windows) {
    for (Window& window : windows) {
        window.below += value < window.least ? 1 : 0;
        if (value >= window.least && value <= window.largest) window.values.push_back(value);
    }
}

/// The same of all values in one walk, in which most lie in no window.
void PlaceAll(const std::vector<double>& values, Windows& windows) {
    std::array<WholeLanes, 3> below{};
    const std::size_t whole = values.size() / kLanes * kLanes;
    for (std::size_t i = 0; i < whole; i += kLanes) {
        const DoubleLanes lanes = LoadLanes(values.data() + i, kLanes);
        WholeLanes inside{};
        for (std::size_t w = 0; w < windows.size(); ++w) {
            const WholeLanes isBelow = lanes < windows[w].least;
            below[w] -= isBelow;
            inside |= (lanes <= windows[w].largest) & ~isBelow;
        }
        if ((inside[0] | inside[1]) == 0) continue;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            for (Window& window : windows) {
                const double value = values[i + lane];
                if (value >= window.least && value <= window.largest) window.values.push_back(value);
            }
        }
    }
    for (std::size_t w = 0; w < windows.size(); ++w) {
        windows[w].below = static_cast<std::size_t>(below[w][0] + below[w][1]);
    }
    for (std::size_t i = whole; i < values.size(); ++i) Place(values[i], windows);
    for (Window& window : windows) window.values = Ascending(std::move(window.values), {}).values;
}

bool HoldsItsPlaces(const Window& window) {
    return window.firstPlace >= window.below && window.lastPlace < window.below + window.values.size();
}

}  // namespace

bool PutMiddleInPlace(std::vector<double>& values) {
    if (values.size() < kFewestValues) return false;
    const std::vector<double> some = SomeOf(values);
    constexpr double kNeighbours = 2;
    const double spread = kMiddleSpread * std::sqrt(static_cast<double>(values.size()));
    Windows windows{WindowAbout(0.25, kNeighbours, values.size(), some), WindowAbout(0.5, spread, values.size(), some),
                    WindowAbout(0.75, kNeighbours, values.size(), some)};
    PlaceAll(values, windows);
    if (!std::ranges::all_of(windows, HoldsItsPlaces)) return false;
    for (const Window& window : windows) {
        std::ranges::copy(window.values, values.begin() + static_cast<std::ptrdiff_t>(window.below));
    }
    return true;
}

}  // namespace tarn
