#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/grid.h"

namespace refhost {

/// A segment passes through the hot pixel centred on `at`.
struct Cut {
    std::uint32_t segment;
    GridPoint at;
};

/// Where the segments of closed chains meet once they are snapped: at the cuts, and at the marked segment starts. Between two
/// nodes in a row nothing else touches a chain.
struct Nodes {
    std::vector<Cut> cuts;          // by segment, then along it, each once
    std::vector<char> is_at_start;  // per segment
};

/// Snap rounding: segment ends and rounded crossings are hot pixels, half-open unit squares centred on grid points; a segment is
/// cut at every one it passes through. All tests are exact.
///
/// Every chain has a node where its segments start, and one in its leftmost point.
///
/// After Hobby, "Practical segment intersection with finite precision output" (Comput. Geom. 13, 1999).
/// @throws std::bad_alloc when the crossings are too many to hold
Nodes FindNodes(std::span<const GridSegment> segments);

}  // namespace refhost
