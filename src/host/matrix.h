#pragma once

#include "base/narrow.h"
#include "host/engine.h"
#include "host/geometry_records.h"

/// The affine part of `matrix` as the engine takes it.
inline PIVMatrix VRLp_EngineMatrix(const M_Matrix3& matrix) {
    const auto& m = matrix.m;
    return {NarrowToFloat(m[0][0]), NarrowToFloat(m[0][1]), NarrowToFloat(m[1][0]),
            NarrowToFloat(m[1][1]), NarrowToFloat(m[2][0]), NarrowToFloat(m[2][1])};
}
