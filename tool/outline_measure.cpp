#include "tool/outline_measure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace vrltool {
namespace {

using Cubic = std::array<Point, 4>;

/// Calls `visit` with every segment, the closing one included.
template <class Visit>
void ForEachSegment(const Outline& outline, Visit visit) {
    const std::span<const Vertex> vertices = outline.vertices;
    for (std::size_t i = 0; i + 1 < vertices.size(); ++i) {
        visit(Cubic{vertices[i].anchor, vertices[i].out, vertices[i + 1].in, vertices[i + 1].anchor});
    }
    const Point& start = vertices.front().anchor;
    const Point& end = vertices.back().anchor;
    if (outline.closed) {
        visit(Cubic{end, vertices.back().out, vertices.front().in, start});
    } else {
        visit(Cubic{end, end, start, start});
    }
}

struct Range {
    double low, high;
    void Add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
};

double CubicAt(double a, double b, double c, double d, double t) {
    const double s = 1 - t;
    return s * s * s * a + 3 * s * s * t * b + 3 * s * t * t * c + t * t * t * d;
}

/// Extends `range` by one coordinate of a cubic. Its derivative is 3 (u (1-t)^2 + 2 v t (1-t) + w t^2) with the control
/// polygon's steps u, v, w, so the turning points are the roots of (u - 2v + w) t^2 + 2 (v - u) t + u.
void AddCubic(double a, double b, double c, double d, Range& range) {
    range.Add(d);
    const double u = b - a, v = c - b, w = d - c;
    const double discriminant = v * v - u * w;
    if (discriminant < 0) return;
    // Both roots without cancellation: q / leading and u / q. Division by zero gives values outside the segment.
    const double q = u - v + std::copysign(std::sqrt(discriminant), u - v);
    for (const double t : {q / (u - 2 * v + w), u / q}) {
        if (t > 0 && t < 1) range.Add(CubicAt(a, b, c, d, t));
    }
}

double Cross(const Point& a, const Point& b) { return a.x * b.y - a.y * b.x; }

}  // namespace

M_FloatRect TightBounds(const Outline& outline) {
    const Point& first = outline.vertices.front().anchor;
    Range x = {first.x, first.x};
    Range y = {first.y, first.y};
    ForEachSegment(outline, [&](const Cubic& p) {
        AddCubic(p[0].x, p[1].x, p[2].x, p[3].x, x);
        AddCubic(p[0].y, p[1].y, p[2].y, p[3].y, y);
    });
    return {x.low, y.low, x.high, y.high};
}

// Half the integral of x dy - y dx along each cubic; in Bernstein form the products of the basis functions integrate to
// the weights below. Measured from the first anchor, so that a small shape far from the origin keeps its digits.
double SignedArea(const Outline& outline) {
    const Point origin = outline.vertices.front().anchor;
    double twentieths = 0;
    ForEachSegment(outline, [&](Cubic p) {
        for (Point& point : p) point = {point.x - origin.x, point.y - origin.y};
        twentieths += 6 * Cross(p[0], p[1]) + 3 * Cross(p[0], p[2]) + Cross(p[0], p[3]) + 3 * Cross(p[1], p[2]) +
                      3 * Cross(p[1], p[3]) + 6 * Cross(p[2], p[3]);
    });
    return twentieths / 20;
}

}  // namespace vrltool
