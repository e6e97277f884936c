#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "refhost/engine/path_view.h"

namespace refhost {

/// A rectangle of the plane, edges included; empty when a pair is the wrong way round or not a number.
struct PlaneBox {
    double left, top, right, bottom;

    bool IsEmpty() const { return !(left <= right && top <= bottom); }
    Point Centre() const { return {left + 0.5 * (right - left), top + 0.5 * (bottom - top)}; }
};

/// Closed polygons, one after the other; the last point of each is joined to its first. Pixels.
struct Polygons {
    std::vector<Point> points;
    std::vector<std::size_t> loop_ends;  // one past the last point of each polygon, increasing

    std::span<const Point> Loop(std::size_t loop) const {
        const std::size_t begin = loop == 0 ? 0 : loop_ends[loop - 1];
        return std::span(points).subspan(begin, loop_ends[loop] - begin);
    }
};

/// True when some edge has a point in `box`.
bool AnyEdgeMeets(const Polygons& polygons, const PlaneBox& box);

/// How often the polygons run round `p`, which is on no edge.
int WindingAt(const Polygons& polygons, Point p);

/// Outline of the points with a positive winding number, on the arrangement's grid: no polygon crosses itself or another one.
/// @throws std::bad_alloc
Polygons OutlineOfPositive(const Polygons& polygons);

}  // namespace refhost
