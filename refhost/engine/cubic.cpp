#include "refhost/engine/cubic.h"

#include <algorithm>
#include <array>

namespace refhost {
namespace {

constexpr double kNoLength = 1e-12;  // pixels; a control leg below it has no direction

Point DirectionOf(std::array<Point, 3> candidates);                   // first one with a length, as unit vector
Point Blossom(const Cubic& curve, double r, double s, double t);      // the curve's polar form
CurveParameters RisingRoots(const std::array<double, 4>& bernstein);  // in (0, 1), where the value turns positive
double BernsteinValue(const std::array<double, 4>& b, double t);
double Bisect(const std::array<double, 4>& bernstein, double low, double high);  // sign change from negative to positive

}  // namespace

Point StartTangent(const Cubic& c) { return DirectionOf({c.p1 - c.p0, c.p2 - c.p0, c.p3 - c.p0}); }

Point EndTangent(const Cubic& c) { return DirectionOf({c.p3 - c.p2, c.p3 - c.p1, c.p3 - c.p0}); }

Point TangentAt(const Cubic& curve, double t) {
    if (t <= 0) return StartTangent(curve);
    if (t >= 1) return EndTangent(curve);
    const Point first = FirstDerivative(curve, t);
    const double speed = Length(first);
    if (speed > kNoLength) return (1 / speed) * first;
    return DirectionOf({first, SecondDerivative(curve, t), curve.p3 - curve.p0});
}

Cubic SubCurve(const Cubic& c, double u, double v) {
    if (u == 0 && v == 1) return c;
    return {Blossom(c, u, u, u), Blossom(c, u, u, v), Blossom(c, u, v, v), Blossom(c, v, v, v)};
}

// A chord over a parameter step h deviates by at most h^2 / 8 of the largest second derivative, and that is six times the
// largest second difference of the control points.
int StepCount(const Cubic& c, double tolerance) {
    const double bend = std::max(Length(c.p0 - 2 * c.p1 + c.p2), Length(c.p1 - 2 * c.p2 + c.p3));
    const double steps = std::ceil(std::sqrt(0.75 * bend / tolerance));
    return static_cast<int>(std::clamp(steps, 1.0, static_cast<double>(kMaxSteps)));
}

// Half the derivative of the squared speed is c'.c'', the product of a quadratic and a linear polynomial.
CurveParameters SpeedMinima(const Cubic& c) {
    const std::array<Point, 3> first = {c.p1 - c.p0, c.p2 - c.p1, c.p3 - c.p2};
    const std::array<Point, 2> second = {first[1] - first[0], first[2] - first[1]};
    return RisingRoots({Dot(first[0], second[0]), (2 * Dot(first[1], second[0]) + Dot(first[0], second[1])) / 3,
                        (Dot(first[2], second[0]) + 2 * Dot(first[1], second[1])) / 3, Dot(first[2], second[1])});
}

double DoubledArea(const Cubic& c) {
    return (6 * Cross(c.p0, c.p1) + 3 * Cross(c.p0, c.p2) + Cross(c.p0, c.p3) + 3 * Cross(c.p1, c.p2) + 3 * Cross(c.p1, c.p3) +
            6 * Cross(c.p2, c.p3)) /
           10;
}

namespace {

Point DirectionOf(std::array<Point, 3> candidates) {
    for (const Point candidate : candidates) {
        const double length = Length(candidate);
        if (length > kNoLength) return (1 / length) * candidate;
    }
    return {1, 0};
}

Point Blossom(const Cubic& c, double r, double s, double t) {
    const Point a = Lerp(c.p0, c.p1, r);
    const Point b = Lerp(c.p1, c.p2, r);
    const Point d = Lerp(c.p2, c.p3, r);
    return Lerp(Lerp(a, b, s), Lerp(b, d, s), t);
}

// Between the roots of its derivative the polynomial is monotone, so each piece holds at most one root.
CurveParameters RisingRoots(const std::array<double, 4>& b) {
    const double d0 = b[1] - b[0];
    const double d1 = b[2] - b[1];
    const double d2 = b[3] - b[2];
    std::array<double, 4> knots = {0, 0, 1, 1};
    const double quadratic = d0 - 2 * d1 + d2;
    const double discriminant = d1 * d1 - d0 * d2;
    if (discriminant > 0) {
        // The two roots in the form that loses no digits when the quadratic term is small.
        const double half = (d0 - d1) + std::copysign(std::sqrt(discriminant), d0 - d1);
        knots[1] = quadratic == 0 ? 0 : std::clamp(half / quadratic, 0.0, 1.0);
        knots[2] = half == 0 ? 1 : std::clamp(d0 / half, 0.0, 1.0);
        if (knots[1] > knots[2]) std::swap(knots[1], knots[2]);
    }
    CurveParameters roots;
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
        if (BernsteinValue(b, knots[i]) < 0 && BernsteinValue(b, knots[i + 1]) > 0) roots.Add(Bisect(b, knots[i], knots[i + 1]));
    }
    return roots;
}

double BernsteinValue(const std::array<double, 4>& b, double t) {
    const double s = 1 - t;
    return s * s * s * b[0] + 3 * s * s * t * b[1] + 3 * s * t * t * b[2] + t * t * t * b[3];
}

double Bisect(const std::array<double, 4>& bernstein, double low, double high) {
    constexpr int kHalvings = 26;  // to about 1e-8 of the curve
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = 0.5 * (low + high);
        (BernsteinValue(bernstein, middle) < 0 ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

}  // namespace
}  // namespace refhost
