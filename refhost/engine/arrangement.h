#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace refhost {

/// A point of the integer grid on which everything is intersected.
struct GridPoint {
    std::int32_t x, y;
    friend bool operator==(GridPoint, GridPoint) = default;
};

inline constexpr std::int32_t kLargestGridCoordinate = 1 << 29;  // either sign; products of differences stay within 64 bits

/// A directed segment between two different grid points.
struct GridSegment {
    GridPoint from, to;
};

/// Which points of the plane are inside.
enum class WindingRule { kPositive, kNonZero };

/// An edge of the boundary, from `from` to the next edge's `from`; it is a part of an input segment, up to snapping.
struct BoundaryEdge {
    GridPoint from;
    std::uint32_t segment;  // index of the input segment
    bool reversed;          // it runs against that segment
};

/// The boundary of the inside: closed loops, inside on the left-hand side (positive area outside, negative round holes). Loops do
/// not cross themselves or each other; they may touch in points.
struct Boundary {
    std::vector<BoundaryEdge> edges;
    std::vector<std::size_t> loop_ends;  // one past the last edge of each loop, increasing
};

/// Boundary of the set of points around which closed chains of segments wind as `rule` asks. Each chain's segments follow each
/// other in `segments`, and the last of a chain ends where its first starts.
///
/// Snap rounding after Hobby, "Practical segment intersection with finite precision output" (Comput. Geom. 13, 1999): segment
/// ends and rounded crossings become hot pixels, and every segment that passes through a hot pixel is bent to its centre. All
/// tests are exact, so the result has no crossings left and every winding number is consistent; a point moves by less than a grid
/// unit. Candidate pairs come from a hierarchy of boxes, and windings spread over the planar graph from one point per component:
/// near-linear time in segments plus crossings.
///
/// @throws std::bad_alloc when the crossings are too many to hold
Boundary FindBoundary(std::span<const GridSegment> segments, WindingRule rule);

}  // namespace refhost
