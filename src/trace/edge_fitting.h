#pragma once

#include <cstddef>
#include <vector>

#include "base/errors.h"
#include "base/owner.h"
#include "fit/outline_preparation.h"
#include "fit/path.h"
#include "fit/path_generator.h"
#include "trace/trace.h"

/// Fits every edge of a trace's graph once. Edges are made ready ring by ring, in the order of the regions and of their holes:
/// an edge gets the corner scores of the first ring that it is part of. They are fitted as soon as they are ready, so that no
/// more than one ring is ever held. Borrows the trace and the generator.
class RPEdgeFitting {
 public:
    RPEdgeFitting(RPTrace& trace, KVPathGenerator& generator);

    /// Fits the edges of the region's rings that have no path yet. Regions come in their order.
    void FitRings(const RPRegion& region);
    /// The fitted path of an edge, in the direction of the edge.
    /// @throws int  kFailedCheck when it is not fitted
    const RPPath& PathOf(std::int32_t edge) const;
    /// The region is not asked for again: drops the paths and the edges that it shares with none to come.
    void ReleaseRings(const RPRegion& region);

 private:
    /// An edge of the ring at hand.
    struct RingEdge {
        std::int32_t number;
        bool reversed;
        CFSegment raw;
        CFPreparedChain prepared;
    };

    void FitRing(std::int32_t region, std::int32_t first);
    bool IsFitted(std::int32_t region, std::int32_t first) const;
    void PrepareRing();
    void ReleaseEdge(std::int32_t number);
    ts::auto_ptr<RPPath>& Path(std::int32_t number) { return paths_[static_cast<std::size_t>(number)]; }

    RPTrace* trace_;
    KVPathGenerator* generator_;
    CFOutlinePreparer preparer_;
    std::vector<RingEdge> ring_;
    std::vector<CFOutlineEdge> outline_;
    std::vector<ts::auto_ptr<RPPath>> paths_;
    std::vector<std::size_t> released_;  // edges of each block of the graph's list
};

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
        const std::int32_t next = Successor(edge, side);  // the visit may be the last one of the edge
        visit(number, edge, side);
        number = next;
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
