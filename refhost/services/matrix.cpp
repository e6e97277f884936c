#include <algorithm>
#include <cmath>
#include <limits>

#include "host/geometry_records.h"
#include "refhost/services/faults.h"
#include "refhost/services/status.h"

using refhost::HostCall;
using refhost::InjectedStatus;

namespace {

constexpr M_Matrix3 kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

}  // namespace

bool M_Matrix3::IsIdentityWithinEpsilon(double epsilon) const {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double difference = std::abs(m[row][column] - kIdentity.m[row][column]);
            if (!(difference <= epsilon)) return false;  // a NaN is not the identity
        }
    }
    return true;
}

int M_SetIdentityMatrix(M_Matrix3* matrix) {
    if (const int status = InjectedStatus(HostCall::kSetIdentityMatrix)) return status;
    *matrix = kIdentity;
    return 0;
}

int M_ScaleMatrix(double scale_x, double scale_y, double about_x, double about_y, M_Matrix3* matrix) {
    if (const int status = InjectedStatus(HostCall::kScaleMatrix)) return status;
    auto& m = matrix->m;
    for (int column = 0; column < 3; ++column) {
        m[2][column] += about_x * (1 - scale_x) * m[0][column] + about_y * (1 - scale_y) * m[1][column];
        m[0][column] *= scale_x;
        m[1][column] *= scale_y;
    }
    return 0;
}

// The affine part only: the library's matrices have no perspective.
int M_InverseMatrixQuiet(const M_Matrix3* matrix, M_Matrix3* inverse) {
    if (const int status = InjectedStatus(HostCall::kInverseMatrix)) return status;
    const auto& m = matrix->m;
    const double determinant = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    if (determinant == 0 || !std::isfinite(1 / determinant)) return refhost::kStatusBadArgument;
    const double a = m[1][1] / determinant;
    const double b = -m[0][1] / determinant;
    const double c = -m[1][0] / determinant;
    const double d = m[0][0] / determinant;
    *inverse = {{{a, b, 0}, {c, d, 0}, {-(m[2][0] * a + m[2][1] * c), -(m[2][0] * b + m[2][1] * d), 1}}};
    return 0;
}

void M_TransformBounds(const M_Matrix3* matrix, const M_FloatRect* rect, M_FloatRect* bounds) {
    const auto& m = matrix->m;
    const double xs[] = {rect->left, rect->right};
    const double ys[] = {rect->top, rect->bottom};
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    *bounds = {kInfinity, kInfinity, -kInfinity, -kInfinity};
    for (const double x : xs) {
        for (const double y : ys) {
            const double mapped_x = x * m[0][0] + y * m[1][0] + m[2][0];
            const double mapped_y = x * m[0][1] + y * m[1][1] + m[2][1];
            bounds->left = std::min(bounds->left, mapped_x);
            bounds->top = std::min(bounds->top, mapped_y);
            bounds->right = std::max(bounds->right, mapped_x);
            bounds->bottom = std::max(bounds->bottom, mapped_y);
        }
    }
}
