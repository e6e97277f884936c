#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/arrangement.h"
#include "refhost/engine/lone_arcs.h"
#include "refhost/engine/offset_chain.h"

namespace refhost {

inline constexpr double kGridUnitsPerPixel = 8192;                                        // where chains are intersected
inline constexpr double kLargestGridPixel = kLargestGridCoordinate / kGridUnitsPerPixel;  // pixels from the origin, either way

/// Which part of a chain a grid segment stands for.
struct SegmentSource {
    std::uint32_t piece;
    bool scaffold;    // like the piece, or a stretch of it held back at the evolute
    bool lone;        // nothing comes near it
    double from, to;  // parameters on the piece; a segment's `to` is the next one's `from`
};

/// A chain as line segments between grid points. Segment and source share an index. A part that collapses to one grid point has
/// no segment; a loop that collapses altogether leaves none.
struct FlatChain {
    std::vector<GridSegment> segments;
    std::vector<SegmentSource> sources;
};

/// Chords of all `arcs` of a chain, each within `tolerance` pixels of its piece before rounding to the grid; a single one for a
/// lone arc.
FlatChain Flatten(const OffsetChain& chain, std::span<const Arc> arcs, double tolerance);

/// Leads sides that run along each other through the same grid points (see `FindTouches`): sides no more than `nearness`
/// pixels apart. `tolerance` is that of `Flatten`. Lone arcs touch nothing.
void AlignTouchingSides(const OffsetChain& chain, double tolerance, double nearness, FlatChain& flat);

/// Where the piece behind a segment passes a point near that segment, as seen along the segment.
double ParameterAt(const OffsetChain& chain, const FlatChain& flat, std::uint32_t segment, GridPoint p);

GridPoint ToGrid(Point p);
inline Point FromGrid(GridPoint p) { return {p.x / kGridUnitsPerPixel, p.y / kGridUnitsPerPixel}; }

}  // namespace refhost
