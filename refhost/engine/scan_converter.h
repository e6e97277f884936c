#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/engine.h"
#include "refhost/engine/chain_sweep.h"
#include "refhost/engine/fill_rows.h"
#include "refhost/engine/outline_lines.h"
#include "refhost/engine/path_view.h"
#include "refhost/engine/row_accumulator.h"
#include "refhost/engine/uncrossed_chains.h"
#include "refhost/engine/winding_resolve.h"

namespace refhost {

/// Turns an outline into rows. Keeps its working memory from fill to fill.
///
/// A pixel's coverage is the area in it whose winding number is not zero, and a mean winding number tells it only where that
/// number is 0 and 1, or 0 and -1. So what is summed is not the outline but the border of the filled area: of each chain in
/// turn, whether the area begins at it, ends at it, or neither. A chain meets every height once. When it spans the row and no
/// other chain comes between its left and right side, the winding number left of it is one and the same at every height, and so
/// is the one right of it: all of it is border, or nothing. The same holds for neighbours that span the same heights, each
/// wholly left of the next. Any other chains that share columns are resolved.
class ScanConverter {
 public:
    /// The rows of `area`, from `device.left` to `device.right`. `operators` make a path, one for each of the finite `points`;
    /// `area` is not empty, lies between the sides of `device` and measures a million columns and rows at most.
    /// @throws std::bad_alloc
    FillRows Convert(std::span<const PIVPointType> operators, std::span<const Point> points, const FillArea& area,
                     const PIVDeviceRect& device, bool best_quality);
    /// Whether it holds so much memory that it should not be kept.
    bool IsLarge() const;

 private:
    /// Neighbouring chains: what they do to the winding number right of them is the same at every height.
    struct Group {
        std::span<const RowChain> chains;
        std::int32_t left_winding, right_winding;
        bool is_ordered;  // they span the same heights, each wholly left of the next

        bool IsInside() const;
    };

    void WriteRow();
    static bool StandsAlone(std::span<const RowChain> chains);
    Group TakeGroup(std::span<const RowChain>& chains, std::int32_t left_winding);
    bool IsOrdered(const RowChain& left, const RowChain& right) const;
    void CountEnds(const RowChain& chain);
    void CountEnd(std::int32_t y, std::int32_t winding);
    void AddBorder(const RowChain& chain, std::int32_t side);
    void AddOrdered(const Group& group);
    void AddResolved(const Group& group);

    std::int32_t columns_ = 0;
    OutlineLines outline_;
    ChainSweep sweep_;
    std::array<std::int32_t, kSubOne + 1> ends_{};  // per y, windings that begin less those that end
    std::int32_t open_ends_ = 0;                    // inside the row, entries of `ends_` that are not zero
    UncrossedChains tangle_;                        // a group that is not ordered
    WindingResolver resolver_;
    std::vector<RowPiece> border_;
    RowAccumulator sums_;
    RowPools pools_;
};

}  // namespace refhost
