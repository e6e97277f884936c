#include "refhost/shape/feather_radius.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace refhost {
namespace {

double PositionOn(double position, double segments, bool is_closed) {
    if (!is_closed) return std::clamp(position, 0.0, segments);
    const double wrapped = position - segments * std::floor(position / segments);
    return wrapped < segments ? std::max(wrapped, 0.0) : 0;  // rounding may reach the end, or miss the start
}

}  // namespace

std::vector<FeatherKnot> KnotsOf(std::span<const FeatherPoint> points, std::size_t segments, bool is_closed) {
    std::vector<FeatherKnot> knots;
    for (const FeatherPoint& point : points) {
        if (!std::isfinite(point.position) || !std::isfinite(point.radius)) continue;
        knots.push_back(
            {PositionOn(point.position, static_cast<double>(segments), is_closed), static_cast<double>(point.radius)});
    }
    if (knots.empty()) knots.push_back({0, 0});
    std::ranges::stable_sort(knots, {}, &FeatherKnot::position);
    if (!is_closed) {
        knots.insert(knots.begin(), {0, knots.front().radius});
        knots.push_back({static_cast<double>(segments), knots.back().radius});
    }
    return knots;
}

FeatherRadius::FeatherRadius(std::span<const FeatherKnot> knots, std::vector<double> lengths, double total)
    : knots_(knots), lengths_(std::move(lengths)), total_(total) {}

double FeatherRadius::At(double length, std::size_t passed) const {
    const std::size_t count = knots_.size();
    const std::size_t before = (passed + count - 1) % count;
    const std::size_t after = passed % count;
    const bool is_round_the_end = passed == 0 || passed == count;
    const double from = lengths_[before] - (passed == 0 ? total_ : 0);
    const double gap = is_round_the_end ? lengths_[after] + total_ - lengths_[before] : lengths_[after] - lengths_[before];
    const double t = gap > 0 ? std::clamp((length - from) / gap, 0.0, 1.0) : 0;
    return std::lerp(knots_[before].radius, knots_[after].radius, t);
}

}  // namespace refhost
