#include "refhost/engine/polygons.h"

#include <algorithm>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/flat_chain.h"
#include "refhost/engine/point_math.h"

namespace refhost {
namespace {

/// Calls visit(from, to) for every edge until it returns true; tells whether it did.
template <class Visit>
bool AnyEdge(const Polygons& polygons, const Visit& visit);
bool Meets(Point from, Point to, const PlaneBox& box);

}  // namespace

bool AnyEdgeMeets(const Polygons& polygons, const PlaneBox& box) {
    return AnyEdge(polygons, [&](Point from, Point to) { return Meets(from, to, box); });
}

// Edges that cross the ray from `p` towards -x; each owns its upper end only.
int WindingAt(const Polygons& polygons, Point p) {
    int winding = 0;
    AnyEdge(polygons, [&](Point from, Point to) {
        if ((from.y <= p.y) == (to.y <= p.y)) return false;
        const double side = Cross(to - from, p - from);
        if (to.y <= p.y && side > 0) ++winding;
        if (from.y <= p.y && side < 0) --winding;
        return false;
    });
    return winding;
}

Polygons OutlineOfPositive(const Polygons& polygons) {
    std::vector<GridSegment> segments;
    segments.reserve(polygons.points.size());
    AnyEdge(polygons, [&](Point from, Point to) {
        const GridSegment segment = {ToGrid(from), ToGrid(to)};
        if (segment.from != segment.to) segments.push_back(segment);
        return false;
    });
    Boundary boundary = FindBoundary(segments, WindingRule::kPositive);
    Polygons outline;
    outline.points.reserve(boundary.edges.size());
    for (const BoundaryEdge& edge : boundary.edges) outline.points.push_back(FromGrid(edge.from));
    outline.loop_ends = std::move(boundary.loop_ends);
    return outline;
}

namespace {

template <class Visit>
bool AnyEdge(const Polygons& polygons, const Visit& visit) {
    for (std::size_t i = 0; i < polygons.loop_ends.size(); ++i) {
        const std::span<const Point> loop = polygons.Loop(i);
        Point from = loop.back();
        for (const Point to : loop) {
            if (visit(from, to)) return true;
            from = to;
        }
    }
    return false;
}

// Separating axes: the sides of the box, and the normal of the edge.
bool Meets(Point from, Point to, const PlaneBox& box) {
    if (std::max(from.x, to.x) < box.left || std::min(from.x, to.x) > box.right) return false;
    if (std::max(from.y, to.y) < box.top || std::min(from.y, to.y) > box.bottom) return false;
    const Point span = to - from;
    const auto side = [&](double x, double y) { return Cross(span, Point{x, y} - from); };
    const auto [least, most] =
        std::minmax({side(box.left, box.top), side(box.right, box.top), side(box.left, box.bottom), side(box.right, box.bottom)});
    return least <= 0 && most >= 0;
}

}  // namespace
}  // namespace refhost
