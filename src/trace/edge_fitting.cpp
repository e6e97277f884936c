#include "trace/edge_fitting.h"

#include <algorithm>

namespace {

CFSegment RawSegment(const RPGraph& graph, const RPEdge& edge) {
    return {PointCount(edge), kSpacingUnitSteps, edge.closed ? kChainClosed : kChainOpen, RPEdgePoints(graph, edge)};
}

}  // namespace

RPEdgeFitting::RPEdgeFitting(RPTrace& trace, KVPathGenerator& generator)
    : trace_(&trace),
      generator_(&generator),
      paths_(trace.graph->edges.size()),
      released_(trace.graph->edges.size() / RPGraph::Edges::kBlock + 1) {}

void RPEdgeFitting::FitRings(const RPRegion& region) {
    ForEachRing(*trace_, region, [&](std::int32_t first) { FitRing(region.index, first); });
}

const RPPath& RPEdgeFitting::PathOf(std::int32_t edge) const {
    const ts::auto_ptr<RPPath>& path = paths_[static_cast<std::size_t>(edge)];
    if (!path) throw kFailedCheck;
    return *path;
}

void RPEdgeFitting::ReleaseRings(const RPRegion& region) {
    ForEachRing(*trace_, region, [&](std::int32_t first) {
        ForEachRingEdge(*trace_->graph, region.index, first, [&](std::int32_t number, const RPEdge& edge, RPSide) {
            if (region.index == std::max(edge.region_a, edge.region_b)) ReleaseEdge(number);
        });
    });
}

void RPEdgeFitting::FitRing(std::int32_t region, std::int32_t first) {
    if (IsFitted(region, first)) return;
    ring_.clear();
    ForEachRingEdge(*trace_->graph, region, first, [&](std::int32_t number, const RPEdge& edge, RPSide side) {
        ring_.push_back({number, side == RPSide::kA, RawSegment(*trace_->graph, edge), {}});
    });
    PrepareRing();
    for (const RingEdge& edge : ring_) {
        ts::auto_ptr<RPPath>& path = Path(edge.number);
        if (!path) generator_->FitEdge({edge.raw, *edge.prepared.derived, *edge.prepared.ranking}, path);
    }
}

bool RPEdgeFitting::IsFitted(std::int32_t region, std::int32_t first) const {
    bool fitted = true;
    ForEachRingEdge(*trace_->graph, region, first, [&](std::int32_t number, const RPEdge&, RPSide) {
        fitted = fitted && paths_[static_cast<std::size_t>(number)];
    });
    return fitted;
}

void RPEdgeFitting::PrepareRing() {
    outline_.clear();
    for (RingEdge& edge : ring_) outline_.push_back({&edge.raw, edge.reversed, Path(edge.number) ? nullptr : &edge.prepared});
    preparer_.Prepare(outline_);
}

void RPEdgeFitting::ReleaseEdge(std::int32_t number) {
    Path(number).reset();
    RPGraph::Edges& edges = trace_->graph->edges;
    const std::size_t block = RPGraph::Edges::BlockOf(static_cast<std::size_t>(number));
    if (++released_[block] == RPGraph::Edges::kBlock) edges.Release(block);
}
