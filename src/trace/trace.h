#pragma once

#include <cstdint>
#include <vector>

#include "base/owner.h"
#include "trace/graph.h"
#include "trace/raster.h"

/// A set of pixels of one colour that hang together by their sides.
struct RPRegion {
    std::int32_t outer_edge = kNone;                     // first edge of the ring round it
    std::int32_t index;                                  // its place in the list
    std::int32_t area = 0;                               // pixels
    std::int32_t enclosing_hole = kNone;                 // the hole of another region that it lies in
    std::int32_t first_hole = kNone, last_hole = kNone;  // its holes, chained through RPHole::next
    std::int32_t hole_count = 0;
    std::uint8_t colour;  // number in the thread's colour table
};

/// A boundary of a region against what lies inside it. Numbered in order of discovery.
struct RPHole {
    std::int32_t first_edge = kNone;
    std::int32_t region;        // the region that has the hole
    std::int32_t next = kNone;  // the region's next hole
};

/// The planar map of a bitmap: regions in raster order of their first pixels, and the edges between them. The colour
/// table of the calling thread belongs to its latest trace.
class RPTrace {
 public:
    /// Takes the raster and traces it; it is released when that is done.
    /// @throws int               kFailedCheck without a raster, kBrokenInvariant for an inner inconsistency
    /// @throws kUnsupportedKind  for a raster that has not three components
    RPTrace(ts::auto_ptr<RPRaster>& raster, std::int32_t minimum_area, bool second_kind);

    ts::auto_ptr<RPGraph> graph;
    ts::auto_ptr<RPRaster> raster;
    using Regions = RPBlockList<RPRegion>;
    Regions regions;
    std::vector<RPHole> holes;
    std::int32_t height = 0, width = 0;  // pixels
    std::int32_t minimum_area = 0;
    bool second_kind = false;
};
