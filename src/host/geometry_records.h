#pragma once

#include <cstdint>

#include "base/export.h"

// The host's geometry records and matrix calls. x runs right, y down. Status results: 0 is success.

/// A point or a pair of lengths.
template <class T>
struct M_Vector2T {
    T x, y;
    friend bool operator==(const M_Vector2T&, const M_Vector2T&) = default;
};

/// Pixel rectangle; right and bottom are exclusive.
struct M_LRect {
    std::int32_t left, top, right, bottom;
    friend bool operator==(const M_LRect&, const M_LRect&) = default;
};

/// Rectangle in double precision, pixels.
struct M_FloatRect {
    double left, top, right, bottom;
};

/// Rectangle in single precision, pixels.
struct M_FloatShortRect {
    float left, top, right, bottom;
};

/// Row-major 3x3 matrix with the translation in the third row: (x, y) goes to (x m00 + y m10 + m20, x m01 + y m11 + m21).
struct VRL_HOST_API M_Matrix3 {
    double m[3][3];

    /// True when no entry is further than `epsilon` from the identity's; 0.0 asks for the exact identity.
    bool IsIdentityWithinEpsilon(double epsilon) const;
};

/// Makes `matrix` map every point to itself.
VRL_HOST_API int M_SetIdentityMatrix(M_Matrix3* matrix);

/// Puts a scale about (`about_x`, `about_y`) before the mapping: points are scaled first, then mapped as before.
VRL_HOST_API int M_ScaleMatrix(double scale_x, double scale_y, double about_x, double about_y, M_Matrix3* matrix);

/// Non-zero, and unreported, when `matrix` has no inverse.
VRL_HOST_API int M_InverseMatrixQuiet(const M_Matrix3* matrix, M_Matrix3* inverse);

/// Bounds of the mapped rectangle.
VRL_HOST_API void M_TransformBounds(const M_Matrix3* matrix, const M_FloatRect* rect, M_FloatRect* bounds);
