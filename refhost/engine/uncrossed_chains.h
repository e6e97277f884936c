#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// The border of the filled area along a few chains of one pixel row that do not cross. Between two heights at which chains end
/// they then keep their order from left to right, and with it the winding numbers between them: chains are border or not as
/// they are, and nothing is cut or rounded.
class UncrossedChains {
 public:
    void Clear();
    /// Pieces of one chain, upper ones first, each starting at the height where the one before ends.
    void AddPiece(const RowPiece& piece) { pieces_.push_back(piece); }
    void EndChain();
    /// All pieces; they may be reordered once they are not resolved here.
    std::span<RowPiece> Pieces() { return pieces_; }
    /// Appends to `border`; `left_winding` is the number left of all chains. False, and nothing is appended, when chains cross or
    /// are too many to be compared with each other.
    bool Resolve(std::int32_t left_winding, std::vector<RowPiece>& border);

 private:
    struct Chain {
        std::size_t first, end;  // pieces
        std::size_t at = 0;      // the piece below the upper end of the current band
        double middle = 0;       // twice the mean x of its ends in the band
        std::int32_t side = 0;   // 1: enters the filled area here, -1: leaves it, 0: neither
        std::int32_t since = 0;  // y from where `side` holds
    };

    void FindHeights();
    bool OrderBand(std::int32_t y, std::int32_t end);
    void Place(Chain& chain, std::int32_t y, std::int32_t end) const;
    bool StaysLeft(const Chain& left, const Chain& right, std::int32_t y, std::int32_t end) const;
    void ChooseSides(std::int32_t winding, std::int32_t y, std::vector<RowPiece>& border);
    void Close(const Chain& chain, std::int32_t y, std::vector<RowPiece>& border) const;

    std::vector<RowPiece> pieces_;
    std::vector<Chain> chains_;
    std::vector<std::int32_t> heights_;  // at which chains start or end, from the top
    std::vector<Chain*> band_;           // chains between two neighbouring heights, left to right
};

}  // namespace refhost
