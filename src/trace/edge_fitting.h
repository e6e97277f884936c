#pragma once

#include <vector>

#include "base/errors.h"
#include "base/owner.h"
#include "fit/path.h"
#include "fit/path_generator.h"
#include "trace/trace.h"

/// The fitted path of every edge of the trace's graph, in the direction of the edge.
/// Edges are made ready ring by ring, in the order of the regions and of their holes: an edge gets the corner scores of the
/// first ring that it is part of. They are fitted as soon as they are ready, so that no more than one ring is ever held.
/// @throws int  kBrokenInvariant for a trace without regions
std::vector<ts::auto_ptr<RPPath>> FitEdges(const RPTrace& trace, KVPathGenerator& generator);

/// The edges of the ring that starts with `first`, in the order of the walk with `region` on the right on screen.
/// `visit(number, edge, side)` is called for each of them, `side` being the side that `region` is on.
/// @throws int  kBrokenInvariant for an edge that `region` is not on; kFailedCheck for a missing successor
template <class Visit>
void ForEachRingEdge(const RPGraph& graph, std::int32_t region, std::int32_t first, Visit&& visit) {
    std::int32_t number = first;
    do {
        if (number == kNone) throw kFailedCheck;
        const RPEdge& edge = graph.Edge(number);
        const RPSide side = SideOf(edge, region);
        visit(number, edge, side);
        number = Successor(edge, side);
    } while (number != first);
}

/// Calls `visit(first_edge)` for the outer ring of the region, then for each of its holes.
template <class Visit>
void ForEachRing(const RPTrace& trace, const RPRegion& region, Visit&& visit) {
    visit(region.outer_edge);
    for (std::int32_t hole = region.first_hole; hole != kNone;) {
        const RPHole& record = trace.holes[static_cast<std::size_t>(hole)];
        visit(record.first_edge);
        hole = record.next;
    }
}
