#include "trace/art_generator.h"

#include "base/errors.h"
#include "trace/edge_fitting.h"

namespace {

/// The closed outline of one ring, put together from the paths of its edges.
RPPath AssembleRing(const RPGraph& graph, const RPEdgeFitting& fitting, std::int32_t region, std::int32_t first) {
    RPPath outline;
    outline.closed = true;
    ForEachRingEdge(graph, region, first, [&](std::int32_t number, const RPEdge&, RPSide side) {
        constexpr bool kJoin = true;
        if (side == RPSide::kA) {
            outline.AppendReversed(fitting.PathOf(number), kJoin);
        } else {
            outline.Append(fitting.PathOf(number), kJoin);
        }
    });
    outline.Close();
    return outline;
}

RPOutlineArt AssembleArt(const RPTrace& trace, const RPEdgeFitting& fitting, const RPRegion& region) {
    RPOutlineArt art;
    ForEachRing(trace, region, [&](std::int32_t first) {
        auto& list = art.outer.empty() ? art.outer : art.holes;
        list.push_back(AssembleRing(*trace.graph, fitting, region.index, first));
    });
    return art;
}

}  // namespace

KVOutlineGenerator::KVOutlineGenerator(RPTrace* trace, float tolerance, float corner_angle, std::int32_t window,
                                       bool skip_outlines)
    : trace_(trace), skip_outlines_(skip_outlines) {
    if (trace_ == nullptr) throw kFailedCheck;
    if (trace_->regions.empty()) throw kBrokenInvariant;
    path_generator_ = ts::make_auto<KVPathGenerator>(tolerance, corner_angle, window);
}

void KVOutlineGenerator::ForEachArt(const std::function<bool(const RPRegion&)>& wants,
                                    const std::function<void(const RPOutlineArt&)>& visit) {
    if (skip_outlines_) return;
    trace_->graph->vertices.clear();
    RPEdgeFitting fitting(*trace_, *path_generator_);
    for (const RPRegion& region : trace_->regions) {
        fitting.FitRings(region);
        if (wants(region)) visit(AssembleArt(*trace_, fitting, region));
        fitting.ReleaseRings(region);
        if (auto place = static_cast<std::size_t>(region.index) + 1; place % RPTrace::Regions::kBlock == 0) {
            trace_->regions.Release(RPTrace::Regions::BlockOf(place - 1));
        }
    }
    trace_->graph.reset();
    trace_->regions.clear();
}
