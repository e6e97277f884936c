#pragma once

#include <cstdint>

/// Points that a cubic is fitted to and their parameters, as arrays that lie elsewhere.
struct CFCurvePoints {
    std::int32_t count;
    const float *xs, *ys, *ts;
};
