#pragma once

#include <cmath>

#include "refhost/engine/path_view.h"

namespace refhost {

// Plane vectors. A positive cross product means the second vector lies counter-clockwise of the first in mathematical axes.

inline Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
inline Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
inline Point operator-(Point a) { return {-a.x, -a.y}; }
inline Point operator*(double s, Point a) { return {s * a.x, s * a.y}; }

inline double Dot(Point a, Point b) { return a.x * b.x + a.y * b.y; }
inline double Cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }
inline double Length(Point a) { return std::sqrt(Dot(a, a)); }
inline double Distance(Point a, Point b) { return Length(b - a); }
inline Point Lerp(Point a, Point b, double t) { return a + t * (b - a); }
inline Point Unit(Point a) { return (1.0 / Length(a)) * a; }  // a must not be zero

/// `a` turned by a quarter to its right-hand side: away from the interior of an outline of positive area.
inline Point RightNormal(Point a) { return {a.y, -a.x}; }

/// Angle in (-pi, pi] that turns direction `from` into `to`; neither needs unit length.
inline double TurningAngle(Point from, Point to) { return std::atan2(Cross(from, to), Dot(from, to)); }

}  // namespace refhost
