#pragma once

#include <array>
#include <cstddef>

#include "refhost/engine/point_math.h"

namespace refhost {

/// A cubic Bezier curve over the parameter range 0 to 1.
struct Cubic {
    Point p0, p1, p2, p3;
};

/// A straight leg as a cubic whose parameter runs evenly along it.
inline Cubic LineAsCubic(Point from, Point to) { return {from, Lerp(from, to, 1.0 / 3), Lerp(from, to, 2.0 / 3), to}; }

/// Length of the control polygon: the curve is no longer.
inline double ControlLength(const Cubic& c) { return Distance(c.p0, c.p1) + Distance(c.p1, c.p2) + Distance(c.p2, c.p3); }

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

/// A cubic in powers of its parameter: cheaper where one curve is evaluated many times.
class CubicPolynomial {
 public:
    explicit CubicPolynomial(const Cubic& c)
        : start_(c.p0),
          linear_(3 * (c.p1 - c.p0)),
          square_(3 * ((c.p2 - c.p1) - (c.p1 - c.p0))),
          cube_((c.p3 - c.p0) - 3 * (c.p2 - c.p1)) {}

    Point At(double t) const { return start_ + t * (linear_ + t * (square_ + t * cube_)); }
    Point FirstDerivative(double t) const { return linear_ + t * (2 * square_ + 3 * t * cube_); }
    Point SecondDerivative(double t) const { return 2 * square_ + 6 * t * cube_; }
    Point ThirdDerivative() const { return 6 * cube_; }

 private:
    Point start_, linear_, square_, cube_;
};

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

/// Up to two interior parameters, increasing.
class CurveParameters {
 public:
    void Add(double t) { values_[count_++] = t; }
    const double* begin() const { return values_.data(); }
    const double* end() const { return values_.data() + count_; }

 private:
    std::array<double, 2> values_{};
    std::size_t count_ = 0;
};

/// Interior parameters at which the speed has a local minimum.
CurveParameters SpeedMinima(const Cubic& curve);

/// Twice the area between the curve and the origin: summed over a closed outline it is twice the signed area.
double DoubledArea(const Cubic& curve);

}  // namespace refhost
