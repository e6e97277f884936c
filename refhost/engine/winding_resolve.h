#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// Turns the pieces of one pixel row into the border of the area whose winding number is not zero: pieces that wind once, so
/// that their signed area is the covered area. Follows every crossing of the pieces; a row with too many of them is sampled
/// along fixed lines instead, which bounds the time.
class WindingResolver {
 public:
    /// The result is borrowed until the next call. Reorders `pieces`.
    std::span<const RowPiece> Resolve(std::span<RowPiece> pieces);

 private:
    /// A piece the sweep is passing.
    struct Strand {
        RowPiece piece;
        std::int32_t side;   // 1: enters the filled area here, -1: leaves it, 0: neither
        std::int32_t since;  // y from where `side` holds
        double top, bottom;  // x at the upper and lower end of the current band
    };

    bool Follow(std::span<const RowPiece> pieces);
    void Sample(std::span<const RowPiece> pieces);
    void Retire(std::int32_t y);
    void Admit(std::span<const RowPiece>& waiting, std::int32_t y);
    void Place(std::int32_t y, std::int32_t end);
    void FindCrossings(std::int32_t y, std::int32_t end);
    void ChooseSides(std::int32_t y);
    void Close(const Strand& strand, std::int32_t y);
    void AddStop(std::int32_t y);
    std::int32_t NextStop(std::int32_t y) const;
    template <class Before, class Swapped>
    void SortStrands(Before before, Swapped swapped);

    std::array<std::uint64_t, kSubOne / 64 + 1> stops_{};  // a bit per y at which pieces end or cross
    std::vector<Strand> strands_;                          // those the current band holds, left to right
    std::vector<RowPiece> border_;
    std::size_t work_ = 0;  // strands placed and swapped in this row
};

}  // namespace refhost
