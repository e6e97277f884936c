#include "trace/known_edges.h"

void RPEdgeSet::Add(const RPGraph& graph, std::int32_t number) {
    const RPEdge& edge = graph.Edge(number);
    std::int32_t x = edge.start_x, y = edge.start_y;
    for (std::int32_t i = 0; i < edge.step_count; ++i) {
        switch (graph.Step(edge, i)) {
            case kRight:
                ++x;
                break;
            case kLeft:
                --x;
                break;
            case kUp:
                edges_.Set(x, --y, number);
                break;
            case kDown:
                edges_.Set(x, y++, number);
                break;
        }
    }
}
