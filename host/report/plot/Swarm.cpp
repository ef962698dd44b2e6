#include "host/report/plot/Swarm.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace tarn {

namespace {

struct Placed {
    double at = 0;
    double offset = 0;
    double radius = 0;
};

bool Touches(const Placed& one, const Placed& other) {
    constexpr double kSlack = 1e-6;
    return std::hypot(one.at - other.at, one.offset - other.offset) < one.radius + other.radius - kSlack;
}

/// The offsets at which a dot just touches one of its neighbours, and the middle.
std::vector<double> PlacesBeside(const SwarmDot& dot, const std::vector<Placed>& neighbours) {
    std::vector<double> places{0};
    for (const Placed& neighbour : neighbours) {
        const double reach = dot.radius + neighbour.radius;
        const double along = dot.at - neighbour.at;
        const double across = std::sqrt(std::max(0.0, reach * reach - along * along));
        places.push_back(neighbour.offset + across);
        places.push_back(neighbour.offset - across);
    }
    return places;
}

/// The nearest to the middle that touches none; `side` is taken of two that are as near.
double FreePlace(const SwarmDot& dot, const std::vector<Placed>& neighbours, double side) {
    constexpr double kParts = 1e6;  // of a pixel, in which distances are compared
    std::vector<double> places = PlacesBeside(dot, neighbours);
    const auto rank = [&](double place) { return std::pair(std::round(std::abs(place) * kParts), -place * side); };
    std::ranges::sort(places, {}, rank);
    for (const double place : places) {
        const Placed here{dot.at, place, dot.radius};
        const auto touches = [&](const Placed& neighbour) { return Touches(here, neighbour); };
        if (std::ranges::none_of(neighbours, touches)) return place;
    }
    return 0;
}

}  // namespace

std::vector<double> SwarmOffsets(const std::vector<SwarmDot>& dots, double half) {
    std::vector<std::size_t> order(dots.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return dots[i].at; });
    double largest = 0;
    for (const SwarmDot& dot : dots) largest = std::max(largest, dot.radius);
    std::vector<double> offsets(dots.size(), 0);
    std::vector<Placed> placed;
    double widest = 0;
    double side = 1;
    for (const std::size_t i : order) {
        std::vector<Placed> neighbours;
        for (auto before = placed.rbegin(); before != placed.rend(); ++before) {
            if (dots[i].at - before->at > dots[i].radius + largest) break;
            neighbours.push_back(*before);
        }
        offsets[i] = FreePlace(dots[i], neighbours, side);
        side = -side;
        placed.push_back({dots[i].at, offsets[i], dots[i].radius});
        widest = std::max(widest, std::abs(offsets[i]) + dots[i].radius);
    }
    if (widest > half && widest > 0) {
        for (double& offset : offsets) offset *= half / widest;
    }
    return offsets;
}

}  // namespace tarn
