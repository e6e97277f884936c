#pragma once

#include <vector>

#include "refhost/engine/cubic.h"

namespace refhost {

/// The part of the plane a polyline is wanted for, pixels.
struct VisibleBox {
    double left, top, right, bottom;
};

/// Appends the polyline that follows `cubic` to `points`, without its first point, the exact end point last.
/// Inside `visible` it stays within `tolerance` (pixels, > 0) of the curve and has the curve's area on either side, to higher
/// order. A stretch wholly above, below, left or right of `visible` becomes its chord, so the cost follows what is visible
/// whatever the size of the curve. The points inside do not depend on `visible`.
void AppendFlattened(const Cubic& cubic, double tolerance, const VisibleBox& visible, std::vector<Point>& points);

}  // namespace refhost
