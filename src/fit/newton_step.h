#pragma once

#include "fit/lanes.h"
#include "fit/parameter_search.h"

// What the searches for one point and for several side by side have in common.

inline constexpr float kNoValue = 1e-6F;    // a value this near to 0 is a root
inline constexpr float kShortStep = 1e-4F;  // of a parameter: the last one of a search
inline constexpr int kMostSteps = 5;

/// f and its derivative for a curve that starts at (x, y) from the target. `Value` is one number or lanes of them.
template <class Value>
VRL_INLINE void EvaluateAt(const CurvePowers& c, Value x, Value y, Value t, Value& f, Value& df) {
    const Value ex = ((c.x[2] * t + c.x[1]) * t + c.x[0]) * t + x, ey = ((c.y[2] * t + c.y[1]) * t + c.y[0]) * t + y;
    const Value dx = (3.0F * c.x[2] * t + 2.0F * c.x[1]) * t + c.x[0], dy = (3.0F * c.y[2] * t + 2.0F * c.y[1]) * t + c.y[0];
    const Value ddx = 6.0F * c.x[2] * t + 2.0F * c.x[1], ddy = 6.0F * c.y[2] * t + 2.0F * c.y[1];
    f = ex * dx + ey * dy;
    df = dx * dx + dy * dy + (ex * ddx + ey * ddy);
}
