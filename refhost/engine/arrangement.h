#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/grid.h"

namespace refhost {

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
/// Segments are snapped to the nodes where they meet (see `FindNodes`), which leaves no crossings, and a point moves by less than
/// a grid unit; windings then spread over the planar graph, so every one is consistent. Memory is linear in segments and
/// crossings, time nearly so in these and in pairs of segments whose boxes overlap.
///
/// @throws std::bad_alloc when the crossings are too many to hold
Boundary FindBoundary(std::span<const GridSegment> segments, WindingRule rule);

}  // namespace refhost
