#include "trace/group_borders.h"

#include <cstddef>

RPGroupBorders::RPGroupBorders(const RPTrace& trace, RPMergeGroups& groups)
    : trace_(trace), groups_(groups), runs_(trace.regions.size()) {}

void RPGroupBorders::Unroll(std::int32_t region) {
    Run& run = runs_[static_cast<std::size_t>(region)];
    if (run.begin != kNotUnrolled) return;
    run.begin = static_cast<std::uint32_t>(borders_.size());
    const RPRegion& rings = trace_.regions[static_cast<std::size_t>(region)];
    UnrollRing(rings.outer_edge, region);
    for (std::int32_t hole = rings.first_hole; hole != kNone; hole = trace_.holes[static_cast<std::size_t>(hole)].next) {
        UnrollRing(trace_.holes[static_cast<std::size_t>(hole)].first_edge, region);
    }
    run.end = static_cast<std::uint32_t>(borders_.size());
}

void RPGroupBorders::UnrollRing(std::int32_t first_edge, std::int32_t region) {
    std::int32_t number = first_edge;
    do {
        const RPEdge& edge = trace_.graph->Edge(number);
        const RPSide side = SideOf(edge, region);
        const std::int32_t across = side == RPSide::kA ? edge.region_b : edge.region_a;
        if (across != kNone) borders_.push_back({number, across});
        number = Successor(edge, side);
    } while (number != first_edge);
}
