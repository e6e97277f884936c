#pragma once

#include <span>
#include <vector>

#include "base/export.h"
#include "host/shape.h"

namespace refhost {

/// A point of a shape's variable-width feather.
struct FeatherPoint {
    double position;  // segment index + parameter on it in [0, 1)
    float radius;     // pixels, positive outwards, negative inwards
    friend bool operator==(const FeatherPoint&, const FeatherPoint&) = default;
};

/// Replaces the shape's feather points; they are kept sorted by position, those with a NaN or
/// infinite number left out.
VRL_HOST_API void SetFeatherPoints(DY_Shape& shape, std::vector<FeatherPoint> points);
/// Borrowed until they are replaced.
VRL_HOST_API std::span<const FeatherPoint> FeatherPointsOf(const DY_Shape& shape);

}  // namespace refhost
