#pragma once

#include <vector>

#include "refhost/engine/point_math.h"

namespace refhost {

/// A cubic Bezier curve over the parameter range 0 to 1.
struct Cubic {
    Point p0, p1, p2, p3;
};

/// A straight leg as a cubic whose parameter runs evenly along it.
Cubic LineAsCubic(Point from, Point to);

inline Point Evaluate(const Cubic& c, double t) {
    const double s = 1 - t;
    return s * s * s * c.p0 + 3 * s * s * t * c.p1 + 3 * s * t * t * c.p2 + t * t * t * c.p3;
}

inline Point FirstDerivative(const Cubic& c, double t) {
    const double s = 1 - t;
    return 3 * s * s * (c.p1 - c.p0) + 6 * s * t * (c.p2 - c.p1) + 3 * t * t * (c.p3 - c.p2);
}

inline Point SecondDerivative(const Cubic& c, double t) {
    return 6 * (1 - t) * ((c.p2 - c.p1) - (c.p1 - c.p0)) + 6 * t * ((c.p3 - c.p2) - (c.p2 - c.p1));
}

/// Unit direction at t = 0 and t = 1. Coincident control points are passed over; a curve shrunk to a point gives (1, 0).
Point StartTangent(const Cubic& curve);
Point EndTangent(const Cubic& curve);
/// Unit direction at `t`, the limits above at the ends and wherever the speed is zero.
Point TangentAt(const Cubic& curve, double t);

/// The part of the curve from `u` to `v`, exact up to rounding; it runs backwards when v < u.
Cubic SubCurve(const Cubic& curve, double u, double v);

/// Number of even parameter steps whose chords stay within `tolerance` of the curve; between 1 and `kMaxSteps`.
int StepCount(const Cubic& curve, double tolerance);
inline constexpr int kMaxSteps = 4096;

/// Interior parameters at which the speed has a local minimum, increasing.
std::vector<double> SpeedMinima(const Cubic& curve);

/// Twice the area between the curve and the origin: summed over a closed outline it is twice the signed area.
double DoubledArea(const Cubic& curve);

}  // namespace refhost
