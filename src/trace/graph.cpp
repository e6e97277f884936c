#include "trace/graph.h"

#include "base/errors.h"

RPGraph::RPGraph(std::int32_t height, std::int32_t width)
    : dictionary(ts::make_auto<RPVertexDictionary>(height + 1, width + 1)) {}

RPSide SideOf(const RPEdge& edge, std::int32_t region) {
    if (edge.region_a == region) return RPSide::kA;
    if (edge.region_b == region) return RPSide::kB;
    throw kBrokenInvariant;
}
