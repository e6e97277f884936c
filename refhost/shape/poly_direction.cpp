#include <algorithm>
#include <span>

#include "host/shape.h"
#include "refhost/services/faults.h"
#include "refhost/shape/shape_state.h"

// Directions of an outline, by its signed area.

namespace {

double Cross(WEX_Item a, WEX_Item b) {
    return static_cast<double>(a.x) * static_cast<double>(b.y) - static_cast<double>(b.x) * static_cast<double>(a.y);
}

// Signed area between a cubic and the origin: the integral of (x dy - y dx) / 2, exact for the Bernstein form.
double SignedArea(WEX_Item p0, WEX_Item p1, WEX_Item p2, WEX_Item p3) {
    return (6 * Cross(p0, p1) + 3 * Cross(p0, p2) + Cross(p0, p3) + 3 * Cross(p1, p2) + 3 * Cross(p1, p3) + 6 * Cross(p2, p3)) /
           20;
}

// Positive when the outline runs clockwise on screen (y down). An open outline is closed by a straight leg.
double SignedArea(std::span<const WEX_Item> items) {
    const std::size_t count = items.size();
    double area = 0;
    for (std::size_t i = 0; i + 2 < count; i += 3)
        area += SignedArea(items[i], items[i + 1], items[i + 2], items[(i + 3) % count]);
    if (count % 3 == 1) area += Cross(items.back(), items.front()) / 2;
    return area;
}

// With a closing segment the first vertex stays first; an open outline has only its two ends to swap. Feather points
// stay where they are on the curve: what was u segments from the start is now u segments from the end.
void Reverse(DY_ShapeState& state) {
    const std::span<WEX_Item> items = state.points.items;
    const bool has_closing_segment = items.size() % 3 == 0;
    std::ranges::reverse(has_closing_segment ? items.subspan(1) : items);
    const auto segments = static_cast<double>(items.size() / 3);
    for (refhost::FeatherPoint& point : state.feather) {
        point.position = has_closing_segment && point.position == 0 ? 0 : segments - point.position;
    }
    std::ranges::stable_sort(state.feather, {}, &refhost::FeatherPoint::position);
}

}  // namespace

int DY_SetPolyDir(unsigned char direction, DY_Shape* shape) {
    if (const int status = refhost::InjectedStatus(refhost::HostCall::kSetPolyDir)) return status;
    const std::span<const WEX_Item> items = shape->state->points.items;
    if (items.empty()) return 0;
    const double area = SignedArea(items);
    const bool clockwise_wanted = direction == 1;
    if (clockwise_wanted ? area < 0 : area > 0) Reverse(*shape->state);
    return 0;
}
