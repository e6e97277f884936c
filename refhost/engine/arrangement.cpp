#include "refhost/engine/arrangement.h"

#include "refhost/engine/planar_graph.h"
#include "refhost/engine/snap_rounding.h"
#include "refhost/engine/windings.h"

namespace refhost {
namespace {

/// Per edge its half-edge with the inside on the left, or kNone when it is no border.
std::vector<HalfEdge> FindBorder(const PlanarGraph& graph, WindingRule rule);
Boundary LinkLoops(const PlanarGraph& graph, std::vector<HalfEdge> border);
HalfEdge NextOnBorder(const PlanarGraph& graph, HalfEdge arriving, const std::vector<HalfEdge>& border);
bool IsInside(std::int32_t winding, WindingRule rule) { return rule == WindingRule::kPositive ? winding > 0 : winding != 0; }

}  // namespace

Boundary FindBoundary(std::span<const GridSegment> segments, WindingRule rule) {
    if (segments.empty()) return {};
    const PlanarGraph graph(segments, FindNodes(segments));
    return LinkLoops(graph, FindBorder(graph, rule));
}

namespace {

std::vector<HalfEdge> FindBorder(const PlanarGraph& graph, WindingRule rule) {
    std::vector<std::int32_t> left = WindingsOnLeft(graph);
    std::vector<HalfEdge> border(graph.EdgeCount(), kNone);
    for (HalfEdge h = 0; h < 2 * border.size(); h += 2) {
        const bool left_inside = IsInside(left[h / 2], rule);
        const bool right_inside = IsInside(left[h / 2] - graph.Multiplicity(h), rule);
        if (left_inside != right_inside) border[h / 2] = left_inside ? h : h ^ 1;
    }
    return border;
}

Boundary LinkLoops(const PlanarGraph& graph, std::vector<HalfEdge> border) {
    Boundary result;
    for (std::size_t e = 0; e < border.size(); ++e) {
        const HalfEdge first = border[e];
        if (first == kNone) continue;
        HalfEdge h = first;
        do {
            graph.AppendPath(h, result.edges);
            const HalfEdge next = NextOnBorder(graph, h, border);
            if (h != first) border[h / 2] = kNone;
            h = next;
        } while (h != first);
        border[e] = kNone;
        result.loop_ends.push_back(result.edges.size());
    }
    return result;
}

// The sharpest turn to the left: the first border edge met clockwise from the way back. It bounds the same inside sector, so
// parts that touch in a vertex come apart there. As many border edges leave a vertex as arrive, so there always is one.
HalfEdge NextOnBorder(const PlanarGraph& graph, HalfEdge arriving, const std::vector<HalfEdge>& border) {
    HalfEdge h = arriving ^ 1;
    do {
        h = graph.Before(h);
    } while (border[h / 2] != h);
    return h;
}

}  // namespace
}  // namespace refhost
