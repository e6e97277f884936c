#pragma once

#include <cstdint>

#include "trace/corner_grid.h"
#include "trace/graph.h"

/// Which edge runs along each vertical side of a pixel, as far as boundaries have been traced: what a scan of the rows needs
/// to know the region behind every colour change.
class RPEdgeSet {
 public:
    RPEdgeSet(std::int32_t height, std::int32_t width) : edges_(height, width + 1) {}

    /// The edge along the left side of pixel (x, y), or kNone; x may be the width of the image.
    std::int32_t At(std::int32_t x, std::int32_t y) const { return edges_.At(x, y); }
    /// Adds all vertical steps of an edge.
    void Add(const RPGraph& graph, std::int32_t edge);
    /// The rows of pixels above `y` are not asked for again.
    void ReleaseAbove(std::int32_t y) { edges_.ReleaseAbove(y); }

 private:
    RPCornerGrid edges_;  // by the upper corner
};
