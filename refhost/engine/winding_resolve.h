#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// Turns the pieces of one pixel row into the border of the area whose winding number is not zero: pieces that wind once, so
/// that their signed area is the covered area. Follows every crossing of the pieces; where they are too many to follow, the row
/// is sampled along fixed lines instead, which bounds the time.
class WindingResolver {
 public:
    /// `pieces` are all those of the row; they are reordered. The result is borrowed until the next call.
    std::span<const RowPiece> Resolve(std::span<RowPiece> pieces);

 private:
    /// Neighbouring pieces that are clear of those on either side and leave one winding number on their right.
    struct Group {
        std::span<RowPiece> pieces;
        std::int32_t left_winding, right_winding;
        bool is_chain;  // one line runs through, in pieces end to end
    };
    /// A piece the sweep over a group is passing.
    struct Strand {
        RowPiece piece;
        double slope;        // x per y
        double top, bottom;  // x at the upper and lower end of the current band
        std::int32_t side;   // 1: enters the filled area here, -1: leaves it, 0: neither
        std::int32_t since;  // y from where `side` holds

        double XAt(std::int32_t y) const { return piece.x_top + slope * (y - piece.y_top); }
    };

    Group TakeGroup(std::span<RowPiece>& pieces, std::int32_t left_winding);
    void CountEnd(std::int32_t y, std::int32_t winding);
    void AddChain(const Group& group);
    bool Follow(const Group& group);
    void Sample(const Group& group);

    void Admit(std::span<const RowPiece>& waiting, std::int32_t y);
    void Retire(std::int32_t y);
    void Place(std::int32_t y, std::int32_t end);
    bool FindCrossings(std::int32_t y, std::int32_t end);
    void ChooseSides(std::int32_t winding, std::int32_t y);
    void Close(const Strand& strand, std::int32_t y);
    void AddStop(std::int32_t y);
    std::int32_t NextStop(std::int32_t y) const;
    template <class Before, class Swapped>
    void SortStrands(Before before, Swapped swapped);

    std::array<std::int32_t, kSubOne + 1> ends_{};         // per y, windings that begin less those that end
    std::int32_t open_ends_ = 0;                           // inside the row, entries of `ends_` that are not zero
    std::array<std::uint64_t, kSubOne / 64 + 1> stops_{};  // a bit per y at which pieces end or cross
    std::vector<Strand> strands_;                          // of the current band, left to right
    std::vector<RowPiece> border_;
    std::size_t work_ = 0;  // strands placed and swapped in this group
};

}  // namespace refhost
