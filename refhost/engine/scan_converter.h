#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/engine.h"
#include "refhost/engine/fill_rows.h"
#include "refhost/engine/outline_lines.h"
#include "refhost/engine/path_view.h"
#include "refhost/engine/row_accumulator.h"
#include "refhost/engine/winding_resolve.h"

namespace refhost {

/// Turns an outline into rows. Keeps its working memory from fill to fill.
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
    /// The least and the greatest mean winding of some pixels, times kFullArea.
    struct WindingRange {
        std::int32_t low = 0, high = 0;

        /// Whether an outline that nowhere overlaps itself cannot have it.
        bool ShowsOverlap() const;
    };

    bool WriteRows(bool stop_at_overlap);
    void WriteResolvedRows();
    WindingRange WriteRow();
    void QueueLines();
    template <class Use>
    void TakePieces(std::int32_t row, Use use);

    FillArea area_{};
    std::vector<OutlineLine> lines_;
    std::vector<std::int32_t> waiting_;  // per row the first of the lines whose next piece lies in it
    std::vector<RowPiece> pieces_;       // of the current row
    RowAccumulator sums_;
    RowPools pools_;
    WindingResolver resolver_;
};

}  // namespace refhost
