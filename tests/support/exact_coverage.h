#pragma once

#include <vector>

#include "host/geometry_records.h"
#include "refhost/engine/path_view.h"

namespace support {

/// How much of each pixel of `box` lies where the path's winding number is not zero, times 255, row by row. Slow: curves are
/// followed to 0.0002 px, and each row is cut along a thousand lines and at every vertex; spans along a line are exact.
std::vector<double> ExactCoverage(const refhost::PathView& path, const M_LRect& box);

}  // namespace support
