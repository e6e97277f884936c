#include <cmath>

#include "host/geometry_records.h"
#include "refhost/services/faults.h"

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
    for (auto& row : matrix->m) {
        row[0] = row[0] * scale_x + row[2] * (about_x - about_x * scale_x);
        row[1] = row[1] * scale_y + row[2] * (about_y - about_y * scale_y);
    }
    return 0;
}
