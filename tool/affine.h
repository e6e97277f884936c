#pragma once

#include "host/geometry_records.h"
#include "tool/outline.h"

namespace vrltool {

/// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct Affine {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    Point operator()(const Point& p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
};

/// The mapping that runs `inner` first, then `outer`.
inline Affine operator*(const Affine& outer, const Affine& inner) {
    const Point origin = outer({inner.tx, inner.ty});
    return {outer.a * inner.a + outer.c * inner.b,
            outer.b * inner.a + outer.d * inner.b,
            outer.a * inner.c + outer.c * inner.d,
            outer.b * inner.c + outer.d * inner.d,
            origin.x,
            origin.y};
}

inline Affine AffineOf(const M_Matrix3& matrix) {
    const auto& m = matrix.m;
    return {m[0][0], m[0][1], m[1][0], m[1][1], m[2][0], m[2][1]};
}

inline Affine Translation(double x, double y) { return {1, 0, 0, 1, x, y}; }

}  // namespace vrltool
