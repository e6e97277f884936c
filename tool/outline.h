#pragma once

#include <boost/shared_ptr.hpp>
#include <vector>

#include "host/geometry_records.h"
#include "host/shape.h"

namespace vrltool {

using Point = M_Vector2T<double>;

/// An anchor with the control points of the segments arriving at it and leaving it, all absolute. Where a segment is
/// straight, or missing at the end of an open outline, the anchor stands in.
struct Vertex {
    Point in, anchor, out;
};

/// One outline of cubic segments in layer pixels, as the files hold it. A closed one has a last segment back to its
/// first vertex.
struct Outline {
    std::vector<Vertex> vertices;
    bool closed = true;
};

/// True when `value` lies in the range of the shapes' 32-bit floats.
bool FitsFloat(double value);

/// The outline as the host's shape; coordinates are rounded to 32-bit floats, which they must fit.
/// @throws int  a failed list call
boost::shared_ptr<DY_Shape> MakeShape(const Outline& outline);

/// @throws int  a failed list call
Outline OutlineOf(const DY_Shape& shape);

}  // namespace vrltool
