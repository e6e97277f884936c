#include "trace/edge_fitting.h"

#include "fit/outline_preparation.h"

namespace {

/// An edge of the ring at hand.
struct RingEdge {
    std::int32_t number;
    bool reversed;
    CFSegment raw;
    CFPreparedChain prepared;
};

CFSegment RawSegment(const RPGraph& graph, const RPEdge& edge) {
    return {PointCount(edge), kSpacingUnitSteps, edge.closed ? kChainClosed : kChainOpen, RPEdgePoints(graph, edge)};
}

class EdgeFitting {
 public:
    EdgeFitting(const RPTrace& trace, KVPathGenerator& generator)
        : trace_(&trace), generator_(&generator), paths_(trace.graph->edges.size()) {}

    void FitRing(std::int32_t region, std::int32_t first) {
        if (IsFitted(region, first)) return;
        ring_.clear();
        ForEachRingEdge(*trace_->graph, region, first, [&](std::int32_t number, const RPEdge& edge, RPSide side) {
            ring_.push_back({number, side == RPSide::kA, RawSegment(*trace_->graph, edge), {}});
        });
        PrepareRing();
        for (const RingEdge& edge : ring_) {
            ts::auto_ptr<RPPath>& path = PathOf(edge);
            if (!path) generator_->FitEdge({edge.raw, *edge.prepared.derived, *edge.prepared.ranking}, path);
        }
    }

    std::vector<ts::auto_ptr<RPPath>> Release() { return std::move(paths_); }

 private:
    bool IsFitted(std::int32_t region, std::int32_t first) const {
        bool fitted = true;
        ForEachRingEdge(*trace_->graph, region, first, [&](std::int32_t number, const RPEdge&, RPSide) {
            fitted = fitted && paths_[static_cast<std::size_t>(number)];
        });
        return fitted;
    }

    void PrepareRing() {
        outline_.clear();
        for (RingEdge& edge : ring_) outline_.push_back({&edge.raw, edge.reversed, PathOf(edge) ? nullptr : &edge.prepared});
        preparer_.Prepare(outline_);
    }

    ts::auto_ptr<RPPath>& PathOf(const RingEdge& edge) { return paths_[static_cast<std::size_t>(edge.number)]; }

    const RPTrace* trace_;
    KVPathGenerator* generator_;
    CFOutlinePreparer preparer_;
    std::vector<RingEdge> ring_;
    std::vector<CFOutlineEdge> outline_;
    std::vector<ts::auto_ptr<RPPath>> paths_;
};

}  // namespace

std::vector<ts::auto_ptr<RPPath>> FitEdges(const RPTrace& trace, KVPathGenerator& generator) {
    if (trace.regions.empty()) throw kBrokenInvariant;
    EdgeFitting fitting(trace, generator);
    for (const RPRegion& region : trace.regions) {
        ForEachRing(trace, region, [&](std::int32_t first) { fitting.FitRing(region.index, first); });
    }
    return fitting.Release();
}
