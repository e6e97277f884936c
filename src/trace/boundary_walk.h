#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "trace/graph_builder.h"
#include "trace/pixel_map.h"

/// Walks along the boundaries of regions, from pixel corner to pixel corner with the region on the right on screen, and cuts
/// them into pieces at junctions: at corners where three colours meet or where the region touches itself diagonally. What
/// is an edge of the graph already is passed in one go. Borrows the pixels and the graph.
/// `kWithJoins`: pixels may be joined diagonally. The walk crosses there, and nobody sees a junction.
template <bool kWithJoins>
class RPBoundaryWalk {
 public:
    RPBoundaryWalk(const RPPixelMap& pixels, const RPGraph& graph);

    /// The boundary that leaves corner (x, y) in `direction`. It starts at the last junction up to that corner.
    void Follow(std::int32_t x, std::int32_t y, RPDirection direction, RPChain& chain) const;

 private:
    // A corner, as the pixel to its lower right, and the direction in which the boundary leaves it.
    struct Place {
        const std::uint8_t* corner;
        RPDirection direction;
        bool operator==(const Place&) const = default;
    };
    struct Turn {
        RPDirection direction;
        bool is_junction;
    };
    struct Position {
        std::int32_t x, y;
    };

    const std::uint8_t* CornerAt(std::int32_t x, std::int32_t y) const { return pixels_->Row(y) + x; }
    Position PositionOf(const std::uint8_t* corner) const;
    std::uint8_t AheadRight(const Place& place) const { return place.corner[ahead_right_[Index(place.direction)]]; }
    std::uint8_t AheadLeft(const Place& place) const { return place.corner[ahead_left_[Index(place.direction)]]; }
    static std::size_t Index(RPDirection direction) { return static_cast<std::size_t>(direction); }

    std::int32_t EdgeAt(Position position, RPDirection direction) const;
    Place FarEnd(std::int32_t edge, std::uint8_t colour) const;
    bool WalkPiece(Place& place, const Place& end, RPChain& chain) const;
    Turn TurnAt(const Place& arrival, std::uint8_t colour, std::uint8_t neighbour) const;
    RPJoin JoinAt(const std::uint8_t* corner) const;

    const RPPixelMap* pixels_;
    const RPGraph* graph_;
    // By direction (the odd places stay unused): how far to the next corner, and the two pixels in front of a corner.
    std::array<std::ptrdiff_t, 8> forward_, ahead_right_, ahead_left_;
};

extern template class RPBoundaryWalk<false>;
extern template class RPBoundaryWalk<true>;
