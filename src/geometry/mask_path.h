#pragma once

#include "host/geometry_records.h"
#include "host/grx_path.h"
#include "host/shape.h"

/// Bounds of an outline in pixels, all four edges included.
struct VRLp_PathBounds {
    float left, top, right, bottom;
};

/// The render-space path of one mask and its bounds over all points, control points included; zeros for an empty path.
/// `expansion` (pixels, positive grows) is applied in shape space, before `transform`; `pixel_aspect` is the width of a
/// pixel over its height and not 0. `transform` may be null. A plain mask is transformed as a shape, before it becomes
/// a path.
/// @throws int, CNUBError, QELException, std::bad_alloc  as the host and its engine fail
void VRLp_MakeMaskPath(const DY_Shape& shape, bool quality, double expansion, double pixel_aspect, const M_Matrix3* transform,
                       CGRXPath& path, VRLp_PathBounds& bounds);
