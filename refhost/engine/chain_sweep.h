#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "refhost/engine/outline_lines.h"
#include "refhost/engine/row_accumulator.h"

namespace refhost {

/// What one chain does in the current pixel row: it falls from `y_top` to `y_bottom`, meeting every height between them once.
/// Sub-units; y counts from the row's top.
struct RowChain {
    std::int32_t left, right;      // between which it lies
    std::int32_t y_top, y_bottom;  // ends inside the row
    std::int32_t x_top, x_bottom;  // there
    std::int32_t vertex;           // the first below `y_top`
    std::int32_t vertices;         // passed in the row, from `vertex` on
    std::int32_t vertices_below;   // that follow those
    std::int32_t winding;          // what it adds to the winding number on its right: 1 or -1
    std::int32_t index;            // of the chain
    std::int64_t slope;            // x per y where it leaves the row, kSlopeBits of fraction, cut off towards zero

    bool IsFullHeight() const { return y_top == 0 && y_bottom == kSubOne; }
};
inline constexpr int kSlopeBits = 30;  // a line as tall as the largest area is off by a sub-unit at its foot

/// Walks the chains of an outline down the rows of an area.
class ChainSweep {
 public:
    /// The outline's chains are linked anew; it is borrowed until the last row.
    void Begin(OutlineLines& outline, std::int32_t rows);
    /// Goes to the next row.
    void NextRow();
    /// The chains that meet the row, by their left sides.
    std::span<const RowChain> Chains() const { return active_; }
    /// Calls `use(piece)` for the chain's lines in the row, from top to bottom.
    template <class Use>
    void ForEachPiece(const RowChain& chain, Use use) const;

 private:
    void Admit(std::int32_t index);
    void Cut(RowChain& chain, bool starts) const;
    void Sort();

    OutlineLines* outline_ = nullptr;
    std::vector<std::int32_t> starting_;  // per row the first of the chains that start in it
    std::vector<RowChain> active_;
    std::int32_t row_top_ = 0;
};

template <class Use>
void ChainSweep::ForEachPiece(const RowChain& chain, Use use) const {
    std::int32_t x = chain.x_top;
    std::int32_t y = chain.y_top;
    const OutlineVertex* vertex = outline_->vertices.data() + chain.vertex;
    for (std::int32_t left = chain.vertices; left > 0; --left, vertex += chain.winding) {
        const std::int32_t end = vertex->y - row_top_;
        if (y < end) use(RowPiece{x, vertex->x, y, end, chain.winding});
        x = vertex->x;
        y = end;
    }
    if (y < chain.y_bottom) use(RowPiece{x, chain.x_bottom, y, chain.y_bottom, chain.winding});
}

}  // namespace refhost
