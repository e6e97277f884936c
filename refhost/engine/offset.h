#pragma once

#include <vector>

#include "refhost/engine/offset_chain.h"
#include "refhost/engine/path_view.h"

namespace refhost {

/// A piece of a contour, from where the piece before it ends.
struct CurveSegment {
    Point control1, control2, end;
    bool straight;  // the controls then lie on the leg, at its thirds
};

/// A closed contour; its last segment ends at `start`.
struct CurveContour {
    Point start;
    std::vector<CurveSegment> segments;
};

/// Outline of the region that `path` fills under the nonzero rule, grown by `distance` pixels, or shrunk by -`distance` when it
/// is negative; 0 gives the region's own outline. Open subpaths count as closed by a straight leg.
///
/// Contours do not cross themselves or each other; outer ones run clockwise on screen (positive area, y down), holes the other
/// way. They lie within 0.02 px of the exact offset, more only where extents beyond 2^16 px coarsen the working grid, and where
/// the region ends in a wedge so flat that its tip is thinner than 0.002 px: the place of such a tip is open.
///
/// @throws EngineError     kErrorBadPath for operators that make no path, kErrorNotFinite for a NaN or infinite number,
///                         kErrorBadArgument for coordinates or distances beyond 1e9 px
/// @throws std::bad_alloc  also when an outline crosses itself tens of millions of times
std::vector<CurveContour> OffsetOutline(const PathView& path, double distance, OffsetJoin join, double miter_limit);

}  // namespace refhost
