#include "trace/art_generator.h"

#include "base/errors.h"
#include "trace/edge_fitting.h"

namespace {

using Paths = std::vector<ts::auto_ptr<RPPath>>;

/// The closed outline of one ring, put together from the paths of its edges.
RPPath AssembleRing(const RPGraph& graph, const Paths& paths, std::int32_t region, std::int32_t first) {
    RPPath outline;
    outline.closed = true;
    ForEachRingEdge(graph, region, first, [&](std::int32_t number, const RPEdge&, RPSide side) {
        const ts::auto_ptr<RPPath>& path = paths[static_cast<std::size_t>(number)];
        if (!path) throw kFailedCheck;
        constexpr bool kJoin = true;
        if (side == RPSide::kA) {
            outline.AppendReversed(*path, kJoin);
        } else {
            outline.Append(*path, kJoin);
        }
    });
    outline.Close();
    return outline;
}

void AssembleArt(RPTrace& trace, const Paths& paths) {
    for (RPRegion& region : trace.regions) {
        auto art = ts::make_auto<RPOutlineArt>();
        ForEachRing(trace, region, [&](std::int32_t first) {
            auto& list = art->outer.empty() ? art->outer : art->holes;
            list.push_back(AssembleRing(*trace.graph, paths, region.index, first));
        });
        region.art = std::move(art);
    }
}

}  // namespace

KVOutlineGenerator::KVOutlineGenerator(RPTrace* trace, float tolerance, float corner_angle, std::int32_t window,
                                       bool skip_outlines)
    : trace_(trace), skip_outlines_(skip_outlines) {
    if (trace_ == nullptr) throw kFailedCheck;
    path_generator_ = ts::make_auto<KVPathGenerator>(tolerance, corner_angle, window);
    const Paths paths = FitEdges(*trace_, *path_generator_);
    if (skip_outlines_) return;
    AssembleArt(*trace_, paths);
    trace_->graph.reset();
}
