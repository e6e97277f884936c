#include "trace/boundary_walk.h"

#include <algorithm>

#include "base/errors.h"

namespace {

// Puts the last piece, whose steps are the last of all, in front of the first: no junction lies between them.
void JoinLastToFirst(RPChain& chain);

}  // namespace

template <bool kWithJoins>
RPBoundaryWalk<kWithJoins>::RPBoundaryWalk(const RPPixelMap& pixels, const RPGraph& graph)
    : pixels_(&pixels), graph_(&graph), forward_{}, ahead_right_{}, ahead_left_{} {
    const std::ptrdiff_t down = pixels.Stride();
    for (const RPDirection direction : {kRight, kUp, kLeft, kDown}) {
        forward_[Index(direction)] = StepX(direction) + StepY(direction) * down;
    }
    ahead_right_[kRight] = ahead_left_[kDown] = 0;
    ahead_right_[kDown] = ahead_left_[kLeft] = -1;
    ahead_right_[kLeft] = ahead_left_[kUp] = -down - 1;
    ahead_right_[kUp] = ahead_left_[kRight] = -down;
}

template <bool kWithJoins>
void RPBoundaryWalk<kWithJoins>::Follow(std::int32_t x, std::int32_t y, RPDirection direction, RPChain& chain) const {
    chain.pieces.clear();
    chain.steps.clear();
    chain.is_loop = false;
    const Place start = {CornerAt(x, y), direction};
    const std::uint8_t colour = AheadRight(start);
    bool ends_at_junction = true;
    Place place = start;
    do {
        const Position position = PositionOf(place.corner);
        const std::int32_t edge = EdgeAt(position, place.direction);
        chain.pieces.push_back(
            {edge, static_cast<std::int16_t>(position.x), static_cast<std::int16_t>(position.y), chain.steps.size(), 0});
        if (edge != kNone) {
            place = FarEnd(edge, colour);
        } else {
            ends_at_junction = WalkPiece(place, start, chain);
        }
    } while (place != start);
    if (!ends_at_junction) JoinLastToFirst(chain);
}

template <bool kWithJoins>
typename RPBoundaryWalk<kWithJoins>::Position RPBoundaryWalk<kWithJoins>::PositionOf(const std::uint8_t* corner) const {
    const auto stride = static_cast<std::uint32_t>(pixels_->Stride());
    const auto place = static_cast<std::uint32_t>(corner - CornerAt(-1, -1));  // pixels of the frame count
    return {static_cast<std::int32_t>(place % stride) - 1, static_cast<std::int32_t>(place / stride) - 1};
}

// The edge that leaves a corner in a direction, or kNone.
template <bool kWithJoins>
std::int32_t RPBoundaryWalk<kWithJoins>::EdgeAt(Position position, RPDirection direction) const {
    const std::int32_t vertex = graph_->dictionary->Find(position.x, position.y);
    return vertex == kNone ? kNone : graph_->Vertex(vertex).slots[Index(direction) / 2];
}

// Where the boundary of a region of `colour` goes on after it has passed an edge against the edge's direction.
template <bool kWithJoins>
typename RPBoundaryWalk<kWithJoins>::Place RPBoundaryWalk<kWithJoins>::FarEnd(std::int32_t number, std::uint8_t colour) const {
    const RPEdge& edge = graph_->Edge(number);
    const Place arrival = {CornerAt(edge.start_x, edge.start_y), Opposite(edge.start_code)};
    return {arrival.corner, TurnAt(arrival, colour, colour).direction};
}

// Walks from `place` up to a junction or to `end`, whichever comes first, and moves `place` there. Adds the steps to the last
// piece. True when there is a junction.
template <bool kWithJoins>
bool RPBoundaryWalk<kWithJoins>::WalkPiece(Place& place, const Place& end, RPChain& chain) const {
    const std::uint8_t colour = AheadRight(place);
    const std::uint8_t neighbour = AheadLeft(place);
    const std::size_t first_step = chain.steps.size();
    Turn turn{};
    do {
        chain.steps.push_back(static_cast<std::uint8_t>(place.direction));
        place.corner += forward_[Index(place.direction)];
        turn = TurnAt(place, colour, neighbour);
        place.direction = turn.direction;
    } while (!turn.is_junction && place != end);
    chain.pieces.back().step_count = static_cast<std::int32_t>(chain.steps.size() - first_step);
    return turn.is_junction;
}

// Which way the boundary of a region of `colour` against `neighbour` turns at a corner that it has arrived at in the
// direction of `arrival`. Regions hang together by sides: with the region ahead on the left only, it turns right.
template <bool kWithJoins>
typename RPBoundaryWalk<kWithJoins>::Turn RPBoundaryWalk<kWithJoins>::TurnAt(const Place& arrival, std::uint8_t colour,
                                                                             std::uint8_t neighbour) const {
    const RPDirection direction = arrival.direction;
    const std::uint8_t right = AheadRight(arrival), left = AheadLeft(arrival);
    if (right == colour) {
        if (left == colour) return {CounterClockwise(direction), false};
        return {direction, left != neighbour};
    }
    const bool is_junction = left != neighbour || right != neighbour;
    if constexpr (kWithJoins) {
        const RPJoin join = is_junction ? JoinAt(arrival.corner) : kJoinNone;
        // The pixel behind on the right and the one ahead on the left:
        const RPJoin own = direction == kRight || direction == kLeft ? kJoinUpRight : kJoinUpLeft;
        if (join == own) return {CounterClockwise(direction), false};
        if (join != kJoinNone) return {Clockwise(direction), false};
    }
    return {Clockwise(direction), is_junction};
}

template <bool kWithJoins>
RPJoin RPBoundaryWalk<kWithJoins>::JoinAt(const std::uint8_t* corner) const {
    const Position position = PositionOf(corner);
    return pixels_->Join(position.x, position.y);
}

template class RPBoundaryWalk<false>;
template class RPBoundaryWalk<true>;

namespace {

void JoinLastToFirst(RPChain& chain) {
    RPPiece& first = chain.pieces.front();
    if (chain.pieces.size() == 1) {
        chain.is_loop = true;
        return;
    }
    const RPPiece last = chain.pieces.back();
    const std::size_t end = chain.steps.size();
    const auto count = static_cast<std::size_t>(first.step_count);
    chain.steps.resize(end + count);
    std::copy_n(chain.steps.begin() + static_cast<std::ptrdiff_t>(first.first_step), count,
                chain.steps.begin() + static_cast<std::ptrdiff_t>(end));
    first = {kNone, last.x, last.y, last.first_step, last.step_count + first.step_count};
    chain.pieces.pop_back();
}

}  // namespace
