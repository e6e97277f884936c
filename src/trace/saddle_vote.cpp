#include "trace/saddle_vote.h"

#include <algorithm>
#include <cstddef>

#include "base/errors.h"

namespace {

bool LeavesByStart(const RPEdge& edge, std::int32_t vertex, RPDirection d);
std::int32_t RegionOnLeft(const RPGraph& graph, std::int32_t vertex, RPDirection d);  // of the edge that leaves this way
int SecondTurn(const RPGraph& graph, std::int32_t vertex,
               RPDirection d);  // of that edge: -1 left, +1 right, 0 straight or too short
RPJoin Vote(const RPGraph& graph, std::int32_t vertex, const RPSaddle& regions);

}  // namespace

bool IsSaddle(const RPVertex& vertex) { return std::find(vertex.slots.begin(), vertex.slots.end(), kNone) == vertex.slots.end(); }

RPSaddle RegionsRound(const RPGraph& graph, std::int32_t number) {
    return {RegionOnLeft(graph, number, kRight), RegionOnLeft(graph, number, kUp), RegionOnLeft(graph, number, kLeft),
            RegionOnLeft(graph, number, kDown)};
}

RPJoin ChooseJoin(const RPTrace& trace, std::int32_t number, const RPSaddle& regions) {
    const auto same_colour = [&](std::int32_t a, std::int32_t b) {
        return trace.regions[static_cast<std::size_t>(a)].colour == trace.regions[static_cast<std::size_t>(b)].colour;
    };
    const bool up_right = same_colour(regions.up_right, regions.down_left);
    const bool up_left = same_colour(regions.up_left, regions.down_right);
    if (up_right && up_left) return Vote(*trace.graph, number, regions);
    return up_right ? kJoinUpRight : up_left ? kJoinUpLeft : kJoinNone;
}

namespace {

bool LeavesByStart(const RPEdge& edge, std::int32_t vertex, RPDirection d) {
    return edge.start_vertex == vertex && edge.start_code == d;
}

const RPEdge& EdgeLeaving(const RPGraph& graph, std::int32_t vertex, RPDirection d) {
    return graph.Edge(graph.Vertex(vertex).slots[static_cast<std::size_t>(d / 2)]);
}

std::int32_t RegionOnLeft(const RPGraph& graph, std::int32_t vertex, RPDirection d) {
    const RPEdge& edge = EdgeLeaving(graph, vertex, d);
    const std::int32_t region = LeavesByStart(edge, vertex, d) ? edge.region_a : edge.region_b;
    if (region == kNone) throw kBrokenInvariant;
    return region;
}

int SecondTurn(const RPGraph& graph, std::int32_t vertex, RPDirection d) {
    const RPEdge& edge = EdgeLeaving(graph, vertex, d);
    if (edge.step_count < 2) return 0;
    const RPDirection second =
        LeavesByStart(edge, vertex, d) ? graph.Step(edge, 1) : Opposite(graph.Step(edge, edge.step_count - 2));
    return second == Clockwise(d) ? 1 : second == CounterClockwise(d) ? -1 : 0;
}

// Level edges that turn right and upright ones that turn left close in on the pair up-left and down-right, the others on the
// pair up-right and down-left. On a tie a pair that is one region already gives way to one that is not.
RPJoin Vote(const RPGraph& graph, std::int32_t vertex, const RPSaddle& regions) {
    const int votes = SecondTurn(graph, vertex, kRight) + SecondTurn(graph, vertex, kLeft) - SecondTurn(graph, vertex, kUp) -
                      SecondTurn(graph, vertex, kDown);
    if (votes != 0) return votes > 0 ? kJoinUpLeft : kJoinUpRight;
    const bool unites_up_left = regions.up_right == regions.down_left && regions.up_left != regions.down_right;
    return unites_up_left ? kJoinUpLeft : kJoinUpRight;
}

}  // namespace
