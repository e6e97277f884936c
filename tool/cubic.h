#pragma once

#include <array>
#include <cmath>
#include <utility>

#include "tool/outline.h"

namespace vrltool {

/// A cubic segment: its ends and, between them, its control points.
using Cubic = std::array<Point, 4>;

inline Point Between(const Point& a, const Point& b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

/// The parts before and after parameter `t`, by de Casteljau's construction.
inline std::pair<Cubic, Cubic> SplitAt(const Cubic& p, double t) {
    const Point a = Between(p[0], p[1], t), b = Between(p[1], p[2], t), c = Between(p[2], p[3], t);
    const Point d = Between(a, b, t), e = Between(b, c, t), middle = Between(d, e, t);
    return {{p[0], a, d, middle}, {middle, e, c, p[3]}};
}

inline double Distance(const Point& a, const Point& b) { return std::hypot(b.x - a.x, b.y - a.y); }

/// The unit vector from `from` to `to` turned left on screen; zero when they are the same point.
inline Point LeftOf(const Point& from, const Point& to) {
    const double length = Distance(from, to);
    if (length == 0) return {0, 0};
    return {(to.y - from.y) / length, (from.x - to.x) / length};
}

}  // namespace vrltool
