#pragma once

#include <span>

#include "base/point.h"
#include "fit/bezier.h"
#include "fit/curve_points.h"

/// A cubic in powers of t, seen from its first control point.
struct CurvePowers {
    explicit CurvePowers(const CFBezier3& curve);

    float x[3], y[3];  // factors of t, t^2 and t^3
    CFPoint start;     // the control point
};

/// Moves the parameters of `points`, which must be 4 at least, to the roots that FindRoot finds for their points from there,
/// within an even spacing. `found` may be the points' own parameters.
using CFParameterSearch = void (*)(const CurvePowers& curve, const CFCurvePoints& points, float* found);

/// The searches that this processor can do, the fastest last. All find the same.
std::span<const CFParameterSearch> ParameterSearches();
