#include "refhost/shape/feather_points.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "refhost/shape/shape_state.h"

namespace refhost {

void SetFeatherPoints(DY_Shape& shape, std::vector<FeatherPoint> points) {
    std::erase_if(points, [](const FeatherPoint& p) { return !std::isfinite(p.position) || !std::isfinite(p.radius); });
    std::ranges::stable_sort(points, {}, &FeatherPoint::position);
    shape.state->feather = std::move(points);
}

std::span<const FeatherPoint> FeatherPointsOf(const DY_Shape& shape) { return shape.state->feather; }

}  // namespace refhost
