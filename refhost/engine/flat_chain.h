#pragma once

#include <cstdint>
#include <vector>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/offset_chain.h"

namespace refhost {

inline constexpr double kGridUnitsPerPixel = 8192;                                        // where chains are intersected
inline constexpr double kLargestGridPixel = kLargestGridCoordinate / kGridUnitsPerPixel;  // pixels from the origin, either way

/// Which part of a chain a grid segment stands for.
struct SegmentSource {
    std::uint32_t piece;
    bool scaffold;    // like the piece, or a stretch of it held back at the evolute
    double from, to;  // parameters on the piece; a segment's `to` is the next one's `from`
};

/// A chain as line segments between grid points. Segment and source share an index. A part that collapses to one grid point has
/// no segment; a loop that collapses altogether leaves none.
struct FlatChain {
    std::vector<GridSegment> segments;
    std::vector<SegmentSource> sources;
};

/// Chords of all pieces, each within `tolerance` pixels of its piece before rounding to the grid.
FlatChain Flatten(const OffsetChain& chain, double tolerance);

GridPoint ToGrid(Point p);
inline Point FromGrid(GridPoint p) { return {p.x / kGridUnitsPerPixel, p.y / kGridUnitsPerPixel}; }

}  // namespace refhost
