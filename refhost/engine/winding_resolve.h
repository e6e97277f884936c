#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// Turns pieces of one pixel row into the border of the area whose winding number is not zero: pieces that wind once, so that
/// their signed area is the covered area. Follows every crossing of the pieces; where they are too many to follow, the row is
/// sampled along fixed lines instead, which bounds the time.
class WindingResolver {
 public:
    /// Replaces `border`; `left_winding` is the number left of all pieces. Pieces are reordered.
    void Resolve(std::span<RowPiece> pieces, std::int32_t left_winding, std::vector<RowPiece>& border);

 private:
    /// A piece the sweep over a group is passing.
    struct Strand {
        RowPiece piece;
        double slope;        // x per y
        double top, bottom;  // x at the upper and lower end of the current band
        std::int32_t side;   // 1: enters the filled area here, -1: leaves it, 0: neither
        std::int32_t since;  // y from where `side` holds

        double XAt(std::int32_t y) const { return piece.x_top + slope * (y - piece.y_top); }
    };

    static std::span<RowPiece> MergeEqual(std::span<RowPiece> pieces);
    bool Follow(std::span<const RowPiece> pieces, std::int32_t left_winding);
    void Sample(std::span<const RowPiece> pieces, std::int32_t left_winding);

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

    std::array<std::uint64_t, kSubOne / 64 + 1> stops_{};  // a bit per y at which pieces end or cross
    std::vector<Strand> strands_;                          // of the current band, left to right
    std::vector<RowPiece>* border_ = nullptr;
    std::size_t work_ = 0;  // strands placed and swapped in this row
};

}  // namespace refhost
